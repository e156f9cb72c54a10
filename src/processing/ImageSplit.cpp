#include "processing/ImageSplit.h"

#include "processing/ImageLines.h"
#include "processing/WorkerPool.h"
#include "processing/kernels/Split.h"

namespace VX3 {

namespace {

constexpr unsigned int MaxParts = 4;

using Parts = std::vector<std::pair<PixelChannelID, std::unique_ptr<IImage>>>;

Parts NewParts(const IImage& image, const SampleLayout& layout, const std::shared_ptr<IImagePool>& pool) {
    const ImageInfo& info = *image.GetImageInfo();
    const PixelFormat format(info.pixelFormat);
    const PixelFormatValue part = layout.sampleBytes == 1 ? Mono8 : Mono16;
    const unsigned int count = layout.bayer ? MaxParts : layout.channels;
    const ResultGeometry geometry = layout.bayer ? ResultGeometry{info.width / 2, info.height / 2}
                                                 : ResultGeometry{info.width, info.height};
    Parts parts;
    parts.reserve(count);
    for (unsigned int i = 0; i < count; ++i) {
        std::unique_ptr<IImage> result = NewResult(image, part, geometry, pool);
        if (result == nullptr)
            return {};
        parts.emplace_back(format.ChannelID(i), std::move(result));
    }
    return parts;
}

} // namespace

Parts SplitImage(const IImage* image, const SampleLayout& layout, std::shared_ptr<IImagePool> pool) {
    if (!layout.Fits(image) || (layout.channels < 2 && !layout.bayer))
        return {};
    Parts parts = NewParts(*image, layout, pool);
    if (parts.empty())
        return parts;
    const ImageInfo& info = *image->GetImageInfo();
    const SourceLines source = LinesOf(*image);
    TargetLines targets[MaxParts];
    for (std::size_t i = 0; i < parts.size(); ++i)
        targets[i] = LinesOf(*parts[i].second);
    // A Bayer line is a line of two interleaved channels: the left and the right column of its cells.
    const unsigned int channels = layout.bayer ? 2 : layout.channels;
    const std::size_t pixels = layout.bayer ? info.width / 2 : info.width;
    const std::size_t lines = layout.bayer ? info.height / 2 * 2 : info.height;
    const Kernels::Stores stores = StoresFor(*parts.front().second);
    ForLines(lines, std::size_t{info.width} * info.height, [&](std::size_t first, std::size_t last) {
        for (std::size_t y = first; y < last; ++y) {
            std::uint8_t* lineTargets[MaxParts] = {};
            for (unsigned int i = 0; i < channels; ++i)
                lineTargets[i] = layout.bayer ? targets[y % 2 * 2 + i].Line(y / 2) : targets[i].Line(y);
            Kernels::SplitLine(source.Line(y), lineTargets, pixels, channels, layout.sampleBytes, stores);
        }
        FinishStores(stores);
    });
    return parts;
}

} // namespace VX3
