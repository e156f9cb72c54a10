// Line kernels between 8-bit grey and colour.
#pragma once

#include <cstddef>
#include <cstdint>

namespace VX3::Kernels {

// Grey of pixels of 3 or 4 bytes: their Rec. 601 luminance in 1/256, (77 red + 150 green + 29 blue) >> 8. The
// fourth byte has no part in it. Source and target do not overlap, here and below.
void GreyLine(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels, unsigned int channels,
              bool redFirst);
// Pixels of three equal bytes.
void SpreadLine(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels);
// The first three bytes of pixels of four; `swap` exchanges the first and third.
void NarrowLine(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels, bool swap);

namespace Reference {
void GreyLine(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels, unsigned int channels,
              bool redFirst);
void SpreadLine(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels);
void NarrowLine(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels, bool swap);
} // namespace Reference

} // namespace VX3::Kernels
