// Images with known pixels for tests of what is made of them.
#pragma once

#include "vx3/core/Status.h"
#include "vx3/image/IImage.h"
#include "vx3/image/IImagePool.h"
#include "vx3/image/ImageInfo.h"

#include <array>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

namespace VX3::Test {

inline constexpr PixelFormatValue AllFormats[] = {
#define VX3_NAME(name, ...) name,
    VX3_PIXEL_FORMAT_TABLE(VX3_NAME)
#undef VX3_NAME
};

struct Geometry {
    unsigned int width;
    unsigned int height;
    unsigned int padding = 0;
};

constexpr auto Ok = static_cast<unsigned int>(Status::Ok);
constexpr auto NotFound = static_cast<unsigned int>(Status::NotFound);
constexpr auto NotAvailable = static_cast<unsigned int>(Status::NotAvailable);
constexpr auto WrongState = static_cast<unsigned int>(Status::WrongState);

inline ImageBaseInfo Base(unsigned int width, unsigned int height, PixelFormatValue format,
                          unsigned int padding = 0) {
    ImageBaseInfo base;
    base.width = width;
    base.height = height;
    base.paddingX = padding;
    base.format = format;
    return base;
}

inline ImageInfo Header(unsigned int width, unsigned int height, PixelFormatValue format = Mono8,
                        unsigned int padding = 0) {
    ImageBaseInfo base = Base(width, height, format, padding);
    base.blockId = 77;
    base.timestamp = 0x123456789ULL;
    return ImageInfoCreator::CreateImageInfo(base);
}

// Zeroed pixels and padding.
inline std::unique_ptr<IImage> NewImage(PixelFormatValue format, const Geometry& geometry) {
    const ImageInfo info = Header(geometry.width, geometry.height, format, geometry.padding);
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

// One colour everywhere, of grey formats the first level: red, green, blue, alpha, in 8 bits.
inline std::unique_ptr<IImage> FlatImage(const PixelFormat& format, const Geometry& geometry,
                                         const std::array<unsigned int, 4>& levels) {
    auto image = NewImage(format.GetFormat(), geometry);
    const bool mosaic = format.ToString().rfind("BAYER", 0) == 0;
    const unsigned int channels = mosaic ? 1 : format.Channels(), bytes = format.BitDepth() > 8 ? 2 : 1;
    for (unsigned int y = 0; y < geometry.height; ++y)
        for (unsigned int i = 0; i < geometry.width * channels; ++i) {
            const auto id = format.ChannelID(mosaic ? y % 2 * 2 + i % 2 : i % channels);
            const std::size_t level = id == PixelChannelID::Green   ? 1
                                      : id == PixelChannelID::Blue  ? 2
                                      : id == PixelChannelID::Alpha ? 3
                                                                    : 0;
            const auto sample = static_cast<std::uint16_t>(levels.at(level) << (format.BitDepth() - 8));
            std::memcpy(image->GetImageBuff(static_cast<int>(y)) + i * bytes, &sample, bytes);
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

} // namespace VX3::Test
