// What the algorithms need to know of a pixel format, derived at compile time from the one format table.
#pragma once

#include "processing/kernels/Demosaic.h"
#include "processing/kernels/Unpack.h"
#include "vx3/image/PixelFormat.h"

namespace VX3 {

enum class FormatKind { None, Mono, Packed, Float, Bayer, Colour };

struct FormatTraits {
    PixelFormatValue format = InvalidFormat;
    FormatKind kind = FormatKind::None;
    unsigned int channels = 0; // interleaved in a pixel; 1 for Bayer
    unsigned int depth = 0;
    unsigned int sampleBytes = 0;
    PixelChannelID firstChannel = PixelChannelID::Invalid;
    PixelFormatValue unpacked = InvalidFormat; // result of unpacking; invalid where there is none
    PixelFormatValue reduced = InvalidFormat;  // result of reduction to 8 bits
    bool swaps = false;                        // reduction exchanges the first and third channel
    Kernels::Packing packing = Kernels::Packing::Mono10p;
    Kernels::Mosaic mosaic = Kernels::Mosaic::RG;
};

namespace Detail {

constexpr FormatKind KindOf(unsigned int channels, unsigned int depth, bool packed, PixelChannelID last) {
    if (packed) {
        return depth == 32 ? FormatKind::Float : FormatKind::Packed;
    }
    if (channels == 1) {
        return FormatKind::Mono;
    }
    return channels == 4 && last != PixelChannelID::Alpha ? FormatKind::Bayer : FormatKind::Colour;
}

constexpr PixelFormatValue ReducedColour(const FormatTraits& traits) {
    const bool redFirst = traits.firstChannel == PixelChannelID::Red;
    if (traits.depth == 8) { // only the order changes
        if (traits.channels == 3) {
            return redFirst ? BGR8 : RGB8;
        }
        return redFirst ? BGRa8 : RGBa8;
    }
    if (traits.channels == 3) {
        return redFirst ? RGB8 : BGR8;
    }
    return RGBa8;
}

constexpr Kernels::Packing PackingOf(PixelFormatValue format) {
    switch (format) {
    case Mono12p:
        return Kernels::Packing::Mono12p;
    case Mono10Packed:
        return Kernels::Packing::Mono10Packed;
    case Mono12Packed:
        return Kernels::Packing::Mono12Packed;
    default:
        return Kernels::Packing::Mono10p;
    }
}

constexpr Kernels::Mosaic MosaicOf(PixelChannelID first, PixelChannelID second) {
    if (first == PixelChannelID::Red) {
        return Kernels::Mosaic::RG;
    }
    if (first == PixelChannelID::Blue) {
        return Kernels::Mosaic::BG;
    }
    return second == PixelChannelID::Red ? Kernels::Mosaic::GR : Kernels::Mosaic::GB;
}

constexpr FormatTraits MakeTraits(PixelFormatValue format, unsigned int channels, unsigned int depth,
                                  bool packed, PixelChannelID first, PixelChannelID second,
                                  PixelChannelID last) {
    FormatTraits traits;
    traits.format = format;
    traits.kind = KindOf(channels, depth, packed, last);
    traits.channels = traits.kind == FormatKind::Bayer ? 1 : channels;
    traits.depth = depth;
    traits.sampleBytes = depth == 8 ? 1 : depth == 32 ? 4 : 2;
    traits.firstChannel = first;
    switch (traits.kind) {
    case FormatKind::Mono:
        traits.reduced = depth > 8 ? Mono8 : InvalidFormat;
        break;
    case FormatKind::Packed:
        traits.unpacked = depth == 10 ? Mono10 : Mono12;
        traits.reduced = Mono8;
        traits.packing = PackingOf(format);
        break;
    case FormatKind::Float:
        traits.unpacked = Mono16;
        traits.reduced = Mono8;
        break;
    case FormatKind::Bayer:
        traits.reduced = RGB8;
        traits.mosaic = MosaicOf(first, second);
        break;
    case FormatKind::Colour:
        traits.reduced = ReducedColour(traits);
        traits.swaps = depth == 8 || (channels == 4 && first == PixelChannelID::Blue);
        break;
    case FormatKind::None:
        break;
    }
    return traits;
}

} // namespace Detail

// Formats outside the table have the kind None.
constexpr FormatTraits TraitsOf(PixelFormatValue format) {
    switch (format) {
#define VX3_FORMAT_TRAITS(name, code, text, channels, depth, rule, packed, c0, c1, c2, c3)                   \
    case name:                                                                                               \
        return Detail::MakeTraits(name, channels, depth, packed, PixelChannelID::c0, PixelChannelID::c1,     \
                                  PixelChannelID::c3);
        VX3_PIXEL_FORMAT_TABLE(VX3_FORMAT_TRAITS)
#undef VX3_FORMAT_TRAITS
    default:
        return {};
    }
}

} // namespace VX3
