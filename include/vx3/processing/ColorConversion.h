// Images of any pixel format as 8-bit grey or colour.
#pragma once

#include "vx3/image/IImage.h"

#include <memory>

namespace VX3 {

// The image in format `target`, Mono8, RGB8 or BGR8, made in `pool` (empty: the default pool). Samples of
// more than 8 bits keep their upper 8, mosaics become colour, grey of colour is its Rec. 601 luminance in
// 1/256, (77 red + 150 green + 29 blue) >> 8, and alpha is dropped. An image that has that format already is
// copied. Lines of the result may end in padding. Empty for other targets, for images whose format is not in
// the table of pixel formats, and when the pool cannot serve. Any thread, as long as nobody writes the image.
VX3_API std::unique_ptr<IImage> ConvertTo(const IImage& image, PixelFormatValue target,
                                          std::shared_ptr<IImagePool> pool);

} // namespace VX3
