#include "processing/ImageConversion.h"

#include "processing/EachLine.h"
#include "processing/kernels/Reduce.h"
#include "processing/kernels/Swap.h"

#include <algorithm>
#include <cstring>

namespace VX3 {

namespace {

// What takes a sample to its top 8 bits.
unsigned int ShiftOf(const FormatTraits& traits) {
    return PixelFormat(traits.format).BitDepth() - 8;
}

// A single line has no second row of colours: it comes as grey.
void GreyOf(const std::uint8_t* source, const FormatTraits& traits, std::size_t width, std::uint8_t* target) {
    const unsigned int shift = ShiftOf(traits);
    for (std::size_t x = 0; x < width; ++x) {
        std::uint16_t sample = source[x];
        if (traits.layout.sampleBytes == 2)
            std::memcpy(&sample, source + 2 * x, 2);
        std::fill_n(target + 3 * x, 3, static_cast<std::uint8_t>(sample >> shift));
    }
}

// Lines start at multiples of 4 bytes. A last line without a partner takes the line before it for one.
std::unique_ptr<IImage> DemosaicImage(const IImage& image, const FormatTraits& traits,
                                      std::shared_ptr<IImagePool> pool) {
    const ImageInfo& info = *image.GetImageInfo();
    const auto padding = static_cast<std::uint16_t>((4 - 3 * std::uint64_t{info.width} % 4) % 4);
    std::unique_ptr<IImage> result =
        NewResult(image, traits.reduced, {info.width, info.height, padding}, std::move(pool));
    if (result == nullptr || info.width == 0)
        return result;
    const SourceLines source = LinesOf(image);
    const TargetLines target = LinesOf(*result);
    const unsigned int shift = ShiftOf(traits);
    const auto pair = [&](std::size_t y, std::size_t partner) {
        const Kernels::LinePair lines{source.Line(y), source.Line(partner), target.Line(y),
                                      target.Line(partner)};
        if (traits.layout.sampleBytes == 1)
            Kernels::DemosaicPair8(traits.coding.mosaic, lines, info.width);
        else
            Kernels::DemosaicPair16(traits.coding.mosaic, lines, info.width, shift);
    };
    if (info.height == 1)
        GreyOf(source.Line(0), traits, info.width, target.Line(0));
    else if (info.height % 2 != 0)
        pair(info.height - 1, info.height - 2); // the partner's own pair overwrites it below
    ForLines(info.height / 2, std::size_t{info.width} * info.height,
             [&](std::size_t first, std::size_t last) {
                 for (std::size_t i = first; i < last; ++i)
                     pair(2 * i, 2 * i + 1);
             });
    return result;
}

std::unique_ptr<IImage> ReducePlain(const IImage& image, const FormatTraits& traits,
                                    std::shared_ptr<IImagePool> pool) {
    const std::size_t width = image.GetImageInfo()->width;
    const unsigned int shift = ShiftOf(traits);
    const unsigned int channels = traits.layout.channels;
    const bool swaps = PixelFormat(traits.format).ChannelID(0) != PixelFormat(traits.reduced).ChannelID(0);
    const auto line = [&](const std::uint8_t* source, std::uint8_t* target, Kernels::Stores stores) {
        if (!swaps)
            Kernels::ReduceLine(source, target, width * channels, shift, stores);
        else if (traits.layout.sampleBytes == 2)
            Kernels::ReduceSwapLine4(source, target, width, shift);
        else if (channels == 3)
            Kernels::SwapLine3(source, target, width);
        else
            Kernels::SwapLine4(source, target, width, stores);
    };
    return EachLine(image, traits.reduced, std::move(pool), line);
}

} // namespace

std::unique_ptr<IImage> UnpackImage(const IImage* image, const FormatTraits& traits,
                                    std::shared_ptr<IImagePool> pool) {
    if (traits.unpacked == InvalidFormat || !IsReadableAs(image, traits.format))
        return nullptr;
    const std::size_t width = image->GetImageInfo()->width;
    const std::size_t held = image->GetImageInfo()->Stride();
    return EachLine(*image, traits.unpacked, std::move(pool),
                    [&](const std::uint8_t* source, std::uint8_t* target, Kernels::Stores) {
                        if (traits.coding.kind == Coding::Kind::Float)
                            Kernels::FloatLineTo16(source, target, width);
                        else
                            Kernels::UnpackLine(traits.coding.packing, source, held, target, width);
                    });
}

std::unique_ptr<IImage> ReduceImage(const IImage* image, const FormatTraits& traits,
                                    std::shared_ptr<IImagePool> pool) {
    if (traits.reduced == InvalidFormat || !IsReadableAs(image, traits.format))
        return nullptr;
    const std::size_t width = image->GetImageInfo()->width;
    const std::size_t held = image->GetImageInfo()->Stride();
    switch (traits.coding.kind) {
    case Coding::Kind::Plain:
        return ReducePlain(*image, traits, std::move(pool));
    case Coding::Kind::Mosaic:
        return DemosaicImage(*image, traits, std::move(pool));
    case Coding::Kind::Float:
        return EachLine(*image, traits.reduced, std::move(pool),
                        [&](const std::uint8_t* source, std::uint8_t* target, Kernels::Stores) {
                            Kernels::FloatLineTo8(source, target, width);
                        });
    case Coding::Kind::Packed:
        return EachLine(*image, traits.reduced, std::move(pool),
                        [&](const std::uint8_t* source, std::uint8_t* target, Kernels::Stores) {
                            Kernels::UnpackLineTo8(traits.coding.packing, source, held, target, width);
                        });
    default:
        return nullptr;
    }
}

} // namespace VX3
