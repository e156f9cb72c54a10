// Images in the form that a picture codec writes without loss of what it can hold: 8-bit grey, B, G, R and B,
// G, R, A, and 16-bit grey where the codec has 16 bits.
#pragma once

#include "vx3/image/IImage.h"

#include <memory>
#include <string>

namespace VX3 {

// `image` itself where it has such a form; else a new image: colours in the codec's order, mosaics as colour,
// deeper samples by their upper 8 bits (mono ones unscaled into 16 where `extension` has them). Empty where
// the format has no picture.
std::shared_ptr<const IImage> PictureForm(const std::shared_ptr<const IImage>& image,
                                          const std::string& extension);

} // namespace VX3
