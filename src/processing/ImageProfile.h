// Profiles of an image along a line or a column.
#pragma once

#include "processing/SampleLayout.h"
#include "vx3/image/ProfileData.h"

#include <utility>
#include <vector>

namespace VX3 {

using ProfileList = std::vector<std::pair<PixelChannelID, ProfileData>>;

// The samples of line (horizontal) or column `index`, one profile per channel; profiles of size 0 for an
// index outside the image. Empty for Bayer images, and when the layout is
// not the image's.
ProfileList ProfileOf(const IImage* image, const SampleLayout& layout, ProfileType type, unsigned int index);
// The mean of every column (horizontal: `width` entries) or of every line (vertical: `height` entries).
ProfileList MeanProfileOf(const IImage* image, const SampleLayout& layout, ProfileType type);

} // namespace VX3
