// The pixels of the camera's own pictures: noise that every camera and run makes alike, so that a test knows
// what each block holds.
#pragma once

#include <cstddef>
#include <cstdint>

namespace VX3 {
namespace Simulated {

class PixelPattern {
public:
    static constexpr std::size_t LargestFrame = std::size_t{256} << 20;

    // At least `size` bytes, different for neighbouring blocks; valid for ever. Null above LargestFrame.
    static const std::uint8_t* Of(std::uint64_t blockId, std::size_t size);
};

} // namespace Simulated
} // namespace VX3
