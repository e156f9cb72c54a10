// Base of all converters: the kernels they share, named by sample width and channel layout.
#pragma once

#include "processing/FormatTraits.h"
#include "vx3/image/IFormatConvertor.h"

#include <memory>
#include <utility>
#include <vector>

namespace VX3 {

// Stateless; any thread. A kernel whose layout is not that of the image gives an empty result.
class FormatConvertorAbs : public IFormatConvertor {
public:
    using Images = std::vector<std::pair<PixelChannelID, std::unique_ptr<IImage>>>;
    using Histograms = std::vector<std::pair<PixelChannelID, HistogramData>>;
    using Profiles = std::vector<std::pair<PixelChannelID, ProfileData>>;

    // No profiles unless a format has them.
    Profiles CreateProfile(const IImage* image, ProfileType type, unsigned int index,
                           unsigned int flags) const override;

protected:
    // One monochrome image per channel, or per position of the colour cell.
    Images Split8C3(const IImage* image, std::shared_ptr<IImagePool> pool) const;
    Images Split8C4(const IImage* image, std::shared_ptr<IImagePool> pool) const;
    Images Split16C3(const IImage* image, std::shared_ptr<IImagePool> pool) const;
    Images Split16C4(const IImage* image, std::shared_ptr<IImagePool> pool) const;
    Images Split8Bayer(const IImage* image, std::shared_ptr<IImagePool> pool) const;
    Images Split16Bayer(const IImage* image, std::shared_ptr<IImagePool> pool) const;

    // One histogram per channel, or per position of the colour cell, of a region (null: all).
    Histograms CreateHistogram8C1(const IImage* image, const ROIRect* roi) const;
    Histograms CreateHistogram8C3(const IImage* image, const ROIRect* roi) const;
    Histograms CreateHistogram8C4(const IImage* image, const ROIRect* roi) const;
    Histograms CreateHistogram16C1(const IImage* image, const ROIRect* roi) const;
    Histograms CreateHistogram16C3(const IImage* image, const ROIRect* roi) const;
    Histograms CreateHistogram16C4(const IImage* image, const ROIRect* roi) const;
    Histograms CreateHistogram8Bayer(const IImage* image, const ROIRect* roi) const;
    Histograms CreateHistogram16Bayer(const IImage* image, const ROIRect* roi) const;

    // One profile per channel, of a line or column, or the mean over all of them.
    Profiles CreateProfile8C1(const IImage* image, ProfileType type, unsigned int index) const;
    Profiles CreateProfile8C3(const IImage* image, ProfileType type, unsigned int index) const;
    Profiles CreateProfile8C4(const IImage* image, ProfileType type, unsigned int index) const;
    Profiles CreateProfile16C1(const IImage* image, ProfileType type, unsigned int index) const;
    Profiles CreateProfile16C3(const IImage* image, ProfileType type, unsigned int index) const;
    Profiles CreateProfile16C4(const IImage* image, ProfileType type, unsigned int index) const;
    Profiles CreateProfile8C1Mean(const IImage* image, ProfileType type) const;
    Profiles CreateProfile8C3Mean(const IImage* image, ProfileType type) const;
    Profiles CreateProfile8C4Mean(const IImage* image, ProfileType type) const;
    Profiles CreateProfile16C1Mean(const IImage* image, ProfileType type) const;
    Profiles CreateProfile16C3Mean(const IImage* image, ProfileType type) const;
    Profiles CreateProfile16C4Mean(const IImage* image, ProfileType type) const;
};

} // namespace VX3
