// Makes one image of another line by line.
#pragma once

#include "processing/ImageLines.h"
#include "processing/WorkerPool.h"

#include <utility>

namespace VX3 {

// An image like `image` but of another format and without padding; line(source, target, stores) fills each
// line, on several threads where that pays. Empty when the pool cannot serve.
template <class Line>
std::unique_ptr<IImage> EachLine(const IImage& image, PixelFormatValue format,
                                 std::shared_ptr<IImagePool> pool, const Line& line) {
    std::unique_ptr<IImage> result = NewResult(image, format, std::move(pool));
    const ImageInfo& info = *image.GetImageInfo();
    if (result == nullptr || info.width == 0)
        return result;
    const SourceLines source = LinesOf(image);
    const TargetLines target = LinesOf(*result);
    const Kernels::Stores stores = StoresFor(*result);
    ForLines(info.height, std::size_t{info.width} * info.height, [&](std::size_t first, std::size_t last) {
        for (std::size_t y = first; y < last; ++y)
            line(source.Line(y), target.Line(y), stores);
        FinishStores(stores);
    });
    return result;
}

} // namespace VX3
