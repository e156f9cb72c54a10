#include "simulated/camera/PowerUp.h"

#include "gev/protocol/Bootstrap.h"
#include "gev/protocol/Gvcp.h"

#include <cstdio>
#include <utility>

namespace VX3 {
namespace Simulated {

namespace {

using namespace Bootstrap;

constexpr std::uint32_t Gigabit = 1000;             // Mbit/s
constexpr std::uint32_t Nanoseconds = 1000000000;   // ticks a second
constexpr std::uint32_t BigEndianUtf8 = 0x80000001; // device mode
constexpr std::uint32_t StaticAndDhcpAndLla = 0x00000007;
constexpr std::uint32_t Exposure = 0x461C4000; // 10000.0 as a float

void SetNumbers(RegisterFile& registers, const CameraConfig& config) {
    const std::pair<std::uint32_t, std::uint32_t> values[] = {
        {Version, 0x00020000},
        {DeviceMode, BigEndianUtf8},
        {MacHigh, static_cast<std::uint32_t>(config.mac >> 32) & 0xFFFF},
        {MacLow, static_cast<std::uint32_t>(config.mac)},
        {NetworkCapability, StaticAndDhcpAndLla},
        {NetworkConfiguration, StaticAndDhcpAndLla & ~1U},
        {CurrentIp, config.ip},
        {CurrentMask, config.mask},
        {NetworkInterfaceCount, 1},
        {LinkSpeed, Gigabit},
        {StreamChannelCount, config.streamChannels},
        {GvspCapability, config.reportsSourcePort ? SourcePortValid : 0},
        {GvcpCapability, config.gvcpCapability},
        {HeartbeatTimeout, config.heartbeatTimeoutMs},
        {TickFrequencyLow, Nanoseconds},
        {PendingTimeout, config.pendingTimeoutMs},
        {CameraRegister::Width, config.width},
        {CameraRegister::Height, config.height},
        {CameraRegister::PixelFormat, config.pixelFormat},
        {CameraRegister::ExposureTime, Exposure},
    };
    for (const auto& [address, value] : values)
        (void)registers.SetValue(address, value);
    for (unsigned channel = 0; channel < MaxChannels; ++channel)
        (void)registers.SetValue(StreamRegister(StreamPacketSize, channel), config.packetSize);
}

void SetTexts(RegisterFile& registers, const CameraConfig& config, std::size_t descriptionSize) {
    (void)registers.SetText(ManufacturerName, config.vendor, 32);
    (void)registers.SetText(ModelName, config.model, 32);
    (void)registers.SetText(DeviceVersion, config.version, 32);
    (void)registers.SetText(ManufacturerInfo, config.manufacturerInfo, 48);
    (void)registers.SetText(SerialNumber, config.serial, 16);
    (void)registers.SetText(UserDefinedName, config.userName, 16);
    char place[32];
    (void)std::snprintf(place, sizeof(place), ";%X;%zX", CameraRegister::Description, descriptionSize);
    (void)registers.SetText(FirstUrl, "Local:" + config.descriptionFile.substr(0, 400) + place, 512);
}

// Everything a host may write.
void AllowWrites(RegisterFile& registers) {
    for (const std::uint32_t address : {NetworkConfiguration, PersistentIp, PersistentMask, PersistentGateway,
                                        HeartbeatTimeout, GvcpConfiguration, GvspConfiguration})
        registers.AllowWrites(address, 4);
    registers.AllowWrites(UserDefinedName, 16);
    registers.AllowWrites(StreamPort, MaxChannels * StreamChannelStride);
    registers.AllowWrites(ManufacturerSpace, CameraRegister::Description - ManufacturerSpace);
}

} // namespace

void PowerUp(RegisterFile& registers, const CameraConfig& config) {
    const std::string description = config.description.empty() ? OwnDescription() : config.description;
    registers.Clear(CameraRegister::Description + Gvcp::RoundUp4(description.size()));
    (void)registers.Write(CameraRegister::Description,
                          {reinterpret_cast<const std::uint8_t*>(description.data()), description.size()});
    SetNumbers(registers, config);
    SetTexts(registers, config, description.size());
    AllowWrites(registers);
}

} // namespace Simulated
} // namespace VX3
