// Codes of the GigE Vision control protocol's commands.
#pragma once

#include <cstdint>

namespace VX3 {
namespace Gvcp {

enum class Command : std::uint16_t {
    Discovery = 0x0002,
    ForceIp = 0x0004,
    PacketResend = 0x0040,
    ReadReg = 0x0080,
    WriteReg = 0x0082,
    ReadMem = 0x0084,
    WriteMem = 0x0086,
    // Device-specific: memory access with 64-bit addresses.
    ReadMemEx = 0x8084,
    WriteMemEx = 0x8086,
};

} // namespace Gvcp
} // namespace VX3
