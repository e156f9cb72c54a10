// Base of all converters: the kernels they share, named by sample width and channels. A kernel is one layout
// of a common algorithm; an image of another layout gives it an empty result.
#pragma once

#include "processing/ImageHistogram.h"
#include "processing/ImageProfile.h"
#include "processing/ImageSplit.h"
#include "vx3/image/IFormatConvertor.h"

#include <memory>
#include <utility>
#include <vector>

namespace VX3 {

// Stateless; any thread.
class FormatConvertorAbs : public IFormatConvertor {
public:
    using Images = std::vector<std::pair<PixelChannelID, std::unique_ptr<IImage>>>;
    using Histograms = std::vector<std::pair<PixelChannelID, HistogramData>>;
    using Profiles = std::vector<std::pair<PixelChannelID, ProfileData>>;

    // No profiles unless a format has them.
    Profiles CreateProfile(const IImage*, ProfileType, unsigned int, unsigned int) const override {
        return {};
    }

protected:
    // One monochrome image per channel, or per position of the colour cell.
    struct SplitKernel {
        SampleLayout layout;
        Images operator()(const IImage* image, std::shared_ptr<IImagePool> pool) const {
            return SplitImage(image, layout, std::move(pool));
        }
    };
    static constexpr SplitKernel Split8C3{Layouts::C3x8}, Split8C4{Layouts::C4x8};
    static constexpr SplitKernel Split16C3{Layouts::C3x16}, Split16C4{Layouts::C4x16};
    static constexpr SplitKernel Split8Bayer{Layouts::Bayer8}, Split16Bayer{Layouts::Bayer16};

    // One histogram per channel, or per position of the colour cell, of a region (null: all).
    struct HistogramKernel {
        SampleLayout layout;
        Histograms operator()(const IImage* image, const ROIRect* roi) const {
            return CountImage(image, layout, roi);
        }
    };
    static constexpr HistogramKernel CreateHistogram8C1{Layouts::C1x8}, CreateHistogram16C1{Layouts::C1x16};
    static constexpr HistogramKernel CreateHistogram8C3{Layouts::C3x8}, CreateHistogram16C3{Layouts::C3x16};
    static constexpr HistogramKernel CreateHistogram8C4{Layouts::C4x8}, CreateHistogram16C4{Layouts::C4x16};
    static constexpr HistogramKernel CreateHistogram8Bayer{Layouts::Bayer8};
    static constexpr HistogramKernel CreateHistogram16Bayer{Layouts::Bayer16};

    // One profile per channel of a line or column; the mean over all of them.
    struct ProfileKernel {
        SampleLayout layout;
        Profiles operator()(const IImage* image, ProfileType type, unsigned int index) const {
            return ProfileOf(image, layout, type, index);
        }
    };
    struct MeanProfileKernel {
        SampleLayout layout;
        Profiles operator()(const IImage* image, ProfileType type) const {
            return MeanProfileOf(image, layout, type);
        }
    };
    static constexpr ProfileKernel CreateProfile8C1{Layouts::C1x8}, CreateProfile16C1{Layouts::C1x16};
    static constexpr ProfileKernel CreateProfile8C3{Layouts::C3x8}, CreateProfile16C3{Layouts::C3x16};
    static constexpr ProfileKernel CreateProfile8C4{Layouts::C4x8}, CreateProfile16C4{Layouts::C4x16};
    static constexpr MeanProfileKernel CreateProfile8C1Mean{Layouts::C1x8};
    static constexpr MeanProfileKernel CreateProfile8C3Mean{Layouts::C3x8};
    static constexpr MeanProfileKernel CreateProfile8C4Mean{Layouts::C4x8};
    static constexpr MeanProfileKernel CreateProfile16C1Mean{Layouts::C1x16};
    static constexpr MeanProfileKernel CreateProfile16C3Mean{Layouts::C3x16};
    static constexpr MeanProfileKernel CreateProfile16C4Mean{Layouts::C4x16};
};

} // namespace VX3
