#include "processing/SampleLayout.h"

#include "processing/FormatTraits.h"
#include "processing/ImageLines.h"

namespace VX3 {

bool SampleLayout::Fits(const IImage* image) const {
    if (image == nullptr || image->GetImageInfo() == nullptr || sampleBytes == 0)
        return false;
    const auto format = static_cast<PixelFormatValue>(image->GetImageInfo()->pixelFormat);
    return TraitsOf(format).layout == *this && IsReadableAs(image, format);
}

} // namespace VX3
