#include "processing/ImageLines.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace VX3 {

SourceLines LinesOf(const IImage& image) {
    return {image.GetImageBuff(), image.GetImageInfo()->Stride()};
}

TargetLines LinesOf(IImage& image) {
    return {image.GetImageBuff(), image.GetImageInfo()->Stride()};
}

bool IsReadableAs(const IImage* image, PixelFormat format) {
    if (image == nullptr || image->GetImageInfo() == nullptr || image->GetImageBuff() == nullptr)
        return false;
    const ImageInfo& info = *image->GetImageInfo();
    return info.pixelFormat == format.GetFormat() && info.SizesFit();
}

std::unique_ptr<IImage> NewResult(const IImage& source, PixelFormat format, const ResultGeometry& geometry,
                                  std::shared_ptr<IImagePool> pool) {
    ImageInfo info = *source.GetImageInfo();
    info.pixelFormat = format.GetFormat();
    info.width = geometry.width;
    info.height = geometry.height;
    info.paddingX = geometry.paddingX;
    if (!info.SizesFit())
        return nullptr;
    std::unique_ptr<IImage> result = ImageCreator::Create(&info, std::move(pool), nullptr);
    // Pools are foreign code: what is written is what was asked for, or nothing.
    if (!IsReadableAs(result.get(), format) || result->GetImageInfo()->Stride() != info.Stride() ||
        result->GetImageInfo()->height != info.height)
        return nullptr;
    return result;
}

std::unique_ptr<IImage> NewResult(const IImage& source, PixelFormat format,
                                  std::shared_ptr<IImagePool> pool) {
    const ImageInfo& info = *source.GetImageInfo();
    return NewResult(source, format, {info.width, info.height}, std::move(pool));
}

Kernels::Stores StoresFor(const IImage& result) {
    constexpr unsigned int StaysCached =
        24U << 20; // bytes; larger results are not read again before they fall out
    return result.GetImageInfo()->ImageDataSize() > StaysCached ? Kernels::Stores::Streaming
                                                                : Kernels::Stores::Cached;
}

void FinishStores(Kernels::Stores stores) {
    if (stores == Kernels::Stores::Streaming)
        std::atomic_thread_fence(std::memory_order_seq_cst);
}

ROIRect ClippedRegion(const ROIRect* region, const ImageInfo& info) {
    if (region == nullptr || region->x >= info.width || region->y >= info.height)
        return {0, 0, info.width, info.height};
    return {region->x, region->y, std::min(region->width, info.width - region->x),
            std::min(region->height, info.height - region->y)};
}

} // namespace VX3
