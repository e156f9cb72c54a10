// Line kernels that make 8-bit samples of 16-bit ones, and integers of floating-point ones.
#pragma once

#include "processing/kernels/Stores.h"

#include <cstddef>
#include <cstdint>

namespace VX3::Kernels {

// 16-bit samples (host order, any alignment) shifted right by `shift` (0..8) and truncated to 8 bits: no
// rounding, and a sample above its nominal range wraps. Reads 2 * samples bytes, writes `samples`.
void ReduceLine(const std::uint8_t* source, std::uint8_t* target, std::size_t samples, unsigned int shift,
                Stores stores = Stores::Cached);
// The same on 4-channel pixels, with the first and third channel exchanged.
void ReduceSwapLine4(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels,
                     unsigned int shift);
// 32-bit floats to 16-bit integers: truncated toward zero, held within 0..65535; not-a-number gives 0.
void FloatLineTo16(const std::uint8_t* source, std::uint8_t* target, std::size_t samples);
// 32-bit floats to 8 bits: the above, of the value divided by 256.
void FloatLineTo8(const std::uint8_t* source, std::uint8_t* target, std::size_t samples);

namespace Reference {
void ReduceLine(const std::uint8_t* source, std::uint8_t* target, std::size_t samples, unsigned int shift);
void ReduceSwapLine4(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels,
                     unsigned int shift);
void FloatLineTo16(const std::uint8_t* source, std::uint8_t* target, std::size_t samples);
void FloatLineTo8(const std::uint8_t* source, std::uint8_t* target, std::size_t samples);
} // namespace Reference

} // namespace VX3::Kernels
