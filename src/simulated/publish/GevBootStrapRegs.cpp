#include "simulated/publish/GevBootStrapRegs.h"

#include "gev/protocol/Bootstrap.h"

#include <algorithm>
#include <utility>

namespace VX3 {

namespace {

using namespace Bootstrap;

constexpr std::uint32_t ShortestHeartbeatMs = 500;
constexpr std::uint32_t LongestHeartbeatMs = 600000;
constexpr std::uint32_t UrlSize = 512;

// What every published camera says of itself.
constexpr std::pair<std::uint32_t, std::uint32_t> Constants[] = {
    {Version, 0x00020001},
    {DeviceMode, 0x01000003},
    {MacHigh, 0x00001234},
    {NetworkCapability, 0xC0000000},
    {NetworkConfiguration, 0x20000000},
    {NetworkInterfaceCount, 1},
    {LinkSpeed, 1000},
    {MessageChannelCount, 1},
    {StreamChannelCount, 1},
    {GvspCapability, SourcePortValid | StandardIdsSupported},
    {GvcpCapability,
     WriteMemSupported | PacketResendSupported | PrimaryApplicationTold | LinkSpeedTold | SerialNumberTold},
    {TickFrequencyLow, 1000000000},
    {PendingTimeout, 3500},
};

} // namespace

GevBootStrapRegs::GevBootStrapRegs(const GevBootStrapRegsValue& value, std::uint16_t gvspPort,
                                   Callbacks callbacks)
    : callbacks_(std::move(callbacks)) {
    file_.Clear(Size);
    for (const auto& [address, number] : Constants)
        SetValue(address, number);
    const std::pair<std::uint32_t, std::uint32_t> numbers[] = {{MacLow, value.macLow},
                                                               {CurrentIp, value.currentIp},
                                                               {CurrentMask, value.subnetMask},
                                                               {CurrentGateway, value.defaultGateway},
                                                               {PersistentIp, value.currentIp},
                                                               {PersistentMask, value.subnetMask},
                                                               {PersistentGateway, value.defaultGateway},
                                                               {HeartbeatTimeout, value.heartbeatTimeoutMs}};
    for (const auto& [address, number] : numbers)
        SetValue(address, number);
    (void)file_.SetText(ManufacturerName, value.manufacturerName, 32);
    (void)file_.SetText(ModelName, value.modelName, 32);
    (void)file_.SetText(DeviceVersion, value.deviceVersion, 32);
    (void)file_.SetText(ManufacturerInfo, value.manufacturerInfo, 48);
    (void)file_.SetText(SerialNumber, value.serialNumber, 16);
    (void)file_.SetText(UserDefinedName, value.userName, 16);
    for (unsigned channel = 0; channel < MostChannels; ++channel) {
        SetValue(StreamRegister(StreamPacketSize, channel), DefaultPacketSize);
        file_.AllowWrites(StreamRegister(StreamPort, channel), 0x10);
        file_.AllowWrites(StreamRegister(StreamDestination, channel), 4);
    }
    SetValue(StreamSourcePort, gvspPort);
    // Not what belongs to this host: its addresses, and how it gets them.
    for (const std::uint32_t address : {HeartbeatTimeout, TimestampControl, GvspConfiguration})
        file_.AllowWrites(address, 4);
    file_.AllowWrites(UserDefinedName, 16);
    file_.AllowWrites(0x0B00, 0x20); // the message channel's
    file_.AllowWrites(0x0FB0, 0x10); // commands that are carried out elsewhere
}

StatusCode GevBootStrapRegs::Effect(std::uint32_t address, std::uint32_t value) const {
    if (address == ControlChannelPrivilege) {
        if (value != 0)
            return callbacks_.open ? callbacks_.open() : Status::Ok;
        if (callbacks_.close)
            callbacks_.close();
        return Status::Ok;
    }
    if (address < StreamPort || address >= StreamRegister(StreamPort, MostChannels) ||
        (address - StreamPort) % StreamChannelStride != 0)
        return Status::Ok;
    const unsigned channel = (address - StreamPort) / StreamChannelStride;
    if (value != 0)
        return callbacks_.start ? callbacks_.start(channel) : Status::Ok;
    if (callbacks_.stop)
        callbacks_.stop(channel);
    return Status::Ok;
}

StatusCode GevBootStrapRegs::ReadReg32(std::uint32_t address, std::uint32_t& value) const {
    if (address >= LastRegister)
        return Status::NotFound;
    value = file_.Value(address);
    return Status::Ok;
}

StatusCode GevBootStrapRegs::WriteReg32(std::uint32_t address, std::uint32_t value) {
    if (address >= LastRegister)
        return Status::NotFound;
    if (address == HeartbeatTimeout)
        value = std::clamp(value, ShortestHeartbeatMs, LongestHeartbeatMs);
    // Callbacks find the new value; one that fails leaves the old one.
    const std::uint32_t before = file_.Value(address);
    SetValue(address, value);
    const StatusCode status = Effect(address, value);
    if (Failed(status))
        SetValue(address, before);
    return status;
}

StatusCode GevBootStrapRegs::ReadMemory(std::uint32_t address, WireRoom room) const {
    return file_.Read(address, room) ? Status::Ok : Status::NotFound;
}

StatusCode GevBootStrapRegs::WriteMemory(std::uint32_t address, WireBytes bytes) {
    return file_.Write(address, bytes) ? Status::Ok : Status::NotFound;
}

void GevBootStrapRegs::SetXmlUrl(const std::string& url) {
    (void)file_.SetText(FirstUrl, url, UrlSize);
}

} // namespace VX3
