// Counts the samples of an image or a region of it.
#pragma once

#include "processing/SampleLayout.h"
#include "vx3/image/HistogramData.h"

#include <utility>
#include <vector>

namespace VX3 {

// One histogram of 2^depth bins per channel, in memory order; of a Bayer image four, one per position of the
// colour cell. Bayer regions are counted in whole pairs of lines and columns from their first sample on; a
// region that starts at an odd line or column still counts each sample where it belongs in the cell.
std::vector<std::pair<PixelChannelID, HistogramData>>
CountImage(const IImage* image, const SampleLayout& layout, const ROIRect* roi);

} // namespace VX3
