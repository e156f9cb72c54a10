// File names and the descriptions in them: whatever they claim, what comes out is a description whose sizes
// can be checked, and writing it into a name and reading it back changes nothing.
#include "FuzzInput.h"
#include "processing/ImageFileName.h"

#include <stdexcept>

using namespace VX3;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = Fuzz::FuzzInput(data, size).Rest();
    try {
        static_cast<void>(ImageInfoCreator::CreateBaseInfo(text));
    } catch (const std::logic_error&) {
    }
    const ImageFileName name(text);
    static_cast<void>(name.IsPicture());
    const ImageBaseInfo base = name.Describe(nullptr);
    if (!base.format.IsValid())
        return 0;
    const ImageInfo info = ImageInfoCreator::CreateImageInfo(base);
    if (!info.SizesFit() || base.paddingX > UINT16_MAX)
        return 0;
    const ImageBaseInfo again = ImageFileName(ImageFileName("x.raw").WithDescription(info)).Describe(nullptr);
    Fuzz::Require(again.width == base.width && again.height == base.height);
    Fuzz::Require(again.format == base.format && again.paddingX == base.paddingX);
    return 0;
}
