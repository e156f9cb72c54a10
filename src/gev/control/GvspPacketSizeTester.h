// Finds the largest stream packet that reaches the host unfragmented, with the camera's test packets.
#pragma once

#include "gev/control/GevCmdHelper.h"

#include <cstdint>

namespace VX3 {

class GvspPacketSizeTester {
public:
    // `size` rounded down onto the grid that starts at `min` with step `inc` (0: no grid).
    static std::int64_t GetValidPacketSize(std::int64_t size, std::int64_t min, std::int64_t inc);
    // The kernel is asked for the path's MTU first: one without jumbo frames needs no test. Else takes up to
    // two waits of 200 ms, and leaves stream channel 0 disabled, its packet size register at the answer. A
    // camera that sends no test packets gets the size for plain Ethernet.
    static std::int64_t TestPacketSize(GevCmdHelper& helper, std::uint32_t cameraIp, std::uint32_t hostIp,
                                       std::int64_t max, std::int64_t min, std::int64_t inc);
};

} // namespace VX3
