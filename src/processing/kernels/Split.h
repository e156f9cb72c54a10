// Line kernels that part interleaved channels, or the two columns of a colour mosaic.
#pragma once

#include "processing/kernels/Stores.h"

#include <cstddef>
#include <cstdint>

namespace VX3::Kernels {

// `pixels` interleaved pixels of `channels` (2, 3 or 4) samples of `sampleBytes` (1 or 2); channel k goes to
// targets[k], `pixels` samples each. Two channels are the even and odd columns of a mosaic line.
void SplitLine(const std::uint8_t* source, std::uint8_t* const* targets, std::size_t pixels,
               unsigned int channels, unsigned int sampleBytes, Stores stores = Stores::Cached);

namespace Reference {
void SplitLine(const std::uint8_t* source, std::uint8_t* const* targets, std::size_t pixels,
               unsigned int channels, unsigned int sampleBytes);
} // namespace Reference

} // namespace VX3::Kernels
