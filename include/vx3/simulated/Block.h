// One block for a simulated camera to send: what its leader and trailer tell, and its data.
#pragma once

#include "vx3/gev/GvspBlock.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace VX3 {
namespace Simulated {

// Bytes shared with the camera, which sends them from where they lie: they must not change meanwhile.
struct SharedBytes {
    std::shared_ptr<const std::uint8_t> data;
    std::size_t size = 0;

    static SharedBytes Of(std::vector<std::uint8_t> bytes) {
        const auto owner = std::make_shared<const std::vector<std::uint8_t>>(std::move(bytes));
        return {std::shared_ptr<const std::uint8_t>(owner, owner->data()), owner->size()};
    }
};

struct Block {
    // Lengths left 0 (payloadSize, each part's length, the chunk types' chunkPayloadLength) become those of
    // the data.
    Gvsp::BlockInfo info;
    // Multi-part: one a part; multi-zone: one a zone; GenDC: one a flow; all others: one in all.
    std::vector<SharedBytes> data;
};

} // namespace Simulated
} // namespace VX3
