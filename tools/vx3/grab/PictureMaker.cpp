#include "grab/PictureMaker.h"

#include "base/NearMiss.h"
#include "base/ToolError.h"
#include "vx3/processing/ColorConversion.h"
#include "vx3/processing/ColorMaps.h"

#include <utility>
#include <vector>

namespace VX3::Tool {

namespace {

PixelFormat FormatOf(const IImage& image) {
    return PixelFormat(image.GetImageInfo()->pixelFormat);
}

bool IsMono(PixelFormat format) {
    return format.Channels() == 1 && format.ChannelID(0) == PixelChannelID::Mono;
}

bool HasOnly8Bits(const std::string& fileFormat) {
    return fileFormat == "bmp" || fileFormat == "jpg" || fileFormat == "jpeg";
}

} // namespace

unsigned int MapIndex(const std::string& name) {
    const std::vector<std::string>& names = ColorMapNames();
    const std::string* known = FindName(names, name);
    const int map = known != nullptr ? FindColorMap(*known) : -1;
    if (map >= 0)
        return static_cast<unsigned int>(map);
    throw ToolError("there is no colour map \"" + name + "\"; the maps are " + Listed(names, names.size()));
}

PictureMaker::PictureMaker(const PictureOptions& options, std::shared_ptr<IImagePool> pool)
    : options_(options), pool_(std::move(pool)) {}

std::shared_ptr<IImage> PictureMaker::Make(const Picture& image) const {
    if (!image || image->IsNull())
        return nullptr;
    Picture picture = image;
    if (options_.map)
        picture = Mapped(picture);
    if (picture && options_.conversion != InvalidFormat)
        picture = Converted(picture, options_.conversion);
    if (options_.format == "raw" || !picture)
        return picture;
    return InFileOrder(picture);
}

// Mono samples in whole bytes.
PictureMaker::Picture PictureMaker::Unpacked(const Picture& image) const {
    return FormatOf(*image).IsPacked() ? Picture(image->Unpack(pool_)) : image;
}

PictureMaker::Picture PictureMaker::Converted(const Picture& image, PixelFormatValue format) const {
    return FormatOf(*image) == format ? image : Picture(ConvertTo(*image, format, pool_));
}

PictureMaker::Picture PictureMaker::ScaledTo16(const Picture& image) const {
    Picture unpacked = Unpacked(image);
    if (!unpacked)
        return nullptr;
    const unsigned int depth = FormatOf(*unpacked).BitDepth();
    return depth < 16 ? Picture(unpacked->Shift(static_cast<int>(16 - depth), pool_)) : unpacked;
}

PictureMaker::Picture PictureMaker::Mapped(const Picture& image) const {
    Picture mono = IsMono(FormatOf(*image)) ? Unpacked(image) : Converted(image, Mono8);
    if (!mono)
        return nullptr;
    const unsigned int largest = (1U << FormatOf(*mono).BitDepth()) - 1U;
    const unsigned int range = options_.mapRange != 0 ? options_.mapRange : largest - options_.mapLow;
    return Picture(mono->Map2RGB8(options_.mapIndex, options_.mapLow, range, pool_));
}

// Codecs take grey as it is and colours as blue, green, red.
PictureMaker::Picture PictureMaker::InFileOrder(const Picture& image) const {
    const PixelFormat format = FormatOf(*image);
    if (format.Channels() == 0)
        return nullptr;
    if (IsMono(format))
        return format == Mono8 || HasOnly8Bits(options_.format) ? Converted(image, Mono8) : ScaledTo16(image);
    return Converted(image, BGR8);
}

} // namespace VX3::Tool
