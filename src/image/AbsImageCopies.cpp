// The operations of AbsImage that make new pixels themselves: crop and shift.
#include "image/AbsImage.h"

#include <algorithm>
#include <cstring>

namespace VX3 {

namespace {

// Samples are moved by memcpy: lines may start at odd addresses.
template <typename Sample>
void ShiftLine(const unsigned char* in, unsigned char* out, unsigned int width, int bits) {
    for (std::size_t x = 0; x < width; ++x) {
        Sample sample;
        std::memcpy(&sample, in + x * sizeof(Sample), sizeof(Sample));
        const auto wide = static_cast<std::uint16_t>(static_cast<unsigned int>(sample) << bits);
        std::memcpy(out + x * sizeof(wide), &wide, sizeof(wide));
    }
}

bool IsShiftable(PixelFormatValue format) {
    return format == Mono8 || format == Mono10 || format == Mono12 || format == Mono14 || format == Mono16;
}

// The part of `roi` inside the image; the whole image for a region that is null or starts outside.
ROIRect Clip(const ROIRect* roi, const ImageInfo& info) {
    if (roi == nullptr || roi->x >= info.width || roi->y >= info.height)
        return {0, 0, info.width, info.height};
    return {roi->x, roi->y, std::min(roi->width, info.width - roi->x),
            std::min(roi->height, info.height - roi->y)};
}

} // namespace

std::unique_ptr<IImage> AbsImage::Copy(const ROIRect* roi, std::shared_ptr<IImagePool> pool) const {
    const PixelFormat format(header_->pixelFormat);
    // A raw block has bytes but no lines to cut from.
    if (format.IsPacked() || format == RawBlock || !IsReadable())
        return nullptr;
    const ROIRect part = Clip(roi, *header_);
    ImageInfo info(*header_);
    info.width = part.width;
    info.height = part.height;
    info.paddingX = 0;
    std::unique_ptr<IImage> result = ImageCreator::Create(&info, std::move(pool), nullptr);
    if (result == nullptr)
        return nullptr;
    const std::size_t skip = format.BuffNeeded(part.x, 1);
    for (unsigned int i = 0; i < part.height; ++i)
        std::memcpy(result->GetImageBuff(static_cast<int>(i)),
                    GetImageBuff(static_cast<int>(part.y + i)) + skip, info.Stride());
    return result;
}

std::unique_ptr<IImage> AbsImage::Shift(int bits, std::shared_ptr<IImagePool> pool) const {
    const PixelFormat format(header_->pixelFormat);
    if (bits < 1 || bits > 8 || !IsShiftable(format) || !IsReadable())
        return nullptr;
    ImageInfo info(*header_);
    info.pixelFormat = Mono16;
    info.paddingX = 0;
    std::unique_ptr<IImage> result = ImageCreator::Create(&info, std::move(pool), nullptr);
    if (result == nullptr)
        return nullptr;
    const auto shift = format == Mono8 ? ShiftLine<std::uint8_t> : ShiftLine<std::uint16_t>;
    for (int line = 0; static_cast<unsigned int>(line) < info.height; ++line)
        shift(GetImageBuff(line), result->GetImageBuff(line), info.width, bits);
    return result;
}

} // namespace VX3
