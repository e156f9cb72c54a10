#include "processing/kernels/Split.h"

#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "processing/kernels/Split.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace VX3::Kernels::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR

// No vectors: the scalar reference does all.
std::size_t SplitWide(const std::uint8_t*, std::uint8_t* const*, std::size_t, unsigned int, unsigned int,
                      Stores) {
    return 0;
}

#else

template <class T>
using Vector = hn::Vec<hn::ScalableTag<T>>;

template <Stores S, class T>
HWY_INLINE void Put(Vector<T> value, std::uint8_t* target) {
    const hn::ScalableTag<std::uint8_t> d8;
    if constexpr (S == Stores::Streaming)
        hn::Stream(hn::BitCast(d8, value), d8, target);
    else
        hn::StoreU(hn::BitCast(d8, value), d8, target);
}

template <class T, unsigned int Channels, Stores S = Stores::Cached>
HWY_INLINE void Step(const std::uint8_t* source, std::uint8_t* const* targets, std::size_t x) {
    const hn::ScalableTag<T> d;
    const auto* samples = reinterpret_cast<const T*>(source + x * Channels * sizeof(T));
    Vector<T> c0;
    Vector<T> c1;
    if constexpr (Channels == 2) {
        const hn::ScalableTag<std::uint8_t> d8;
        const auto* bytes = source + x * Channels * sizeof(T);
        const auto low = hn::BitCast(d, hn::LoadU(d8, bytes));
        const auto high = hn::BitCast(d, hn::LoadU(d8, bytes + hn::Lanes(d8)));
        c0 = hn::ConcatEven(d, high, low);
        c1 = hn::ConcatOdd(d, high, low);
    } else if constexpr (Channels == 3) {
        Vector<T> c2;
        hn::LoadInterleaved3(d, samples, c0, c1, c2);
        Put<S, T>(c2, targets[2] + x * sizeof(T));
    } else {
        Vector<T> c2;
        Vector<T> c3;
        hn::LoadInterleaved4(d, samples, c0, c1, c2, c3);
        Put<S, T>(c2, targets[2] + x * sizeof(T));
        Put<S, T>(c3, targets[3] + x * sizeof(T));
    }
    Put<S, T>(c0, targets[0] + x * sizeof(T));
    Put<S, T>(c1, targets[1] + x * sizeof(T));
}

// How far to the first place where all targets are aligned to a vector; more than a line where there is none.
template <class T>
std::size_t AlignedFrom(std::uint8_t* const* targets, unsigned int channels) {
    const std::size_t bytes = hn::Lanes(hn::ScalableTag<std::uint8_t>());
    const std::size_t off = reinterpret_cast<std::uintptr_t>(targets[0]) % bytes;
    for (unsigned int i = 1; i < channels; ++i)
        if (reinterpret_cast<std::uintptr_t>(targets[i]) % bytes != off)
            return ~std::size_t{0};
    return off % sizeof(T) == 0 ? (bytes - off) / sizeof(T) : ~std::size_t{0};
}

// The last step overlaps the one before it; lines below one vector are for the scalar reference.
template <class T, unsigned int Channels>
std::size_t Split(const std::uint8_t* source, std::uint8_t* const* targets, std::size_t pixels,
                  Stores stores) {
    const std::size_t n = hn::Lanes(hn::ScalableTag<T>());
    if (pixels < n)
        return 0;
    std::size_t x = 0;
    const std::size_t aligned = stores == Stores::Streaming ? AlignedFrom<T>(targets, Channels) : pixels;
    if (aligned < pixels) {
        Step<T, Channels>(source, targets, 0);
        for (x = aligned; x + n <= pixels; x += n)
            Step<T, Channels, Stores::Streaming>(source, targets, x);
    } else {
        for (; x + n <= pixels; x += n)
            Step<T, Channels>(source, targets, x);
    }
    Step<T, Channels>(source, targets, pixels - n);
    return pixels;
}

std::size_t SplitWide(const std::uint8_t* source, std::uint8_t* const* targets, std::size_t pixels,
                      unsigned int channels, unsigned int sampleBytes, Stores stores) {
    switch (channels * 2 + sampleBytes) {
    case 2 * 2 + 1:
        return Split<std::uint8_t, 2>(source, targets, pixels, stores);
    case 3 * 2 + 1:
        return Split<std::uint8_t, 3>(source, targets, pixels, stores);
    case 4 * 2 + 1:
        return Split<std::uint8_t, 4>(source, targets, pixels, stores);
    case 2 * 2 + 2:
        return Split<std::uint16_t, 2>(source, targets, pixels, stores);
    case 3 * 2 + 2:
        return Split<std::uint16_t, 3>(source, targets, pixels, stores);
    case 4 * 2 + 2:
        return Split<std::uint16_t, 4>(source, targets, pixels, stores);
    default:
        return 0;
    }
}

#endif // HWY_TARGET

} // namespace
} // namespace VX3::Kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace VX3::Kernels {
namespace {
HWY_EXPORT(SplitWide);
} // namespace

namespace Reference {

void SplitLine(const std::uint8_t* source, std::uint8_t* const* targets, std::size_t pixels,
               unsigned int channels, unsigned int sampleBytes) {
    for (std::size_t x = 0; x < pixels; ++x) {
        for (unsigned int k = 0; k < channels; ++k) {
            std::memcpy(targets[k] + x * sampleBytes, source, sampleBytes);
            source += sampleBytes;
        }
    }
}

} // namespace Reference

void SplitLine(const std::uint8_t* source, std::uint8_t* const* targets, std::size_t pixels,
               unsigned int channels, unsigned int sampleBytes, Stores stores) {
    if (HWY_DYNAMIC_DISPATCH(SplitWide)(source, targets, pixels, channels, sampleBytes, stores) != pixels)
        Reference::SplitLine(source, targets, pixels, channels, sampleBytes);
}

} // namespace VX3::Kernels
#endif
