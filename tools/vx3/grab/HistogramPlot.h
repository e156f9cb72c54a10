// Draws histograms as a picture file.
#pragma once

#include "grab/HistogramSum.h"

#include <string>

namespace VX3::Tool {

// A channel a curve in its colour, counts on a logarithmic scale. False when the file cannot be written.
bool PlotHistogram(const ChannelCounts& counts, const std::string& path);

} // namespace VX3::Tool
