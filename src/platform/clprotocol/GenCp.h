// Numbers of GenCP (EMVA, version 1.3.1) over a serial link: packets, commands, statuses, the bootstrap
// registers and their fields. All multi-byte fields travel with the most significant byte first.
#pragma once

#include <cstddef>
#include <cstdint>

namespace CLProtocol::GenCp {

constexpr std::uint16_t Preamble = 0x0100;
constexpr std::size_t PrefixSize = 8; // preamble, two checksums, channel
constexpr std::size_t HeaderSize = 16;
constexpr std::size_t MaxPacket = 1024;
constexpr std::size_t MaxPayload = MaxPacket - HeaderSize;
constexpr std::size_t MaxRead = MaxPayload;
constexpr std::size_t MaxWrite = MaxPayload - 8;
constexpr std::uint16_t ControlChannel = 0;

// Offsets within a packet.
constexpr std::size_t CcdChecksumAt = 2;
constexpr std::size_t ScdChecksumAt = 4;
constexpr std::size_t SummedFrom = 6; // both checksums cover the channel and what follows
constexpr std::size_t StatusAt = 8;   // flags, in a command
constexpr std::size_t CommandAt = 10;
constexpr std::size_t LengthAt = 12;
constexpr std::size_t IdAt = 14;

constexpr std::uint16_t FlagResend = 0x8000;
constexpr std::uint16_t FlagRequestAck = 0x4000;

enum class Command : std::uint16_t { ReadMem = 0x0800, WriteMem = 0x0802 };
constexpr std::uint16_t PendingAck = 0x0805;
constexpr std::uint16_t AckOf(std::uint16_t command) {
    return static_cast<std::uint16_t>(command + 1U);
}

namespace AckStatus {
constexpr std::uint16_t Success = 0x0000;
constexpr std::uint16_t InvalidAddress = 0x8003;
constexpr std::uint16_t WriteProtect = 0x8004;
constexpr std::uint16_t AccessDenied = 0x8006;
constexpr std::uint16_t Busy = 0x8007;
constexpr std::uint16_t Error = 0x8000; // the bit that tells refusals from warnings
} // namespace AckStatus

// Technology agnostic bootstrap registers.
namespace Register {
constexpr std::uint64_t Version = 0x0000;
constexpr std::uint64_t ModelName = 0x0044;
constexpr std::uint64_t SerialNumber = 0x0144;
constexpr std::uint64_t Capability = 0x01C4;
constexpr std::uint64_t MaximumResponseTime = 0x01CC; // ms
constexpr std::uint64_t ManifestTable = 0x01D0;
constexpr std::uint64_t Sbrm = 0x01D8;
constexpr std::uint64_t Configuration = 0x01E0;
constexpr std::uint64_t HeartbeatTimeout = 0x01E8; // ms
constexpr std::uint64_t AccessPrivilege = 0x0204;
constexpr std::size_t TextSize = 64;
// Behind the address that the register Sbrm holds.
constexpr std::uint64_t SupportedBaudrates = 0;
constexpr std::uint64_t CurrentBaudrate = 4;
} // namespace Register

constexpr std::uint64_t HasHeartbeat = 1U << 1;
constexpr std::uint64_t HasSbrm = 1U << 9;
constexpr std::uint64_t TextEncodingShift = 4;
constexpr std::uint64_t TextEncodingMask = 0xF;
constexpr std::uint64_t TextIsUtf16 = 2;
constexpr std::uint64_t HeartbeatEnable = 1U << 0;
constexpr std::uint32_t OpenExclusive = 1;
constexpr std::uint32_t Available = 0;

// A device takes at most so long to answer, and to say how long it takes.
constexpr std::uint32_t LongestResponseMs = 300;
constexpr std::uint32_t FactoryHeartbeatMs = 3000;
// A new rate not confirmed within this time is given up by the device.
constexpr std::uint32_t ConfirmMs = 250;
constexpr std::uint32_t FactoryBaud = 9600;

// Bit n of the baud rate registers stands for BaudRates[n].
constexpr std::uint32_t BaudRates[] = {9600, 19200, 38400, 57600, 115200, 230400, 460800, 921600};
constexpr std::size_t BaudRateCount = sizeof(BaudRates) / sizeof(BaudRates[0]);

// 0 for a rate that the registers cannot name.
constexpr std::uint32_t BaudBit(std::uint32_t rate) {
    for (std::size_t i = 0; i < BaudRateCount; ++i)
        if (BaudRates[i] == rate)
            return 1U << i;
    return 0;
}

// A status in the standard's words.
const char* StatusName(std::uint16_t status);

} // namespace CLProtocol::GenCp
