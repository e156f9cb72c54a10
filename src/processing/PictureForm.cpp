#include "processing/PictureForm.h"

namespace VX3 {

namespace {

bool HasSixteenBits(const std::string& extension) {
    return extension == "png" || extension == "tiff";
}

bool IsDeepMono(PixelFormatValue format) {
    return format == Mono10 || format == Mono12 || format == Mono14 || format == Mono16;
}

bool IsPictureForm(PixelFormatValue format, bool deep) {
    return format == Mono8 || format == BGR8 || format == BGRa8 || (deep && IsDeepMono(format));
}

} // namespace

std::shared_ptr<const IImage> PictureForm(const std::shared_ptr<const IImage>& image,
                                          const std::string& extension) {
    const bool deep = HasSixteenBits(extension);
    constexpr int MostSteps = 3; // RGBa12 to RGBa8 to BGRa8
    std::shared_ptr<const IImage> form = image;
    for (int step = 0; form != nullptr && step < MostSteps; ++step) {
        if (IsPictureForm(static_cast<PixelFormatValue>(form->GetImageInfo()->pixelFormat), deep))
            return form;
        std::shared_ptr<const IImage> unpacked = deep ? form->Unpack(nullptr) : nullptr;
        form = unpacked != nullptr ? unpacked : form->Unpack2Image8(8, nullptr);
    }
    return form != nullptr &&
                   IsPictureForm(static_cast<PixelFormatValue>(form->GetImageInfo()->pixelFormat), deep)
               ? form
               : nullptr;
}

} // namespace VX3
