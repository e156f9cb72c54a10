#include "processing/ImageProfile.h"

#include "processing/ImageLines.h"
#include "processing/WorkerPool.h"
#include "processing/kernels/Profile.h"

#include <algorithm>

namespace VX3 {

namespace {

ProfileList NewProfiles(const PixelFormat& format, unsigned int channels, unsigned int size, bool isFloat) {
    ProfileList profiles;
    profiles.reserve(channels);
    for (unsigned int i = 0; i < channels; ++i)
        profiles.emplace_back(format.ChannelID(i), ProfileData(size, isFloat, isFloat));
    return profiles;
}

// Where the entries of each channel go; the profile handles themselves are not shared between threads.
struct Entries {
    double* of[4] = {};
    explicit Entries(ProfileList& profiles) {
        for (std::size_t i = 0; i < profiles.size(); ++i)
            of[i] = profiles[i].second.FloatData();
    }
};

void MeanOfLines(const SampleLayout& layout, const SourceLines& source, const ImageInfo& info,
                 const Entries& entries) {
    ForLines(info.height, std::size_t{info.width} * info.height, [&](std::size_t first, std::size_t last) {
        for (std::size_t y = first; y < last; ++y) {
            std::uint64_t sums[4] = {};
            Kernels::SumLine(source.Line(y), info.width, layout.channels, layout.sampleBytes, sums);
            for (unsigned int i = 0; i < layout.channels; ++i)
                entries.of[i][y] = static_cast<double>(sums[i]) / info.width;
        }
    });
}

// Columns are taken a block at a time, so that their sums need no memory of their own.
void MeanOfColumns(const SampleLayout& layout, const SourceLines& source, const ImageInfo& info,
                   const Entries& entries) {
    constexpr std::size_t Block = 512; // pixels
    const std::size_t blocks = (info.width + Block - 1) / Block;
    ForLines(blocks, std::size_t{info.width} * info.height, [&](std::size_t first, std::size_t last) {
        for (std::size_t block = first; block < last; ++block) {
            const std::size_t x = block * Block;
            const std::size_t pixels = std::min<std::size_t>(Block, info.width - x);
            std::uint64_t sums[4 * Block] = {};
            Kernels::SumColumns(source.data + x * layout.PixelBytes(), source.stride, info.height,
                                pixels * layout.channels, layout.sampleBytes, sums);
            for (std::size_t i = 0; i < pixels * layout.channels; ++i)
                entries.of[i % layout.channels][x + i / layout.channels] =
                    static_cast<double>(sums[i]) / info.height;
        }
    });
}

} // namespace

ProfileList ProfileOf(const IImage* image, const SampleLayout& layout, ProfileType type, unsigned int index) {
    if (layout.bayer || !layout.Fits(image))
        return {};
    const ImageInfo& info = *image->GetImageInfo();
    const bool horizontal = type == ProfileType::Horizontal;
    const bool inside = index < (horizontal ? info.height : info.width);
    const unsigned int size = inside ? (horizontal ? info.width : info.height) : 0;
    ProfileList profiles = NewProfiles(PixelFormat(info.pixelFormat), layout.channels, size, false);
    if (profiles.front().second.Size() != size || size == 0)
        return profiles;
    const SourceLines source = LinesOf(*image);
    const std::uint8_t* start =
        horizontal ? source.Line(index) : source.data + std::size_t{index} * layout.PixelBytes();
    const std::size_t step = horizontal ? layout.PixelBytes() : source.stride;
    for (unsigned int i = 0; i < layout.channels; ++i) {
        Kernels::TakeSamples(start + std::size_t{i} * layout.sampleBytes, step, size, layout.sampleBytes,
                             profiles[i].second.Data());
    }
    return profiles;
}

ProfileList MeanProfileOf(const IImage* image, const SampleLayout& layout, ProfileType type) {
    if (layout.bayer || !layout.Fits(image))
        return {};
    const ImageInfo& info = *image->GetImageInfo();
    const bool horizontal = type == ProfileType::Horizontal;
    const unsigned int size = horizontal ? info.width : info.height;
    ProfileList profiles = NewProfiles(PixelFormat(info.pixelFormat), layout.channels, size, true);
    if (profiles.front().second.Size() != size || info.width == 0 || info.height == 0)
        return profiles; // zeroed: there is nothing to divide
    if (horizontal)
        MeanOfColumns(layout, LinesOf(*image), info, Entries(profiles));
    else
        MeanOfLines(layout, LinesOf(*image), info, Entries(profiles));
    return profiles;
}

} // namespace VX3
