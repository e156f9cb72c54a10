// What the card says of a part of a frame that lies ready in its memory.
#pragma once

#include "grabber/KdGrabberCmdHelper.h"

#include <cstdint>

namespace VX3 {

struct KdSegment {
    std::uint64_t offset = 0; // in the DMA node
    std::uint32_t length = 0; // bytes
    std::uint16_t number = 0; // within the block, from 0
    std::uint16_t count = 0;  // segments of the block
    std::uint32_t blockId = 0;
    std::uint32_t timestampLow = 0;
    std::uint32_t timestampHigh = 0;
    std::uint32_t status = 0;
};

// Reads the card's segment registers in the order that it wants.
[[nodiscard]] StatusCode ReadSegment(const KdGrabberCmdHelper& card, KdSegment& segment);

} // namespace VX3
