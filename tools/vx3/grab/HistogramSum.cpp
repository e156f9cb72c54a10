#include "grab/HistogramSum.h"

#include <cmath>

namespace VX3::Tool {

bool HistogramSum::Add(const std::shared_ptr<IImage>& image) {
    std::shared_ptr<IImage> unpacked = image;
    if (PixelFormat(image->GetImageInfo()->pixelFormat).IsPacked())
        unpacked = image->Unpack(pool_);
    if (!unpacked)
        return false;
    const auto histograms = unpacked->CreateHistogram(nullptr, 0);
    for (const auto& [channel, histogram] : histograms) {
        std::vector<std::uint64_t>& counts = counts_[channel];
        if (counts.size() < histogram.Bins())
            counts.resize(histogram.Bins());
        for (unsigned int i = 0; i < histogram.Bins(); ++i)
            counts[i] += histogram.Data()[i];
    }
    return !histograms.empty();
}

Json HistogramSum::Figures() const {
    Json json = Json::object();
    for (const auto& [channel, counts] : counts_) {
        std::uint64_t samples = 0;
        std::size_t min = counts.size();
        std::size_t max = 0;
        double sum = 0.0;
        double squares = 0.0;
        for (std::size_t i = 0; i < counts.size(); ++i) {
            if (counts[i] == 0)
                continue;
            const auto level = static_cast<double>(i);
            const auto count = static_cast<double>(counts[i]);
            min = std::min(min, i);
            max = i;
            samples += counts[i];
            sum += level * count;
            squares += level * level * count;
        }
        Json& figures = json[ChannelName(channel)];
        figures = {{"bins", counts.size()}, {"samples", samples}};
        if (samples == 0)
            continue;
        const double mean = sum / static_cast<double>(samples);
        const double variance = squares / static_cast<double>(samples) - mean * mean;
        figures.update(
            {{"min", min}, {"max", max}, {"mean", mean}, {"stddev", std::sqrt(std::max(variance, 0.0))}});
    }
    return json;
}

std::string ChannelName(PixelChannelID channel) {
    switch (channel) {
    case PixelChannelID::Mono:
        return "mono";
    case PixelChannelID::Red:
        return "red";
    case PixelChannelID::Green:
        return "green";
    case PixelChannelID::Blue:
        return "blue";
    case PixelChannelID::Alpha:
        return "alpha";
    default:
        return "invalid";
    }
}

} // namespace VX3::Tool
