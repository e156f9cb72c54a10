// Line kernels that exchange the first and third byte of colour pixels.
#pragma once

#include "processing/kernels/Stores.h"

#include <cstddef>
#include <cstdint>

namespace VX3::Kernels {

// `pixels` pixels of 3 or 4 bytes; the others are copied. Source and target do not overlap.
void SwapLine3(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels);
void SwapLine4(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels,
               Stores stores = Stores::Cached);

namespace Reference {
void SwapLine3(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels);
void SwapLine4(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels);
} // namespace Reference

} // namespace VX3::Kernels
