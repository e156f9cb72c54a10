#include "processing/kernels/Recolor.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "processing/kernels/Recolor.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

#ifndef VX3_KERNELS_RECOLOR_WEIGHTS
#define VX3_KERNELS_RECOLOR_WEIGHTS
namespace VX3::Kernels {
constexpr unsigned int RedWeight = 77;
constexpr unsigned int GreenWeight = 150;
constexpr unsigned int BlueWeight = 29;
static_assert(RedWeight + GreenWeight + BlueWeight == 256, "white stays white");
} // namespace VX3::Kernels
#endif

HWY_BEFORE_NAMESPACE();
namespace VX3::Kernels::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR

// No vectors: the scalar reference does all.
std::size_t Grey(const std::uint8_t*, std::uint8_t*, std::size_t, unsigned int, bool) {
    return 0;
}
std::size_t Spread(const std::uint8_t*, std::uint8_t*, std::size_t) {
    return 0;
}
std::size_t Narrow(const std::uint8_t*, std::uint8_t*, std::size_t, bool) {
    return 0;
}

#else

using D8 = hn::ScalableTag<std::uint8_t>;
using D16 = hn::RepartitionToWide<D8>;

// The weighted sums of the even bytes end in the low halves of their lanes, of the odd ones in the high
// halves.
HWY_INLINE hn::Vec<D8> Weighted(hn::Vec<D8> first, hn::Vec<D8> green, hn::Vec<D8> third,
                                unsigned int firstWeight) {
    const D8 d8;
    const D16 d;
    const auto even = [d](auto bytes) { return hn::And(hn::BitCast(d, bytes), hn::Set(d, 0x00FF)); };
    const auto odd = [d](auto bytes) { return hn::ShiftRight<8>(hn::BitCast(d, bytes)); };
    const auto sum = [&](const auto& half) {
        const auto w0 = hn::Set(d, static_cast<std::uint16_t>(firstWeight));
        const auto w2 = hn::Set(d, static_cast<std::uint16_t>(RedWeight + BlueWeight - firstWeight));
        return hn::Add(hn::Add(hn::Mul(half(first), w0), hn::Mul(half(third), w2)),
                       hn::Mul(half(green), hn::Set(d, GreenWeight)));
    };
    return hn::BitCast(d8, hn::Or(hn::ShiftRight<8>(sum(even)), hn::And(sum(odd), hn::Set(d, 0xFF00))));
}

template <unsigned int Channels>
HWY_INLINE void GreyStep(const std::uint8_t* source, std::uint8_t* target, unsigned int firstWeight) {
    const D8 d;
    hn::Vec<D8> first;
    hn::Vec<D8> green;
    hn::Vec<D8> third;
    if constexpr (Channels == 3) {
        hn::LoadInterleaved3(d, source, first, green, third);
    } else {
        hn::Vec<D8> unused;
        hn::LoadInterleaved4(d, source, first, green, third, unused);
    }
    hn::StoreU(Weighted(first, green, third, firstWeight), d, target);
}

// The last step of a line overlaps the one before it; lines below one step are for the scalar reference.
template <unsigned int Channels>
std::size_t GreyOf(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels,
                   unsigned int firstWeight) {
    const std::size_t n = hn::Lanes(D8());
    if (pixels < n)
        return 0;
    for (std::size_t x = 0; x + n <= pixels; x += n)
        GreyStep<Channels>(source + Channels * x, target + x, firstWeight);
    GreyStep<Channels>(source + Channels * (pixels - n), target + pixels - n, firstWeight);
    return pixels;
}

std::size_t Grey(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels, unsigned int channels,
                 bool redFirst) {
    const unsigned int firstWeight = redFirst ? RedWeight : BlueWeight;
    return channels == 3 ? GreyOf<3>(source, target, pixels, firstWeight)
                         : GreyOf<4>(source, target, pixels, firstWeight);
}

// Pixels of three bytes are made sixteen at a time: three vectors of 128 bits. Wider ones gain nothing, and
// neither do stores past the caches.
using D = hn::CappedTag<std::uint8_t, 16>;
using V = hn::Vec<D>;
constexpr std::size_t Step = 16;
struct Three {
    V v[3];
};

HWY_INLINE void Put(const Three& three, std::uint8_t* target) {
    for (std::size_t i = 0; i < 3; ++i)
        hn::StoreU(three.v[i], D(), target + Step * i);
}

template <unsigned int SourceBytes, class Make>
HWY_INLINE std::size_t EachStep(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels,
                                const Make& make) {
    if (pixels < Step)
        return 0;
    for (std::size_t x = 0; x + Step <= pixels; x += Step)
        Put(make(source + SourceBytes * x), target + 3 * x);
    Put(make(source + SourceBytes * (pixels - Step)), target + 3 * (pixels - Step));
    return pixels;
}

std::size_t Spread(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels) {
    HWY_ALIGN static constexpr std::uint8_t Shuffles[3][16] = {
        {0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4, 5},
        {5, 5, 6, 6, 6, 7, 7, 7, 8, 8, 8, 9, 9, 9, 10, 10},
        {10, 11, 11, 11, 12, 12, 12, 13, 13, 13, 14, 14, 14, 15, 15, 15}};
    const V s0 = hn::Load(D(), Shuffles[0]);
    const V s1 = hn::Load(D(), Shuffles[1]);
    const V s2 = hn::Load(D(), Shuffles[2]);
    return EachStep<1>(source, target, pixels, [&](const std::uint8_t* from) {
        const V grey = hn::LoadU(D(), from);
        return Three{
            {hn::TableLookupBytes(grey, s0), hn::TableLookupBytes(grey, s1), hn::TableLookupBytes(grey, s2)}};
    });
}

std::size_t Narrow(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels, bool swap) {
    // Four pixels go to the lower twelve bytes, zeros above them.
    HWY_ALIGN static constexpr std::uint8_t Shuffles[2][16] = {
        {0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 0x80, 0x80, 0x80, 0x80},
        {2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, 0x80, 0x80, 0x80, 0x80}};
    const V shuffle = hn::Load(D(), Shuffles[swap ? 1 : 0]);
    return EachStep<4>(source, target, pixels, [&](const std::uint8_t* from) {
        const auto four = [&](std::size_t i) {
            return hn::TableLookupBytesOr0(hn::LoadU(D(), from + Step * i), shuffle);
        };
        const V b = four(1);
        const V c = four(2);
        return Three{{hn::Or(four(0), hn::ShiftLeftBytes<12>(b)),
                      hn::Or(hn::ShiftRightBytes<4>(D(), b), hn::ShiftLeftBytes<8>(c)),
                      hn::Or(hn::ShiftRightBytes<8>(D(), c), hn::ShiftLeftBytes<4>(four(3)))}};
    });
}

#endif // HWY_TARGET

} // namespace
} // namespace VX3::Kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace VX3::Kernels {
namespace {
HWY_EXPORT(Grey);
HWY_EXPORT(Spread);
HWY_EXPORT(Narrow);
} // namespace

namespace Reference {

void GreyLine(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels, unsigned int channels,
              bool redFirst) {
    for (std::size_t x = 0; x < pixels; ++x, source += channels) {
        const unsigned int red = source[redFirst ? 0 : 2];
        const unsigned int blue = source[redFirst ? 2 : 0];
        target[x] =
            static_cast<std::uint8_t>((RedWeight * red + GreenWeight * source[1] + BlueWeight * blue) >> 8);
    }
}

void SpreadLine(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels) {
    for (std::size_t at = 0; at < 3 * pixels; ++at)
        target[at] = source[at / 3];
}

void NarrowLine(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels, bool swap) {
    for (std::size_t x = 0; x < pixels; ++x, source += 4, target += 3) {
        target[0] = source[swap ? 2 : 0];
        target[1] = source[1];
        target[2] = source[swap ? 0 : 2];
    }
}

} // namespace Reference

void GreyLine(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels, unsigned int channels,
              bool redFirst) {
    if (HWY_DYNAMIC_DISPATCH(Grey)(source, target, pixels, channels, redFirst) != pixels)
        Reference::GreyLine(source, target, pixels, channels, redFirst);
}

void SpreadLine(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels) {
    if (HWY_DYNAMIC_DISPATCH(Spread)(source, target, pixels) != pixels)
        Reference::SpreadLine(source, target, pixels);
}

void NarrowLine(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels, bool swap) {
    if (HWY_DYNAMIC_DISPATCH(Narrow)(source, target, pixels, swap) != pixels)
        Reference::NarrowLine(source, target, pixels, swap);
}

} // namespace VX3::Kernels
#endif
