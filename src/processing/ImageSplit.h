// Parts an image into one monochrome image per channel or cell position.
#pragma once

#include "processing/SampleLayout.h"

#include <memory>
#include <utility>
#include <vector>

namespace VX3 {

// Mono8 or Mono16 results without padding, in memory order; of a Bayer image four, half as wide and high,
// in row order of the colour cell. Empty when the layout is not the image's or the pool cannot serve.
std::vector<std::pair<PixelChannelID, std::unique_ptr<IImage>>>
SplitImage(const IImage* image, const SampleLayout& layout, std::shared_ptr<IImagePool> pool);

} // namespace VX3
