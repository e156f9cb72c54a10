// Kernels that take samples out of images, or sum them along lines and columns.
#pragma once

#include <cstddef>
#include <cstdint>

namespace VX3::Kernels {

// `count` samples of `sampleBytes` (1 or 2), `step` bytes apart, widened.
void TakeSamples(const std::uint8_t* source, std::size_t step, std::size_t count, unsigned int sampleBytes,
                 std::uint32_t* target);

// Adds every column of a block of `lines` lines, `stride` bytes apart, to sums[0 .. samples - 1].
void SumColumns(const std::uint8_t* source, std::size_t stride, std::size_t lines, std::size_t samples,
                unsigned int sampleBytes, std::uint64_t* sums);

// Sums each channel of a line of interleaved pixels (1..4 channels) into sums[0 .. channels - 1].
void SumLine(const std::uint8_t* source, std::size_t pixels, unsigned int channels, unsigned int sampleBytes,
             std::uint64_t* sums);

namespace Reference {
void SumColumns(const std::uint8_t* source, std::size_t stride, std::size_t lines, std::size_t samples,
                unsigned int sampleBytes, std::uint64_t* sums);
void SumLine(const std::uint8_t* source, std::size_t pixels, unsigned int channels, unsigned int sampleBytes,
             std::uint64_t* sums);
} // namespace Reference

} // namespace VX3::Kernels
