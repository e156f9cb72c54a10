// The pixel memory of images as lines, and new images for results.
#pragma once

#include "processing/kernels/Stores.h"
#include "vx3/image/IImage.h"
#include "vx3/image/IImagePool.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace VX3 {

// A region of an image as lines of bytes.
template <class Byte>
struct ImageLines {
    Byte* data = nullptr;
    std::size_t stride = 0;

    Byte* Line(std::size_t line) const { return data + line * stride; }
};
using SourceLines = ImageLines<const std::uint8_t>;
using TargetLines = ImageLines<std::uint8_t>;

SourceLines LinesOf(const IImage& image);
TargetLines LinesOf(IImage& image);

// True when the image has pixels of this format whose sizes are consistent, so that its lines may be read.
bool IsReadableAs(const IImage* image, PixelFormat format);

struct ResultGeometry {
    std::uint32_t width;
    std::uint32_t height;
    std::uint16_t paddingX = 0;
};
// An image like `source` but for format and geometry, its pixels not filled; empty when the pool cannot serve
// it or its size has no 32-bit representation.
std::unique_ptr<IImage> NewResult(const IImage& source, PixelFormat format, const ResultGeometry& geometry,
                                  std::shared_ptr<IImagePool> pool);
// The same with the source's width and height and no padding.
std::unique_ptr<IImage> NewResult(const IImage& source, PixelFormat format, std::shared_ptr<IImagePool> pool);

// How to write a result of this size, and what must follow before others may read it.
Kernels::Stores StoresFor(const IImage& result);
void FinishStores(Kernels::Stores stores);

// The part of a region that lies in the image; the whole image when there is none or it starts outside.
ROIRect ClippedRegion(const ROIRect* region, const ImageInfo& info);

} // namespace VX3
