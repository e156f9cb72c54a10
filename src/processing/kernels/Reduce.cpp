#include "processing/kernels/Reduce.h"

#include "processing/kernels/Samples.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "processing/kernels/Reduce.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace VX3::Kernels::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR

// No vectors: the scalar reference does all.
std::size_t Reduce(const std::uint8_t*, std::uint8_t*, std::size_t, int, Stores) {
    return 0;
}
std::size_t ReduceSwap4(const std::uint8_t*, std::uint8_t*, std::size_t, int) {
    return 0;
}
std::size_t FloatTo16(const std::uint8_t*, std::uint8_t*, std::size_t) {
    return 0;
}
std::size_t FloatTo8(const std::uint8_t*, std::uint8_t*, std::size_t) {
    return 0;
}

#else

using D8 = hn::ScalableTag<std::uint8_t>;
using D16 = hn::ScalableTag<std::uint16_t>;

HWY_INLINE hn::Vec<D8> ReduceStep(const std::uint8_t* source, int shift) {
    const D8 d8;
    const D16 d16;
    const auto low = hn::BitCast(d16, hn::LoadU(d8, source));
    const auto high = hn::BitCast(d16, hn::LoadU(d8, source + hn::Lanes(d8)));
    return hn::ConcatEven(d8, hn::BitCast(d8, hn::ShiftRightSame(high, shift)),
                          hn::BitCast(d8, hn::ShiftRightSame(low, shift)));
}

// The last step of a line overlaps the one before it, so that only lines below one vector go sample by
// sample. Streaming stores are aligned: there the first step overlaps the second as well.
std::size_t Reduce(const std::uint8_t* source, std::uint8_t* target, std::size_t samples, int shift,
                   Stores stores) {
    const D8 d8;
    const std::size_t n = hn::Lanes(d8);
    if (samples < n)
        return 0;
    std::size_t x = 0;
    if (stores == Stores::Streaming) {
        hn::StoreU(ReduceStep(source, shift), d8, target);
        for (x = n - reinterpret_cast<std::uintptr_t>(target) % n; x + n <= samples; x += n)
            hn::Stream(ReduceStep(source + 2 * x, shift), d8, target + x);
    } else {
        for (; x + n <= samples; x += n)
            hn::StoreU(ReduceStep(source + 2 * x, shift), d8, target + x);
    }
    x = samples - n;
    hn::StoreU(ReduceStep(source + 2 * x, shift), d8, target + x);
    return samples;
}

std::size_t ReduceSwap4(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels, int shift) {
    HWY_ALIGN static constexpr std::uint8_t Swap[16] = {2, 1, 0, 3, 6, 5, 4, 7, 10, 9, 8, 11, 14, 13, 12, 15};
    const D8 d8;
    const std::size_t n = hn::Lanes(d8);
    const std::size_t samples = 4 * pixels;
    if (samples < n)
        return 0;
    const auto swap = hn::LoadDup128(d8, Swap);
    std::size_t x = 0;
    for (; x + n <= samples; x += n)
        hn::StoreU(hn::TableLookupBytes(ReduceStep(source + 2 * x, shift), swap), d8, target + x);
    x = samples - n;
    hn::StoreU(hn::TableLookupBytes(ReduceStep(source + 2 * x, shift), swap), d8, target + x);
    return pixels;
}

// 4 floats a load; 128-bit vectors keep the narrowing in order without permutations across blocks.
using D8x16 = hn::CappedTag<std::uint8_t, 16>;
using D8x8 = hn::CappedTag<std::uint8_t, 8>;
using D8x4 = hn::CappedTag<std::uint8_t, 4>;
using DFloat = hn::CappedTag<float, 4>;
using DInt = hn::CappedTag<std::int32_t, 4>;
using DHalf = hn::CappedTag<std::uint16_t, 4>;

HWY_INLINE hn::Vec<DInt> FloatStep(const std::uint8_t* source, float scale) {
    const DFloat d;
    const auto value = hn::BitCast(d, hn::LoadU(D8x16(), source));
    // Not-a-number compares false and becomes 0.
    const auto positive = hn::IfThenElseZero(hn::Ge(value, hn::Zero(d)), value);
    const auto limited = hn::Min(positive, hn::Set(d, 65535.0F));
    return hn::ConvertTo(DInt(), hn::Mul(limited, hn::Set(d, scale)));
}

std::size_t FloatTo16(const std::uint8_t* source, std::uint8_t* target, std::size_t samples) {
    std::size_t x = 0;
    for (; x + 4 <= samples; x += 4) {
        const auto narrow = hn::DemoteTo(DHalf(), FloatStep(source + 4 * x, 1.0F));
        hn::StoreU(hn::BitCast(D8x8(), narrow), D8x8(), target + 2 * x);
    }
    return x;
}

std::size_t FloatTo8(const std::uint8_t* source, std::uint8_t* target, std::size_t samples) {
    std::size_t x = 0;
    for (; x + 4 <= samples; x += 4) {
        const auto narrow = hn::DemoteTo(D8x4(), FloatStep(source + 4 * x, 1.0F / 256.0F));
        hn::StoreU(narrow, D8x4(), target + x);
    }
    return x;
}

#endif // HWY_TARGET

} // namespace
} // namespace VX3::Kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace VX3::Kernels {
namespace {

HWY_EXPORT(Reduce);
HWY_EXPORT(ReduceSwap4);
HWY_EXPORT(FloatTo16);
HWY_EXPORT(FloatTo8);

std::uint32_t Clamped(float value) {
    if (value > 65535.0F)
        return 65535;
    return value > 0.0F ? static_cast<std::uint32_t>(value) : 0;
}

} // namespace

namespace Reference {

void ReduceLine(const std::uint8_t* source, std::uint8_t* target, std::size_t samples, unsigned int shift) {
    for (std::size_t x = 0; x < samples; ++x)
        target[x] = static_cast<std::uint8_t>(Sample<std::uint16_t>(source, x) >> shift);
}

void ReduceSwapLine4(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels,
                     unsigned int shift) {
    static constexpr std::size_t From[4] = {2, 1, 0, 3};
    for (std::size_t x = 0; x < 4 * pixels; ++x) {
        const std::size_t from = x - x % 4 + From[x % 4];
        target[x] = static_cast<std::uint8_t>(Sample<std::uint16_t>(source, from) >> shift);
    }
}

void FloatLineTo16(const std::uint8_t* source, std::uint8_t* target, std::size_t samples) {
    for (std::size_t x = 0; x < samples; ++x)
        PutSample(target, x, static_cast<std::uint16_t>(Clamped(Sample<float>(source, x))));
}

void FloatLineTo8(const std::uint8_t* source, std::uint8_t* target, std::size_t samples) {
    for (std::size_t x = 0; x < samples; ++x)
        target[x] = static_cast<std::uint8_t>(Clamped(Sample<float>(source, x)) >> 8);
}

} // namespace Reference

void ReduceLine(const std::uint8_t* source, std::uint8_t* target, std::size_t samples, unsigned int shift,
                Stores stores) {
    if (HWY_DYNAMIC_DISPATCH(Reduce)(source, target, samples, static_cast<int>(shift), stores) != samples)
        Reference::ReduceLine(source, target, samples, shift);
}

void ReduceSwapLine4(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels,
                     unsigned int shift) {
    if (HWY_DYNAMIC_DISPATCH(ReduceSwap4)(source, target, pixels, static_cast<int>(shift)) != pixels)
        Reference::ReduceSwapLine4(source, target, pixels, shift);
}

void FloatLineTo16(const std::uint8_t* source, std::uint8_t* target, std::size_t samples) {
    const std::size_t done = HWY_DYNAMIC_DISPATCH(FloatTo16)(source, target, samples);
    Reference::FloatLineTo16(source + 4 * done, target + 2 * done, samples - done);
}

void FloatLineTo8(const std::uint8_t* source, std::uint8_t* target, std::size_t samples) {
    const std::size_t done = HWY_DYNAMIC_DISPATCH(FloatTo8)(source, target, samples);
    Reference::FloatLineTo8(source + 4 * done, target + done, samples - done);
}

} // namespace VX3::Kernels
#endif
