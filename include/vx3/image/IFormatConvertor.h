// What an image's pixel format can do with it. One converter a format, made by the processing folder: images
// reach them without including algorithms.
#pragma once

#include "vx3/image/IImage.h"

namespace VX3 {

class VX3_API IFormatConvertor {
public:
    virtual ~IFormatConvertor() = default;
    virtual PixelFormat Format() const = 0;
    [[nodiscard]] virtual std::unique_ptr<IImage> Unpack(const IImage* image, unsigned int unused,
                                                         std::shared_ptr<IImagePool> pool) const = 0;
    [[nodiscard]] virtual std::unique_ptr<IImage> Unpack2Image8(const IImage* image, unsigned int bits,
                                                                std::shared_ptr<IImagePool> pool) const = 0;
    [[nodiscard]] virtual std::vector<std::pair<PixelChannelID, std::unique_ptr<IImage>>>
    Split(const IImage* image, unsigned int unused, std::shared_ptr<IImagePool> pool) const = 0;
    [[nodiscard]] virtual std::vector<std::pair<PixelChannelID, HistogramData>>
    CreateHistogram(const IImage* image, const ROIRect* roi, unsigned int unused) const = 0;
    [[nodiscard]] virtual std::vector<std::pair<PixelChannelID, ProfileData>>
    CreateProfile(const IImage* image, ProfileType type, unsigned int index, unsigned int flags) const = 0;
};

class VX3_API FormatConvertorCreator {
public:
    // The converter of `format`; codes outside the pixel-format table give one whose every result is empty.
    [[nodiscard]] static std::unique_ptr<IFormatConvertor> Create(PixelFormat format);
};

// False colour of a monochrome image, RGBa8; empty for other formats. IImage::Map2RGB8 calls it.
std::unique_ptr<IImage> MapImage2RGB8(const IImage& image, unsigned int map, unsigned int low,
                                      unsigned int range, std::shared_ptr<IImagePool> pool);

} // namespace VX3
