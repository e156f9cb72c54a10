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
std::size_t SplitWide(const std::uint8_t*, std::uint8_t* const*, std::size_t, unsigned int, unsigned int) {
    return 0;
}

#else

template <class T>
using Vector = hn::Vec<hn::ScalableTag<T>>;

template <class T>
HWY_INLINE void Put(Vector<T> value, std::uint8_t* target) {
    const hn::ScalableTag<std::uint8_t> d8;
    hn::StoreU(hn::BitCast(d8, value), d8, target);
}

template <class T, unsigned int Channels>
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
        Put<T>(c2, targets[2] + x * sizeof(T));
    } else {
        Vector<T> c2;
        Vector<T> c3;
        hn::LoadInterleaved4(d, samples, c0, c1, c2, c3);
        Put<T>(c2, targets[2] + x * sizeof(T));
        Put<T>(c3, targets[3] + x * sizeof(T));
    }
    Put<T>(c0, targets[0] + x * sizeof(T));
    Put<T>(c1, targets[1] + x * sizeof(T));
}

// The last step overlaps the one before it; lines below one vector are for the scalar reference.
template <class T, unsigned int Channels>
std::size_t Split(const std::uint8_t* source, std::uint8_t* const* targets, std::size_t pixels) {
    const std::size_t n = hn::Lanes(hn::ScalableTag<T>());
    if (pixels < n) {
        return 0;
    }
    for (std::size_t x = 0; x + n <= pixels; x += n) {
        Step<T, Channels>(source, targets, x);
    }
    Step<T, Channels>(source, targets, pixels - n);
    return pixels;
}

std::size_t SplitWide(const std::uint8_t* source, std::uint8_t* const* targets, std::size_t pixels,
                      unsigned int channels, unsigned int sampleBytes) {
    switch (channels * 2 + sampleBytes) {
    case 2 * 2 + 1:
        return Split<std::uint8_t, 2>(source, targets, pixels);
    case 3 * 2 + 1:
        return Split<std::uint8_t, 3>(source, targets, pixels);
    case 4 * 2 + 1:
        return Split<std::uint8_t, 4>(source, targets, pixels);
    case 2 * 2 + 2:
        return Split<std::uint16_t, 2>(source, targets, pixels);
    case 3 * 2 + 2:
        return Split<std::uint16_t, 3>(source, targets, pixels);
    case 4 * 2 + 2:
        return Split<std::uint16_t, 4>(source, targets, pixels);
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
               unsigned int channels, unsigned int sampleBytes) {
    if (HWY_DYNAMIC_DISPATCH(SplitWide)(source, targets, pixels, channels, sampleBytes) != pixels) {
        Reference::SplitLine(source, targets, pixels, channels, sampleBytes);
    }
}

} // namespace VX3::Kernels
#endif
