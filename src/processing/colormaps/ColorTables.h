// The colour maps, sampled at build time (generate.cpp) at 2^8 .. 2^14 evenly spaced points.
#pragma once

#include <cstdint>

namespace VX3 {

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "table entries are little-endian words");

constexpr unsigned int ColorMapCount = 12;
constexpr unsigned int ColorResolutionCount = 7;
constexpr unsigned int ColorMapMono = 11; // the grey ramp, the last map

// [map][d]: 2^(8 + d) entries, each a word whose bytes in memory are R, G, B, 255.
extern const std::uint32_t* const g_colorTable[ColorMapCount][ColorResolutionCount];
extern const char* const g_colorMapNames[ColorMapCount];

} // namespace VX3
