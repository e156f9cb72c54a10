// How an image's samples lie in its lines; guards the kernels against images of another layout.
#pragma once

#include "vx3/image/IImage.h"

#include <cstddef>

namespace VX3 {

struct SampleLayout {
    unsigned int sampleBytes = 0;
    unsigned int channels = 0; // interleaved; 1 for Bayer
    bool bayer = false;

    // True when the image's lines hold samples like this and may be read; never for the layout None.
    bool Fits(const IImage* image) const;
    std::size_t PixelBytes() const { return std::size_t{sampleBytes} * channels; }
    bool operator==(const SampleLayout& other) const {
        return sampleBytes == other.sampleBytes && channels == other.channels && bayer == other.bayer;
    }
};

// By the names of the format table.
namespace Layouts {
constexpr SampleLayout None{};
constexpr SampleLayout C1x8{1, 1};
constexpr SampleLayout C3x8{1, 3};
constexpr SampleLayout C4x8{1, 4};
constexpr SampleLayout C1x16{2, 1};
constexpr SampleLayout C3x16{2, 3};
constexpr SampleLayout C4x16{2, 4};
constexpr SampleLayout Bayer8{1, 1, true};
constexpr SampleLayout Bayer16{2, 1, true};
} // namespace Layouts

} // namespace VX3
