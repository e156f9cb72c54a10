// How a published camera's addresses travel between the two ends of this library, beyond what the standard
// has.
#pragma once

#include <cstdint>

namespace VX3 {
namespace RemoteAddresses {

// Set in the addresses of the camera's own registers.
constexpr std::uint32_t RemoteBit = 1U << 31;
// Texts written there pause and restart the publishing host's streams.
constexpr std::uint32_t TextCommands = 0x0FC0;

} // namespace RemoteAddresses
} // namespace VX3
