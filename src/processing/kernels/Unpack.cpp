#include "processing/kernels/Unpack.h"

#include <algorithm>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "processing/kernels/Unpack.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace VX3::Kernels::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR

// No vectors: the scalar reference does all.
std::size_t UnpackWide(Packing, const std::uint8_t*, std::size_t, std::uint8_t*, std::size_t) {
    return 0;
}
std::size_t UnpackWideTo8(Packing, const std::uint8_t*, std::size_t, std::uint8_t*, std::size_t) {
    return 0;
}

#else

// A step makes 8 samples of one 128-bit load. Wider vectors would gain nothing: these loops wait for memory.
using D8 = hn::CappedTag<std::uint8_t, 16>;
using D16 = hn::CappedTag<std::uint16_t, 8>;
using V16 = hn::Vec<D16>;
constexpr std::size_t StepSamples = 8;

HWY_ALIGN constexpr std::uint16_t Spread10[8] = {64, 16, 4, 1, 64, 16, 4, 1};
HWY_ALIGN constexpr std::uint16_t Spread12[8] = {16, 1, 16, 1, 16, 1, 16, 1};

// Brings the two bytes that hold a sample into each 16-bit lane.
HWY_INLINE V16 Gather(const std::uint8_t* source, const std::uint8_t (&shuffle)[16]) {
    const D8 d8;
    return hn::BitCast(D16(), hn::TableLookupBytes(hn::LoadU(d8, source), hn::Load(d8, shuffle)));
}

// Top() leaves the sample at the top of its lane (below it anything), Full() at the bottom with zeros above.
struct Mono10p {
    static constexpr std::size_t Bytes = 10; // of a step
    HWY_INLINE static V16 Top(const std::uint8_t* source) {
        HWY_ALIGN static constexpr std::uint8_t Shuffle[16] = {0, 1, 1, 2, 2, 3, 3, 4,
                                                               5, 6, 6, 7, 7, 8, 8, 9};
        return hn::Mul(Gather(source, Shuffle), hn::Load(D16(), Spread10));
    }
    HWY_INLINE static V16 Full(const std::uint8_t* source) { return hn::ShiftRight<6>(Top(source)); }
};

struct Mono12p {
    static constexpr std::size_t Bytes = 12;
    HWY_INLINE static V16 Top(const std::uint8_t* source) {
        HWY_ALIGN static constexpr std::uint8_t Shuffle[16] = {0, 1, 1, 2, 3, 4,  4,  5,
                                                               6, 7, 7, 8, 9, 10, 10, 11};
        return hn::Mul(Gather(source, Shuffle), hn::Load(D16(), Spread12));
    }
    HWY_INLINE static V16 Full(const std::uint8_t* source) { return hn::ShiftRight<4>(Top(source)); }
};

// The top 8 bits are whole bytes: lanes become (byte 1, byte 0) and (byte 1, byte 2) of each group.
struct PackedPair {
    static constexpr std::size_t Bytes = 12;
    HWY_INLINE static V16 Top(const std::uint8_t* source) {
        HWY_ALIGN static constexpr std::uint8_t Shuffle[16] = {1, 0, 1, 2, 4,  3, 4,  5,
                                                               7, 6, 7, 8, 10, 9, 10, 11};
        return Gather(source, Shuffle);
    }
    // The low nibble of byte 1 for even samples, the high one for odd samples, above which anything stands.
    HWY_INLINE static V16 Nibble(V16 top) {
        return hn::ShiftRight<4>(hn::Mul(top, hn::Load(D16(), Spread12)));
    }
};

struct Mono10Packed : PackedPair {
    HWY_INLINE static V16 Full(const std::uint8_t* source) {
        const D16 d;
        const V16 top = Top(source);
        return hn::Or(hn::And(hn::ShiftRight<6>(top), hn::Set(d, 0x3FC)),
                      hn::And(Nibble(top), hn::Set(d, 0x003)));
    }
};

struct Mono12Packed : PackedPair {
    HWY_INLINE static V16 Full(const std::uint8_t* source) {
        const D16 d;
        const V16 top = Top(source);
        return hn::Or(hn::And(hn::ShiftRight<4>(top), hn::Set(d, 0xFF0)),
                      hn::And(Nibble(top), hn::Set(d, 0x00F)));
    }
};

// What the steps of a line write: 16-bit samples, or their top 8 bits.
template <class Format>
struct To16 {
    static constexpr std::size_t SampleBytes = 2;
    HWY_INLINE static void Step(const std::uint8_t* source, std::uint8_t* target) {
        const D8 d8;
        const V16 first = Format::Full(source);
        const V16 second = Format::Full(source + Format::Bytes);
        hn::StoreU(hn::BitCast(d8, first), d8, target);
        hn::StoreU(hn::BitCast(d8, second), d8, target + 16);
    }
};

template <class Format>
struct To8 {
    static constexpr std::size_t SampleBytes = 1;
    HWY_INLINE static void Step(const std::uint8_t* source, std::uint8_t* target) {
        const D8 d8;
        const V16 first = Format::Top(source);
        const V16 second = Format::Top(source + Format::Bytes);
        hn::StoreU(hn::ConcatOdd(d8, hn::BitCast(d8, second), hn::BitCast(d8, first)), d8, target);
    }
};

// Two steps a time while their loads stay in the line; the rest goes through a buffer that is zero where the
// line holds nothing.
template <class Format, class To>
std::size_t Unpack(const std::uint8_t* source, std::size_t sourceBytes, std::uint8_t* target,
                   std::size_t pixels) {
    constexpr std::size_t Pixels = 2 * StepSamples;
    constexpr std::size_t Bytes = 2 * Format::Bytes;
    std::size_t x = 0;
    std::size_t at = 0;
    for (; x + Pixels <= pixels && at + Format::Bytes + 16 <= sourceBytes; x += Pixels, at += Bytes)
        To::Step(source + at, target + To::SampleBytes * x);
    for (; x < pixels; x += Pixels, at += Bytes) {
        HWY_ALIGN std::uint8_t in[Format::Bytes + 16] = {};
        HWY_ALIGN std::uint8_t out[To::SampleBytes * Pixels];
        if (at < sourceBytes)
            std::memcpy(in, source + at, std::min(Bytes, sourceBytes - at));
        To::Step(in, out);
        std::memcpy(target + To::SampleBytes * x, out, To::SampleBytes * std::min(Pixels, pixels - x));
    }
    return pixels;
}

std::size_t UnpackWide(Packing packing, const std::uint8_t* source, std::size_t sourceBytes,
                       std::uint8_t* target, std::size_t pixels) {
    switch (packing) {
    case Packing::Mono10p:
        return Unpack<Mono10p, To16<Mono10p>>(source, sourceBytes, target, pixels);
    case Packing::Mono12p:
        return Unpack<Mono12p, To16<Mono12p>>(source, sourceBytes, target, pixels);
    case Packing::Mono10Packed:
        return Unpack<Mono10Packed, To16<Mono10Packed>>(source, sourceBytes, target, pixels);
    case Packing::Mono12Packed:
        return Unpack<Mono12Packed, To16<Mono12Packed>>(source, sourceBytes, target, pixels);
    }
    return 0;
}

std::size_t UnpackWideTo8(Packing packing, const std::uint8_t* source, std::size_t sourceBytes,
                          std::uint8_t* target, std::size_t pixels) {
    switch (packing) {
    case Packing::Mono10p:
        return Unpack<Mono10p, To8<Mono10p>>(source, sourceBytes, target, pixels);
    case Packing::Mono12p:
        return Unpack<Mono12p, To8<Mono12p>>(source, sourceBytes, target, pixels);
    case Packing::Mono10Packed:
    case Packing::Mono12Packed:
        return Unpack<PackedPair, To8<PackedPair>>(source, sourceBytes, target, pixels);
    }
    return 0;
}

#endif // HWY_TARGET

} // namespace
} // namespace VX3::Kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace VX3::Kernels {
namespace {

HWY_EXPORT(UnpackWide);
HWY_EXPORT(UnpackWideTo8);

// One group of a line: its bytes, those past the end of the line as 0.
struct Group {
    std::uint32_t b[5] = {};
    Group(const std::uint8_t* source, std::size_t sourceBytes, std::size_t at, std::size_t groupBytes) {
        for (std::size_t i = 0; i < groupBytes && at + i < sourceBytes; ++i)
            b[i] = source[at + i];
    }
};

struct Layout {
    std::size_t pixels;
    std::size_t bytes;
    unsigned int depth;
};

Layout LayoutOf(Packing packing) {
    switch (packing) {
    case Packing::Mono10p:
        return {4, 5, 10};
    case Packing::Mono10Packed:
        return {2, 3, 10};
    case Packing::Mono12p:
    case Packing::Mono12Packed:
        break;
    }
    return {2, 3, 12};
}

std::uint32_t SampleOf(Packing packing, const Group& group, std::size_t pixel) {
    const auto& b = group.b;
    switch (packing) {
    case Packing::Mono10p: {
        const std::uint32_t pair = b[pixel] | b[pixel + 1] << 8;
        return pair >> (2 * pixel) & 0x3FF;
    }
    case Packing::Mono12p:
        return pixel == 0 ? b[0] | (b[1] & 0x0F) << 8 : b[1] >> 4 | b[2] << 4;
    case Packing::Mono10Packed:
        return pixel == 0 ? b[0] << 2 | (b[1] & 0x03) : b[2] << 2 | (b[1] >> 4 & 0x03);
    case Packing::Mono12Packed:
        return pixel == 0 ? b[0] << 4 | (b[1] & 0x0F) : b[2] << 4 | b[1] >> 4;
    }
    return 0;
}

template <class Store>
void ForEachSample(Packing packing, const std::uint8_t* source, std::size_t sourceBytes, std::size_t pixels,
                   Store store) {
    const Layout layout = LayoutOf(packing);
    for (std::size_t x = 0, at = 0; x < pixels; x += layout.pixels, at += layout.bytes) {
        const Group group(source, sourceBytes, at, layout.bytes);
        for (std::size_t i = 0; i < std::min(layout.pixels, pixels - x); ++i)
            store(x + i, SampleOf(packing, group, i), layout.depth);
    }
}

} // namespace

namespace Reference {

void UnpackLine(Packing packing, const std::uint8_t* source, std::size_t sourceBytes, std::uint8_t* target,
                std::size_t pixels) {
    ForEachSample(packing, source, sourceBytes, pixels,
                  [target](std::size_t x, std::uint32_t sample, unsigned int) {
                      const auto value = static_cast<std::uint16_t>(sample);
                      std::memcpy(target + 2 * x, &value, sizeof value);
                  });
}

void UnpackLineTo8(Packing packing, const std::uint8_t* source, std::size_t sourceBytes, std::uint8_t* target,
                   std::size_t pixels) {
    ForEachSample(packing, source, sourceBytes, pixels,
                  [target](std::size_t x, std::uint32_t sample, unsigned int depth) {
                      target[x] = static_cast<std::uint8_t>(sample >> (depth - 8));
                  });
}

} // namespace Reference

void UnpackLine(Packing packing, const std::uint8_t* source, std::size_t sourceBytes, std::uint8_t* target,
                std::size_t pixels) {
    if (HWY_DYNAMIC_DISPATCH(UnpackWide)(packing, source, sourceBytes, target, pixels) != pixels)
        Reference::UnpackLine(packing, source, sourceBytes, target, pixels);
}

void UnpackLineTo8(Packing packing, const std::uint8_t* source, std::size_t sourceBytes, std::uint8_t* target,
                   std::size_t pixels) {
    if (HWY_DYNAMIC_DISPATCH(UnpackWideTo8)(packing, source, sourceBytes, target, pixels) != pixels)
        Reference::UnpackLineTo8(packing, source, sourceBytes, target, pixels);
}

} // namespace VX3::Kernels
#endif
