// GigE Vision bootstrap registers: addresses, names and the bits the library uses.
#pragma once

#include <cstdint>

namespace VX3 {
namespace Bootstrap {

// X(name, address, width in bytes, text)
#define VX3_BOOTSTRAP_TABLE(X)                                                                               \
    X(Version, 0x0000, 4, "version")                                                                         \
    X(DeviceMode, 0x0004, 4, "device mode")                                                                  \
    X(MacHigh, 0x0008, 4, "MAC address high")                                                                \
    X(MacLow, 0x000C, 4, "MAC address low")                                                                  \
    X(NetworkCapability, 0x0010, 4, "network interface capability")                                          \
    X(NetworkConfiguration, 0x0014, 4, "network interface configuration")                                    \
    X(CurrentIp, 0x0024, 4, "current IP address")                                                            \
    X(CurrentMask, 0x0034, 4, "current subnet mask")                                                         \
    X(CurrentGateway, 0x0044, 4, "current default gateway")                                                  \
    X(ManufacturerName, 0x0048, 32, "manufacturer name")                                                     \
    X(ModelName, 0x0068, 32, "model name")                                                                   \
    X(DeviceVersion, 0x0088, 32, "device version")                                                           \
    X(ManufacturerInfo, 0x00A8, 48, "manufacturer information")                                              \
    X(SerialNumber, 0x00D8, 16, "serial number")                                                             \
    X(UserDefinedName, 0x00E8, 16, "user-defined name")                                                      \
    X(FirstUrl, 0x0200, 512, "first URL")                                                                    \
    X(SecondUrl, 0x0400, 512, "second URL")                                                                  \
    X(NetworkInterfaceCount, 0x0600, 4, "number of network interfaces")                                      \
    X(PersistentIp, 0x064C, 4, "persistent IP address")                                                      \
    X(PersistentMask, 0x065C, 4, "persistent subnet mask")                                                   \
    X(PersistentGateway, 0x066C, 4, "persistent default gateway")                                            \
    X(LinkSpeed, 0x0670, 4, "link speed")                                                                    \
    X(MessageChannelCount, 0x0900, 4, "number of message channels")                                          \
    X(StreamChannelCount, 0x0904, 4, "number of stream channels")                                            \
    X(GvspCapability, 0x092C, 4, "GVSP capability")                                                          \
    X(MessageCapability, 0x0930, 4, "message channel capability")                                            \
    X(GvcpCapability, 0x0934, 4, "GVCP capability")                                                          \
    X(HeartbeatTimeout, 0x0938, 4, "heartbeat time-out")                                                     \
    X(TickFrequencyHigh, 0x093C, 4, "timestamp tick frequency high")                                         \
    X(TickFrequencyLow, 0x0940, 4, "timestamp tick frequency low")                                           \
    X(TimestampControl, 0x0944, 4, "timestamp control")                                                      \
    X(TimestampHigh, 0x0948, 4, "timestamp value high")                                                      \
    X(TimestampLow, 0x094C, 4, "timestamp value low")                                                        \
    X(GvcpConfiguration, 0x0954, 4, "GVCP configuration")                                                    \
    X(PendingTimeout, 0x0958, 4, "pending time-out")                                                         \
    X(GvspConfiguration, 0x0960, 4, "GVSP configuration")                                                    \
    X(ControlChannelPrivilege, 0x0A00, 4, "control channel privilege")                                       \
    X(PrimaryApplicationPort, 0x0A04, 4, "primary application port")                                         \
    X(PrimaryApplicationIp, 0x0A14, 4, "primary application IP address")                                     \
    X(StreamPort, 0x0D00, 4, "stream channel port")                                                          \
    X(StreamPacketSize, 0x0D04, 4, "stream channel packet size")                                             \
    X(StreamPacketDelay, 0x0D08, 4, "stream channel packet delay")                                           \
    X(StreamDestination, 0x0D18, 4, "stream channel destination address")                                    \
    X(StreamSourcePort, 0x0D1C, 4, "stream channel source port")                                             \
    X(StreamCapability, 0x0D20, 4, "stream channel capability")                                              \
    X(StreamConfiguration, 0x0D24, 4, "stream channel configuration")

#define VX3_BOOTSTRAP_CONSTANT(name, address, width, text) constexpr std::uint32_t name = address;
VX3_BOOTSTRAP_TABLE(VX3_BOOTSTRAP_CONSTANT)
#undef VX3_BOOTSTRAP_CONSTANT

// Registers above this one belong to the manufacturer.
constexpr std::uint32_t ManufacturerSpace = 0xA000;
// Stream channel n's registers lie this many bytes times n after channel 0's.
constexpr std::uint32_t StreamChannelStride = 0x40;

constexpr std::uint32_t StreamRegister(std::uint32_t channel0Address, std::uint32_t channel) {
    return channel0Address + StreamChannelStride * channel;
}

// Control channel privilege.
constexpr std::uint32_t ExclusiveAccess = 1;
constexpr std::uint32_t ControlAccess = 2;
constexpr std::uint32_t ReleaseControl = 0;
// Stream packet size: the low 16 bits are the size.
constexpr std::uint32_t PacketSizeMask = 0x0000FFFFU;
constexpr std::uint32_t FireTestPacket = 0x80000000U;
constexpr std::uint32_t DoNotFragment = 0x40000000U;
// GVCP capability.
constexpr std::uint32_t PacketResendSupported = 0x00000004U;
constexpr std::uint32_t WriteMemSupported = 0x00000002U;
constexpr std::uint32_t PrimaryApplicationTold = 0x08000000U;
constexpr std::uint32_t LinkSpeedTold = 0x10000000U;
constexpr std::uint32_t SerialNumberTold = 0x40000000U;
constexpr std::uint32_t ConcatenationSupported = 0x00000001U;
// GVSP capability: the stream source port register is valid.
constexpr std::uint32_t SourcePortValid = 0x80000000U;
// GVSP capability: 16-bit block ids are sent too.
constexpr std::uint32_t StandardIdsSupported = 0x40000000U;
// Timestamp control.
constexpr std::uint32_t LatchTimestamp = 2;
// GVSP configuration: 64-bit block and 32-bit packet ids.
constexpr std::uint32_t ExtendedIdsSelected = 0x40000000U;

// The register's name for logs, channel registers of any channel included; "manufacturer register" or
// "reserved register" for the rest. Never null.
const char* RegisterName(std::uint64_t address);

} // namespace Bootstrap
} // namespace VX3
