// Images with known pixels for tests of what is made of them.
#pragma once

#include "vx3/image/IImage.h"
#include "vx3/image/IImagePool.h"
#include "vx3/image/ImageInfo.h"

#include <cstring>
#include <memory>
#include <random>
#include <vector>

namespace VX3::Testing {

struct Geometry {
    unsigned int width;
    unsigned int height;
    unsigned int padding = 0;
};

// Zeroed pixels and padding.
inline std::unique_ptr<IImage> NewImage(PixelFormatValue format, const Geometry& geometry) {
    ImageBaseInfo base;
    base.width = geometry.width;
    base.height = geometry.height;
    base.paddingX = geometry.padding;
    base.format = format;
    base.blockId = 77;
    base.timestamp = 0x123456789ULL;
    const ImageInfo info = ImageInfoCreator::CreateImageInfo(base);
    auto image = ImageCreator::Create(&info, nullptr, nullptr);
    std::memset(image->GetImageBuff(), 0, info.ImageDataSize());
    return image;
}

// Lines of samples from left to right; T is the sample's width.
template <class T>
std::unique_ptr<IImage> ImageOf(PixelFormatValue format, const Geometry& geometry,
                                const std::vector<T>& samples) {
    auto image = NewImage(format, geometry);
    const std::size_t perLine = samples.size() / geometry.height;
    for (unsigned int y = 0; y < geometry.height; ++y) {
        std::memcpy(image->GetImageBuff(static_cast<int>(y)), samples.data() + y * perLine,
                    perLine * sizeof(T));
    }
    return image;
}

// Random bytes everywhere, padding included; 16-bit samples are cut to `mask`.
inline std::unique_ptr<IImage> RandomImage(PixelFormatValue format, const Geometry& geometry,
                                           unsigned int mask = 0xFFFF) {
    auto image = NewImage(format, geometry);
    std::mt19937 random(geometry.width * 31 + geometry.height + static_cast<unsigned int>(format));
    std::uint8_t* data = image->GetImageBuff();
    for (std::size_t i = 0; i < image->GetImageInfo()->ImageDataSize(); ++i) {
        const unsigned int cut = mask == 0xFFFF ? 0xFF : i % 2 == 0 ? mask & 0xFF : mask >> 8;
        data[i] = static_cast<std::uint8_t>(random() >> 8 & cut);
    }
    return image;
}

// The samples of all lines without padding.
template <class T>
std::vector<T> SamplesOf(const IImage& image, unsigned int perPixel = 1) {
    const ImageInfo& info = *image.GetImageInfo();
    std::vector<T> samples(std::size_t{info.width} * info.height * perPixel);
    const std::size_t perLine = std::size_t{info.width} * perPixel;
    for (unsigned int y = 0; y < info.height; ++y) {
        std::memcpy(samples.data() + y * perLine, image.GetImageBuff(static_cast<int>(y)),
                    perLine * sizeof(T));
    }
    return samples;
}

} // namespace VX3::Testing
