// One request for the camera, as handed to the receive thread.
#pragma once

#include <cstdint>

namespace VX3 {

struct GvspResendInfo {
    std::uint32_t blockId = 0;
    std::uint32_t reserved = 0;
    std::uint32_t extended = 0;
    std::uint32_t firstPacketId = 0;
    std::uint32_t lastPacketId = 0;
};

} // namespace VX3
