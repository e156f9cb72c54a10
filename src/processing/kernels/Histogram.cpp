#include "processing/kernels/Histogram.h"

#include "processing/kernels/Samples.h"

#include <utility>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "processing/kernels/Histogram.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace VX3::Kernels::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR

// No vectors: the scalar reference does all.
std::size_t CountWide16(const std::uint8_t*, std::size_t, unsigned int, const Counters&) {
    return 0;
}

#else

constexpr std::size_t Block = 64; // samples checked at once; a multiple of every vector and of 16

// True when every sample of the block is below `bins`, which lets the block be counted without comparing.
HWY_INLINE bool AllBelow(const std::uint8_t* source, std::uint32_t bins) {
    const hn::CappedTag<std::uint8_t, 2 * Block> d8;
    const hn::Repartition<std::uint16_t, decltype(d8)> d16;
    auto top = hn::Zero(d16);
    for (std::size_t at = 0; at < 2 * Block; at += hn::Lanes(d8))
        top = hn::Or(top, hn::BitCast(d16, hn::LoadU(d8, source + at)));
    // Bins are a power of two: a sample is outside exactly when it has a bit at or above it.
    const auto outside = hn::And(top, hn::Set(d16, static_cast<std::uint16_t>(~(bins - 1))));
    return hn::AllTrue(d16, hn::Eq(outside, hn::Zero(d16)));
}

// Four samples of a word, of which the first is number `First` of its block.
template <unsigned int Channels, std::size_t First>
HWY_INLINE void CountWord(std::uint64_t word, std::uint32_t* const* counts) {
    ++counts[WayOf<Channels>(First)][word & 0xFFFF];
    ++counts[WayOf<Channels>(First + 1)][word >> 16 & 0xFFFF];
    ++counts[WayOf<Channels>(First + 2)][word >> 32 & 0xFFFF];
    ++counts[WayOf<Channels>(First + 3)][word >> 48];
}

// `samples` is a multiple of the run, which holds whole pixels.
template <unsigned int Channels>
HWY_INLINE void CountRun(const std::uint8_t* source, std::size_t samples, std::uint32_t* const* counts) {
    constexpr std::size_t Run = Channels == 3 ? 12 : 16;
    for (std::size_t i = 0; i < samples; i += Run) {
        CountWord<Channels, 0>(Sample<std::uint64_t>(source + 2 * i, 0), counts);
        CountWord<Channels, 4>(Sample<std::uint64_t>(source + 2 * i, 1), counts);
        CountWord<Channels, 8>(Sample<std::uint64_t>(source + 2 * i, 2), counts);
        if constexpr (Channels != 3)
            CountWord<Channels, 12>(Sample<std::uint64_t>(source + 2 * i, 3), counts);
    }
}

template <unsigned int Channels>
std::size_t Count16(const std::uint8_t* source, std::size_t pixels, const Counters& counters) {
    // A block of 3-channel pixels is three times as long, so that it, too, holds whole pixels.
    constexpr std::size_t Blocks = Channels == 3 ? 3 : 1;
    constexpr std::size_t Pixels = Blocks * Block / Channels;
    std::uint32_t* counts[Counters::MaxChannels * Counters::Ways];
    std::memcpy(counts, counters.counts, sizeof counts);
    std::size_t x = 0;
    for (; x + Pixels <= pixels; x += Pixels) {
        const std::uint8_t* block = source + 2 * Channels * x;
        bool inside = true;
        for (std::size_t k = 0; k < Blocks; ++k)
            inside = AllBelow(block + 2 * Block * k, counters.bins) && inside;
        if (!inside) {
            Reference::CountLine16(block, Pixels, Channels, counters);
            continue;
        }
        CountRun<Channels>(block, Blocks * Block, counts);
    }
    return x;
}

std::size_t CountWide16(const std::uint8_t* source, std::size_t pixels, unsigned int channels,
                        const Counters& counters) {
    switch (channels) {
    case 1:
        return Count16<1>(source, pixels, counters);
    case 2:
        return Count16<2>(source, pixels, counters);
    case 3:
        return Count16<3>(source, pixels, counters);
    case 4:
        return Count16<4>(source, pixels, counters);
    default:
        return 0;
    }
}

#endif // HWY_TARGET

// counts[0] += counts[1] + counts[2] + counts[3]
void SumWays(std::uint32_t* const* counts, std::size_t bins) {
    const hn::ScalableTag<std::uint32_t> d;
    const std::size_t n = hn::Lanes(d);
    std::size_t i = 0;
    for (; i + n <= bins; i += n) {
        const auto even = hn::Add(hn::LoadU(d, counts[0] + i), hn::LoadU(d, counts[2] + i));
        const auto odd = hn::Add(hn::LoadU(d, counts[1] + i), hn::LoadU(d, counts[3] + i));
        hn::StoreU(hn::Add(even, odd), d, counts[0] + i);
    }
    for (; i < bins; ++i)
        counts[0][i] += counts[1][i] + counts[2][i] + counts[3][i];
}

} // namespace
} // namespace VX3::Kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace VX3::Kernels {
namespace {

HWY_EXPORT(CountWide16);
HWY_EXPORT(SumWays);

// Vectors have no counters; a run of whole pixels is written out instead, so that each array's address is
// fixed.
template <unsigned int Channels, std::size_t... I>
void CountBytes(const std::uint8_t* source, std::uint32_t* const* counts, std::index_sequence<I...>) {
    (++counts[WayOf<Channels>(I)][source[I]], ...);
}

template <unsigned int Channels>
std::size_t Count8(const std::uint8_t* source, std::size_t pixels, const Counters& counters) {
    constexpr std::size_t Run = Channels == 3 ? 24 : 16; // samples
    std::uint32_t* counts[Counters::MaxChannels * Counters::Ways];
    std::memcpy(counts, counters.counts, sizeof counts);
    std::size_t x = 0;
    for (; x + Run / Channels <= pixels; x += Run / Channels)
        CountBytes<Channels>(source + Channels * x, counts, std::make_index_sequence<Run>());
    return x;
}

template <class T>
void CountScalar(const std::uint8_t* source, std::size_t pixels, unsigned int channels,
                 const Counters& counters) {
    for (std::size_t x = 0; x < pixels; ++x) {
        for (unsigned int channel = 0; channel < channels; ++channel) {
            const T sample = Sample<T>(source, x * channels + channel);
            if (sample < counters.bins)
                ++counters.counts[Counters::Ways * channel][sample];
        }
    }
}

} // namespace

namespace Reference {

void CountLine8(const std::uint8_t* source, std::size_t pixels, unsigned int channels,
                const Counters& counters) {
    CountScalar<std::uint8_t>(source, pixels, channels, counters);
}

void CountLine16(const std::uint8_t* source, std::size_t pixels, unsigned int channels,
                 const Counters& counters) {
    CountScalar<std::uint16_t>(source, pixels, channels, counters);
}

} // namespace Reference

void CountLine8(const std::uint8_t* source, std::size_t pixels, unsigned int channels,
                const Counters& counters) {
    std::size_t done = 0;
    if (channels == 1)
        done = Count8<1>(source, pixels, counters);
    else if (channels == 2)
        done = Count8<2>(source, pixels, counters);
    else if (channels == 3)
        done = Count8<3>(source, pixels, counters);
    else if (channels == 4)
        done = Count8<4>(source, pixels, counters);
    Reference::CountLine8(source + done * channels, pixels - done, channels, counters);
}

void CountLine16(const std::uint8_t* source, std::size_t pixels, unsigned int channels,
                 const Counters& counters) {
    const std::size_t done = HWY_DYNAMIC_DISPATCH(CountWide16)(source, pixels, channels, counters);
    Reference::CountLine16(source + 2 * channels * done, pixels - done, channels, counters);
}

void SumCounters(unsigned int channels, const Counters& counters) {
    for (unsigned int channel = 0; channel < channels; ++channel)
        HWY_DYNAMIC_DISPATCH(SumWays)(counters.counts + Counters::Ways * channel, counters.bins);
}

} // namespace VX3::Kernels
#endif
