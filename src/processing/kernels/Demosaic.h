// Line-pair kernels that make RGB of a colour mosaic by 2 x 2 cells.
#pragma once

#include <cstddef>
#include <cstdint>

namespace VX3::Kernels {

// Where a cell keeps its red and blue sample; the two others are green.
enum class Mosaic { RG, GR, BG, GB };

// Two source lines give two lines of packed 8-bit R, G, B. Every pixel has the green of its own row. The left
// pixels of a cell take red and blue from the cell; the right ones take the samples of the left column from
// the next cell, where there is one. An odd last column makes a cell with the column before it.
struct LinePair {
    const std::uint8_t* source0;
    const std::uint8_t* source1;
    std::uint8_t* target0;
    std::uint8_t* target1;
};
void DemosaicPair8(Mosaic mosaic, const LinePair& lines, std::size_t width);
// 16-bit samples (any alignment), shifted right by `shift` and truncated to 8 bits first.
void DemosaicPair16(Mosaic mosaic, const LinePair& lines, std::size_t width, unsigned int shift);

namespace Reference {
void DemosaicPair8(Mosaic mosaic, const LinePair& lines, std::size_t width);
void DemosaicPair16(Mosaic mosaic, const LinePair& lines, std::size_t width, unsigned int shift);
} // namespace Reference

} // namespace VX3::Kernels
