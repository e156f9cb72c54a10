#include "support/ScriptedRegisters.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace VX3 {
namespace Test {

ScriptedRegisters::ScriptedRegisters(const CameraConfig& config) : config_(config) {
    Reset();
}

void ScriptedRegisters::Reset() {
    const std::string& description = DescriptionText();
    {
        MutexLock lock(mutex_);
        bytes_.assign(ScriptedAddress::Description + Gvcp::RoundUp4(description.size()), 0);
        std::memcpy(bytes_.data() + ScriptedAddress::Description, description.data(), description.size());
    }
    const std::pair<std::uint32_t, std::uint32_t> values[] = {
        {Bootstrap::Version, 0x00020000},
        {Bootstrap::DeviceMode, 0x80000001},
        {Bootstrap::MacHigh, static_cast<std::uint32_t>(config_.mac >> 32)},
        {Bootstrap::MacLow, static_cast<std::uint32_t>(config_.mac)},
        {Bootstrap::NetworkCapability, 0x00000007},
        {Bootstrap::NetworkConfiguration, 0x00000006},
        {Bootstrap::CurrentIp, config_.ip},
        {Bootstrap::CurrentMask, config_.mask},
        {Bootstrap::NetworkInterfaceCount, 1},
        {Bootstrap::LinkSpeed, 1000},
        {Bootstrap::StreamChannelCount, config_.streamChannels},
        {Bootstrap::GvspCapability, config_.reportsSourcePort ? Bootstrap::SourcePortValid : 0},
        {Bootstrap::GvcpCapability, config_.gvcpCapability},
        {Bootstrap::HeartbeatTimeout, config_.heartbeatTimeoutMs},
        {Bootstrap::TickFrequencyLow, 1000000000},
        {Bootstrap::PendingTimeout, config_.pendingTimeoutMs},
        {ScriptedAddress::Width, config_.width},
        {ScriptedAddress::Height, config_.height},
        {ScriptedAddress::PixelFormat, config_.pixelFormat},
        {ScriptedAddress::ExposureTime, 0x461C4000}, // 10000.0
    };
    for (const auto& [address, value] : values)
        (void)SetValue(address, value);
    for (std::uint32_t channel = 0; channel < 4; ++channel)
        (void)SetValue(Bootstrap::StreamRegister(Bootstrap::StreamPacketSize, channel), config_.packetSize);
    SetText(Bootstrap::ManufacturerName, config_.vendor, 32);
    SetText(Bootstrap::ModelName, config_.model, 32);
    SetText(Bootstrap::DeviceVersion, config_.version, 32);
    SetText(Bootstrap::ManufacturerInfo, config_.manufacturerInfo, 48);
    SetText(Bootstrap::SerialNumber, config_.serial, 16);
    SetText(Bootstrap::UserDefinedName, config_.userName, 16);
    char url[96];
    (void)std::snprintf(url, sizeof(url), "Local:Scripted.xml;%X;%zX", ScriptedAddress::Description,
                        description.size());
    SetText(Bootstrap::FirstUrl, url, 512);
}

void ScriptedRegisters::SetText(std::uint32_t address, const std::string& text, std::size_t width) {
    MutexLock lock(mutex_);
    WireWriter writer(bytes_.data() + address, width);
    (void)writer.Text(text, width);
}

bool ScriptedRegisters::Read(std::uint64_t address, std::uint8_t* destination, std::size_t count) const {
    MutexLock lock(mutex_);
    if (address > bytes_.size() || count > bytes_.size() - address)
        return false;
    std::memcpy(destination, bytes_.data() + address, count);
    return true;
}

bool ScriptedRegisters::Write(std::uint64_t address, const std::uint8_t* source, std::size_t count) {
    if (address > ScriptedAddress::Description || count > ScriptedAddress::Description - address)
        return false;
    MutexLock lock(mutex_);
    std::copy_n(source, count, bytes_.begin() + static_cast<std::ptrdiff_t>(address));
    return true;
}

std::uint32_t ScriptedRegisters::Value(std::uint64_t address) const {
    std::uint8_t bytes[4] = {};
    return Read(address, bytes, sizeof(bytes)) ? Wire::Load<std::uint32_t>(bytes) : 0;
}

bool ScriptedRegisters::SetValue(std::uint64_t address, std::uint32_t value) {
    std::uint8_t bytes[4];
    Wire::Store(bytes, value);
    return Write(address, bytes, sizeof(bytes));
}

std::size_t ScriptedRegisters::Size() const {
    MutexLock lock(mutex_);
    return bytes_.size();
}

GevDiscoveryInfo ScriptedRegisters::DiscoveryInfo() const {
    GevDiscoveryInfo info;
    const std::uint32_t version = Value(Bootstrap::Version);
    info.specVersionMajor = static_cast<std::uint16_t>(version >> 16);
    info.specVersionMinor = static_cast<std::uint16_t>(version);
    info.deviceMode = Value(Bootstrap::DeviceMode);
    info.macHigh = Value(Bootstrap::MacHigh) & 0xFFFF;
    info.macLow = Value(Bootstrap::MacLow);
    info.ipConfigOptions = Value(Bootstrap::NetworkCapability);
    info.currentIpConfig = Value(Bootstrap::NetworkConfiguration);
    info.currentIp = Value(Bootstrap::CurrentIp);
    info.subnetMask = Value(Bootstrap::CurrentMask);
    info.defaultGateway = Value(Bootstrap::CurrentGateway);
    const auto text = [this](std::uint32_t address, std::size_t width) {
        std::vector<std::uint8_t> field(width);
        (void)Read(address, field.data(), width);
        std::string value;
        (void)WireReader(field.data(), width).Text(width, value);
        return value;
    };
    info.manufacturerName = text(Bootstrap::ManufacturerName, 32);
    info.modelName = text(Bootstrap::ModelName, 32);
    info.deviceVersion = text(Bootstrap::DeviceVersion, 32);
    info.manufacturerInfo = text(Bootstrap::ManufacturerInfo, 48);
    info.serialNumber = text(Bootstrap::SerialNumber, 16);
    info.userDefinedName = text(Bootstrap::UserDefinedName, 16);
    return info;
}

} // namespace Test
} // namespace VX3
