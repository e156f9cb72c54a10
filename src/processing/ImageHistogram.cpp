#include "processing/ImageHistogram.h"

#include "processing/ImageLines.h"
#include "processing/kernels/Histogram.h"

#include <algorithm>
#include <optional>

namespace VX3 {

namespace {

using Histograms = std::vector<std::pair<PixelChannelID, HistogramData>>;
using Kernels::Counters;

// The result's arrays and three temporary ones a channel, which go back to their pool afterwards. The
// temporary ones of a channel share a buffer where they fit, apart from each other: arrays at equal page
// offsets would make a count of one wait for the same count of the other. Small images are counted in the
// result alone.
class CountArrays {
public:
    CountArrays(unsigned int channels, std::uint32_t bins, std::size_t samples) {
        constexpr std::uint32_t Apart = 48; // counts
        constexpr unsigned int Temporary = Counters::Ways - 1;
        counters_.bins = bins;
        single_ = samples < std::size_t{Counters::Ways} * bins;
        const bool share = Temporary * (bins + Apart) <= MostBins;
        for (unsigned int channel = 0; channel < channels; ++channel) {
            std::uint32_t** counts = counters_.counts + std::size_t{channel} * Counters::Ways;
            counts[0] = results_[channel].emplace(bins).Data();
            if (single_) {
                std::fill(counts + 1, counts + Counters::Ways, counts[0]);
                continue;
            }
            for (unsigned int i = 0; i < Temporary; ++i) {
                auto& buffer = temporary_[channel][share ? 0 : i];
                if (!buffer)
                    buffer.emplace(share ? Temporary * (bins + Apart) : bins);
                counts[1 + i] = buffer->Data() + (share ? i * (bins + Apart) + Apart : 0);
            }
        }
    }
    void Sum(unsigned int channels) const {
        if (!single_)
            Kernels::SumCounters(channels, counters_);
    }
    const Counters& All() const { return counters_; }
    const HistogramData& Result(unsigned int channel) const { return *results_[channel]; }

    // The arrays of two channels in the given order, for lines that hold just those.
    Counters Two(unsigned int first, unsigned int second) const {
        Counters two{};
        two.bins = counters_.bins;
        for (unsigned int way = 0; way < Counters::Ways; ++way) {
            two.counts[way] = counters_.counts[first * Counters::Ways + way];
            two.counts[Counters::Ways + way] = counters_.counts[second * Counters::Ways + way];
        }
        return two;
    }

private:
    static constexpr std::uint32_t MostBins = 65536; // of a histogram's buffer

    std::optional<HistogramData> results_[Counters::MaxChannels];
    std::optional<HistogramData> temporary_[Counters::MaxChannels][Counters::Ways - 1];
    Counters counters_{};
    bool single_ = false;
};

void CountLine(const SampleLayout& layout, const std::uint8_t* line, std::size_t pixels,
               unsigned int channels, const Counters& counters) {
    if (layout.sampleBytes == 1)
        Kernels::CountLine8(line, pixels, channels, counters);
    else
        Kernels::CountLine16(line, pixels, channels, counters);
}

void CountPlain(const SampleLayout& layout, const SourceLines& source, const ROIRect& region, bool inOnePass,
                const Counters& counters) {
    const std::size_t skip = region.x * layout.PixelBytes();
    if (inOnePass) {
        CountLine(layout, source.data, std::size_t{region.width} * region.height, layout.channels, counters);
        return;
    }
    for (std::size_t y = 0; y < region.height; ++y)
        CountLine(layout, source.Line(region.y + y) + skip, region.width, layout.channels, counters);
}

void CountBayer(const SampleLayout& layout, const SourceLines& source, const ROIRect& region,
                const CountArrays& arrays) {
    const std::size_t skip = region.x * layout.PixelBytes();
    for (std::size_t y = 0; y < region.height / 2 * 2; ++y) {
        const unsigned int row = (region.y + y) % 2 * 2;
        const Counters line = arrays.Two(row + region.x % 2, row + (region.x + 1) % 2);
        CountLine(layout, source.Line(region.y + y) + skip, region.width / 2, 2, line);
    }
}

} // namespace

Histograms CountImage(const IImage* image, const SampleLayout& layout, const ROIRect* roi) {
    if (!layout.Fits(image))
        return {};
    const ImageInfo& info = *image->GetImageInfo();
    const PixelFormat format(info.pixelFormat);
    const SourceLines source = LinesOf(*image);
    const ROIRect region = ClippedRegion(roi, info);
    const unsigned int channels = layout.bayer ? 4 : layout.channels;
    const CountArrays arrays(channels, std::uint32_t{1} << format.BitDepth(),
                             std::size_t{region.width} * region.height);
    if (layout.bayer) {
        CountBayer(layout, source, region, arrays);
    } else {
        const bool whole = region.width == info.width && region.height == info.height;
        CountPlain(layout, source, region, whole && info.paddingX == 0, arrays.All());
    }
    arrays.Sum(channels);
    Histograms histograms;
    histograms.reserve(channels);
    for (unsigned int i = 0; i < channels; ++i)
        histograms.emplace_back(format.ChannelID(i), arrays.Result(i));
    return histograms;
}

} // namespace VX3
