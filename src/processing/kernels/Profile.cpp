#include "processing/kernels/Profile.h"

#include "processing/kernels/Samples.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "processing/kernels/Profile.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace VX3::Kernels::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;

// Columns are summed in tiles whose sums stay in the first-level cache, in lanes twice as wide as a sample;
// as many lines as those hold without overflow, then the sums move on to 64 bits.
constexpr std::size_t Tile = 512;

template <class Narrow, class Wide>
void SumTile(const std::uint8_t* source, std::size_t stride, std::size_t lines, std::size_t samples,
             std::uint64_t* sums) {
    const hn::ScalableTag<Wide> wide;
    const hn::Rebind<Narrow, decltype(wide)> narrow;
    const std::size_t n = hn::Lanes(wide);
    HWY_ALIGN Wide partial[Tile] = {};
    for (std::size_t line = 0; line < lines; ++line) {
        const std::uint8_t* at = source + line * stride;
        std::size_t x = 0;
        for (; x + n <= samples; x += n) {
            const auto value = hn::LoadU(narrow, reinterpret_cast<const Narrow*>(at + x * sizeof(Narrow)));
            hn::StoreU(hn::Add(hn::LoadU(wide, partial + x), hn::PromoteTo(wide, value)), wide, partial + x);
        }
        for (; x < samples; ++x)
            partial[x] = static_cast<Wide>(partial[x] + Sample<Narrow>(at, x));
    }
    for (std::size_t x = 0; x < samples; ++x)
        sums[x] += partial[x];
}

template <class Narrow, class Wide>
void SumTiles(const std::uint8_t* source, std::size_t stride, std::size_t lines, std::size_t samples,
              std::uint64_t* sums) {
    constexpr std::size_t Lines = std::size_t{1} << (8 * sizeof(Narrow));
    for (std::size_t line = 0; line < lines; line += Lines) {
        for (std::size_t x = 0; x < samples; x += Tile) {
            SumTile<Narrow, Wide>(source + line * stride + x * sizeof(Narrow), stride,
                                  std::min(Lines, lines - line), std::min(Tile, samples - x), sums + x);
        }
    }
}

void SumColumnsWide(const std::uint8_t* source, std::size_t stride, std::size_t lines, std::size_t samples,
                    unsigned int sampleBytes, std::uint64_t* sums) {
    if (sampleBytes == 1)
        SumTiles<std::uint8_t, std::uint16_t>(source, stride, lines, samples, sums);
    else
        SumTiles<std::uint16_t, std::uint32_t>(source, stride, lines, samples, sums);
}

} // namespace
} // namespace VX3::Kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace VX3::Kernels {
namespace {

HWY_EXPORT(SumColumnsWide);

std::uint32_t SampleAt(const std::uint8_t* line, std::size_t x, unsigned int sampleBytes) {
    return sampleBytes == 1 ? line[x] : Sample<std::uint16_t>(line, x);
}

} // namespace

namespace Reference {

void SumColumns(const std::uint8_t* source, std::size_t stride, std::size_t lines, std::size_t samples,
                unsigned int sampleBytes, std::uint64_t* sums) {
    for (std::size_t line = 0; line < lines; ++line)
        for (std::size_t x = 0; x < samples; ++x)
            sums[x] += SampleAt(source + line * stride, x, sampleBytes);
}

void SumLine(const std::uint8_t* source, std::size_t pixels, unsigned int channels, unsigned int sampleBytes,
             std::uint64_t* sums) {
    for (std::size_t x = 0; x < pixels * channels; ++x)
        sums[x % channels] += SampleAt(source, x, sampleBytes);
}

} // namespace Reference

void TakeSamples(const std::uint8_t* source, std::size_t step, std::size_t count, unsigned int sampleBytes,
                 std::uint32_t* target) {
    for (std::size_t i = 0; i < count; ++i)
        target[i] = SampleAt(source + i * step, 0, sampleBytes);
}

void SumColumns(const std::uint8_t* source, std::size_t stride, std::size_t lines, std::size_t samples,
                unsigned int sampleBytes, std::uint64_t* sums) {
    HWY_DYNAMIC_DISPATCH(SumColumnsWide)(source, stride, lines, samples, sampleBytes, sums);
}

// A line is a block of short lines whose length is a multiple of the channel count, followed by a rest.
void SumLine(const std::uint8_t* source, std::size_t pixels, unsigned int channels, unsigned int sampleBytes,
             std::uint64_t* sums) {
    constexpr std::size_t Pixels = 64;
    std::uint64_t columns[4 * Pixels] = {};
    const std::size_t samples = Pixels * channels;
    const std::size_t lines = pixels / Pixels;
    SumColumns(source, samples * sampleBytes, lines, samples, sampleBytes, columns);
    for (std::size_t x = 0; x < samples; ++x)
        sums[x % channels] += columns[x];
    Reference::SumLine(source + lines * samples * sampleBytes, pixels - lines * Pixels, channels, sampleBytes,
                       sums);
}

} // namespace VX3::Kernels
#endif
