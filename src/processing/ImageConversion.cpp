#include "processing/ImageConversion.h"

#include "processing/WorkerPool.h"
#include "processing/kernels/Reduce.h"
#include "processing/kernels/Swap.h"

namespace VX3 {

namespace {

// Makes the result and calls line(source, target, stores) for every line.
template <class Line>
std::unique_ptr<IImage> EachLine(const IImage& image, PixelFormatValue format,
                                 std::shared_ptr<IImagePool> pool, const Line& line) {
    std::unique_ptr<IImage> result = NewResult(image, format, std::move(pool));
    const ImageInfo& info = *image.GetImageInfo();
    if (result == nullptr || info.width == 0) {
        return result;
    }
    const SourceLines source = LinesOf(image);
    const TargetLines target = LinesOf(*result);
    const Kernels::Stores stores = StoresFor(*result);
    ForLines(info.height, std::size_t{info.width} * info.height, [&](std::size_t first, std::size_t last) {
        for (std::size_t y = first; y < last; ++y) {
            line(source.Line(y), target.Line(y), stores);
        }
        FinishStores(stores);
    });
    return result;
}

// Lines start at multiples of 4 bytes. A last line without a partner is left as the pool gave it.
std::unique_ptr<IImage> DemosaicImage(const IImage& image, const FormatTraits& traits,
                                      std::shared_ptr<IImagePool> pool) {
    const ImageInfo& info = *image.GetImageInfo();
    const auto padding = static_cast<std::uint16_t>((4 - 3 * std::uint64_t{info.width} % 4) % 4);
    std::unique_ptr<IImage> result =
        NewResult(image, traits.reduced, {info.width, info.height, padding}, std::move(pool));
    if (result == nullptr || info.width == 0) {
        return result;
    }
    const SourceLines source = LinesOf(image);
    const TargetLines target = LinesOf(*result);
    const auto pair = [&](std::size_t y) {
        const Kernels::LinePair lines{source.Line(y), source.Line(y + 1), target.Line(y), target.Line(y + 1)};
        if (traits.sampleBytes == 1) {
            Kernels::DemosaicPair8(traits.mosaic, lines, info.width);
        } else {
            Kernels::DemosaicPair16(traits.mosaic, lines, info.width, traits.depth - 8);
        }
    };
    ForLines(info.height / 2, std::size_t{info.width} * info.height,
             [&](std::size_t first, std::size_t last) {
                 for (std::size_t i = first; i < last; ++i) {
                     pair(2 * i);
                 }
             });
    return result;
}

std::unique_ptr<IImage> ReduceColour(const IImage& image, const FormatTraits& traits,
                                     std::shared_ptr<IImagePool> pool) {
    const std::size_t width = image.GetImageInfo()->width;
    const unsigned int shift = traits.depth - 8;
    const auto line = [&](const std::uint8_t* source, std::uint8_t* target, Kernels::Stores stores) {
        if (!traits.swaps) {
            Kernels::ReduceLine(source, target, width * traits.channels, shift, stores);
        } else if (traits.sampleBytes == 2) {
            Kernels::ReduceSwapLine4(source, target, width, shift);
        } else if (traits.channels == 3) {
            Kernels::SwapLine3(source, target, width);
        } else {
            Kernels::SwapLine4(source, target, width, stores);
        }
    };
    return EachLine(image, traits.reduced, std::move(pool), line);
}

} // namespace

std::unique_ptr<IImage> UnpackImage(const IImage* image, const FormatTraits& traits,
                                    std::shared_ptr<IImagePool> pool) {
    if (traits.unpacked == InvalidFormat || !IsReadableAs(image, traits.format)) {
        return nullptr;
    }
    const std::size_t width = image->GetImageInfo()->width;
    const std::size_t held = image->GetImageInfo()->Stride();
    return EachLine(*image, traits.unpacked, std::move(pool),
                    [&](const std::uint8_t* source, std::uint8_t* target, Kernels::Stores) {
                        if (traits.kind == FormatKind::Float) {
                            Kernels::FloatLineTo16(source, target, width);
                        } else {
                            Kernels::UnpackLine(traits.packing, source, held, target, width);
                        }
                    });
}

std::unique_ptr<IImage> ReduceImage(const IImage* image, const FormatTraits& traits,
                                    std::shared_ptr<IImagePool> pool) {
    if (traits.reduced == InvalidFormat || !IsReadableAs(image, traits.format)) {
        return nullptr;
    }
    if (traits.kind == FormatKind::Bayer) {
        return DemosaicImage(*image, traits, std::move(pool));
    }
    if (traits.kind == FormatKind::Colour) {
        return ReduceColour(*image, traits, std::move(pool));
    }
    const std::size_t width = image->GetImageInfo()->width;
    const std::size_t held = image->GetImageInfo()->Stride();
    return EachLine(*image, traits.reduced, std::move(pool),
                    [&](const std::uint8_t* source, std::uint8_t* target, Kernels::Stores stores) {
                        if (traits.kind == FormatKind::Float) {
                            Kernels::FloatLineTo8(source, target, width);
                        } else if (traits.kind == FormatKind::Packed) {
                            Kernels::UnpackLineTo8(traits.packing, source, held, target, width);
                        } else {
                            Kernels::ReduceLine(source, target, width, traits.depth - 8, stores);
                        }
                    });
}

} // namespace VX3
