// Draws histograms as a picture file.
#pragma once

#include "grab/HistogramSum.h"

#include <string>

namespace VX3::Tool {

// A channel a curve in its colour, counts on a logarithmic scale. Why the file cannot be written; empty on
// success.
std::string PlotHistogram(const ChannelCounts& counts, const std::string& path);

} // namespace VX3::Tool
