// Line kernels that look samples up in a table of RGBA entries.
#pragma once

#include <cstddef>
#include <cstdint>

namespace VX3::Kernels {

// Entries are 32-bit words whose bytes in memory are R, G, B, A.
void MapLine8(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels,
              const std::uint32_t (&table)[256]);

// Samples below `low` take entry 0, samples above `high` the last entry, the others entry
// (sample - low) >> shift, or the last entry where that lies beyond it. `high` is at least low - 1.
struct MapWindow {
    std::uint16_t low;
    std::uint16_t high;
    unsigned int shift;
    const std::uint32_t* table;
    std::uint16_t last;
};
void MapLine16(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels, const MapWindow& window);

namespace Reference {
void MapLine8(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels,
              const std::uint32_t (&table)[256]);
void MapLine16(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels, const MapWindow& window);
} // namespace Reference

} // namespace VX3::Kernels
