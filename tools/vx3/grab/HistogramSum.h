// The histograms of many frames added up, a channel each, with figures and a plot. One thread at a time.
#pragma once

#include "base/Console.h"
#include "vx3/image/IImage.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace VX3::Tool {

using ChannelCounts = std::map<PixelChannelID, std::vector<std::uint64_t>>;

class HistogramSum {
public:
    explicit HistogramSum(std::shared_ptr<IImagePool> pool) : pool_(std::move(pool)) {}

    // Packed formats are unpacked first. False when the format has no histogram.
    bool Add(const std::shared_ptr<IImage>& image);
    const ChannelCounts& Counts() const { return counts_; }
    // A channel: bins, samples, min, max, mean, stddev.
    Json Figures() const;

private:
    std::shared_ptr<IImagePool> pool_;
    ChannelCounts counts_;
};

std::string ChannelName(PixelChannelID channel);

} // namespace VX3::Tool
