// How an image's samples lie in its lines; guards the kernels against images of another layout.
#pragma once

#include "processing/FormatTraits.h"
#include "processing/ImageLines.h"

namespace VX3 {

struct SampleLayout {
    unsigned int sampleBytes;
    unsigned int channels; // interleaved; 1 for Bayer
    bool bayer = false;

    bool Fits(const IImage* image) const {
        if (image == nullptr || image->GetImageInfo() == nullptr) {
            return false;
        }
        const auto format = static_cast<PixelFormatValue>(image->GetImageInfo()->pixelFormat);
        const FormatTraits traits = TraitsOf(format);
        const bool plain = traits.kind == FormatKind::Mono || traits.kind == FormatKind::Colour;
        return (bayer ? traits.kind == FormatKind::Bayer : plain) && traits.channels == channels &&
               traits.sampleBytes == sampleBytes && IsReadableAs(image, format);
    }
    std::size_t PixelBytes() const { return std::size_t{sampleBytes} * channels; }
};

} // namespace VX3
