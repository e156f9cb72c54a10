#include "vx3/processing/ColorConversion.h"

#include "processing/EachLine.h"
#include "processing/FormatTraits.h"
#include "processing/kernels/Recolor.h"
#include "processing/kernels/Swap.h"

namespace VX3 {

namespace {

bool HasBytePixels(PixelFormatValue format) {
    const FormatTraits& traits = TraitsOf(format);
    return traits.coding.kind == Coding::Kind::Plain && traits.layout.sampleBytes == 1;
}

// Of an image with a byte a channel, in another format than `target`.
std::unique_ptr<IImage> Recolored(const IImage& image, PixelFormatValue target,
                                  std::shared_ptr<IImagePool> pool) {
    const ImageInfo& info = *image.GetImageInfo();
    const PixelFormat format(info.pixelFormat);
    if (!HasBytePixels(format) || !IsReadableAs(&image, format))
        return nullptr;
    const unsigned int channels = format.Channels();
    const bool redFirst = format.ChannelID(0) == PixelChannelID::Red;
    const bool swap = redFirst != (target == RGB8);
    return EachLine(image, target, std::move(pool),
                    [&](const std::uint8_t* source, std::uint8_t* line, Kernels::Stores) {
                        if (target == Mono8)
                            Kernels::GreyLine(source, line, info.width, channels, redFirst);
                        else if (channels == 1)
                            Kernels::SpreadLine(source, line, info.width);
                        else if (channels == 3)
                            Kernels::SwapLine3(source, line, info.width);
                        else
                            Kernels::NarrowLine(source, line, info.width, swap);
                    });
}

} // namespace

std::unique_ptr<IImage> ConvertTo(const IImage& image, PixelFormatValue target,
                                  std::shared_ptr<IImagePool> pool) {
    const ImageInfo* info = image.GetImageInfo();
    if (info == nullptr || (target != Mono8 && target != RGB8 && target != BGR8))
        return nullptr;
    if (info->pixelFormat == target)
        return image.Clone(std::move(pool));
    if (HasBytePixels(static_cast<PixelFormatValue>(info->pixelFormat)))
        return Recolored(image, target, std::move(pool));
    std::unique_ptr<IImage> reduced = image.Unpack2Image8(8, pool);
    if (reduced == nullptr || reduced->GetImageInfo()->pixelFormat == target)
        return reduced;
    return Recolored(*reduced, target, std::move(pool));
}

} // namespace VX3
