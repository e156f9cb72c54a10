// Makes plainer images: unpacked to 16 bits, reduced to 8 bits, in colour.
#pragma once

#include "processing/FormatTraits.h"
#include "processing/ImageLines.h"

#include <memory>

namespace VX3 {

// Both are empty where the format has no such result, the image is of another format, or the pool cannot
// serve.
std::unique_ptr<IImage> UnpackImage(const IImage* image, const FormatTraits& traits,
                                    std::shared_ptr<IImagePool> pool);
std::unique_ptr<IImage> ReduceImage(const IImage* image, const FormatTraits& traits,
                                    std::shared_ptr<IImagePool> pool);

} // namespace VX3
