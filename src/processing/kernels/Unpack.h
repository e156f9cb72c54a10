// Line kernels that widen packed monochrome samples to 16 bits, or keep their top 8 bits.
// Called by the converters, one line at a time.
#pragma once

#include <cstddef>
#include <cstdint>

namespace VX3::Kernels {

// How samples share bytes. The "p" formats are one little-endian bit stream; the "Packed" formats keep the
// top 8 bits of two samples in bytes 0 and 2 of a group and their low bits in byte 1.
enum class Packing { Mono10p, Mono12p, Mono10Packed, Mono12Packed };

// `sourceBytes` is what the line holds; bits that it does not hold (the end of an odd line that was rounded
// down to whole bytes) read as 0. Nothing outside [source, source + sourceBytes) is read; exactly `pixels`
// samples are written (16 bits each, host order, any alignment). Source and target do not overlap.
void UnpackLine(Packing packing, const std::uint8_t* source, std::size_t sourceBytes, std::uint8_t* target,
                std::size_t pixels);
// The same with the top 8 bits of each sample as the result.
void UnpackLineTo8(Packing packing, const std::uint8_t* source, std::size_t sourceBytes, std::uint8_t* target,
                   std::size_t pixels);

namespace Reference {
void UnpackLine(Packing packing, const std::uint8_t* source, std::size_t sourceBytes, std::uint8_t* target,
                std::size_t pixels);
void UnpackLineTo8(Packing packing, const std::uint8_t* source, std::size_t sourceBytes, std::uint8_t* target,
                   std::size_t pixels);
} // namespace Reference

} // namespace VX3::Kernels
