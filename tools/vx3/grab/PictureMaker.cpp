#include "grab/PictureMaker.h"

#include "ToolError.h"

#include <iterator>
#include <utility>

namespace VX3::Tool {

namespace {

constexpr const char* MapNames[] = {"CMRmap", "cubehelix", "gist_earth",    "gist_heat", "gnuplot2", "hot",
                                    "jet",    "magma",     "nipy_spectral", "plasma",    "viridis",  "mono"};

PixelFormat FormatOf(const IImage& image) {
    return PixelFormat(image.GetImageInfo()->pixelFormat);
}

bool IsMono(PixelFormat format) {
    return format.Channels() == 1 && format.ChannelID(0) == PixelChannelID::Mono;
}

// Where a channel stands in a pixel of an 8-bit format; -1 when it has none.
int Position(PixelFormat format, PixelChannelID channel) {
    for (unsigned int i = 0; i < format.Channels(); ++i)
        if (format.ChannelID(i) == channel)
            return static_cast<int>(i);
    return -1;
}

// Rec. 601 luminance in 1/256.
unsigned char Luminance(unsigned int red, unsigned int green, unsigned int blue) {
    return static_cast<unsigned char>((77U * red + 150U * green + 29U * blue) >> 8);
}

} // namespace

unsigned int MapIndex(const std::string& name) {
    std::string names;
    for (std::size_t i = 0; i < std::size(MapNames); ++i) {
        if (name == MapNames[i])
            return static_cast<unsigned int>(i);
        names += std::string(i == 0 ? "" : ", ") + MapNames[i];
    }
    throw ToolError("there is no colour map \"" + name + "\"; the maps are " + names);
}

PictureMaker::PictureMaker(const PictureOptions& options, std::shared_ptr<IImagePool> pool)
    : options_(options), pool_(std::move(pool)) {}

std::shared_ptr<IImage> PictureMaker::Make(const Picture& image) const {
    if (!image || image->IsNull())
        return nullptr;
    Picture picture = image;
    if (options_.map)
        picture = Mapped(picture);
    if (options_.conversion == Conversion::Mono8)
        picture = ToMono8(picture);
    else if (options_.conversion == Conversion::Rgb8)
        picture = ToRgb8(picture);
    if (options_.format == "raw" || !picture)
        return picture;
    return InFileOrder(picture);
}

// Mono samples in whole bytes.
PictureMaker::Picture PictureMaker::Unpacked(const Picture& image) const {
    return FormatOf(*image).IsPacked() ? Picture(image->Unpack(pool_)) : image;
}

PictureMaker::Picture PictureMaker::Reduced(const Picture& image) const {
    const PixelFormat format = FormatOf(*image);
    const bool bayer = format.Channels() == 4 && Position(format, PixelChannelID::Alpha) < 0;
    if (format.BitDepth() == 8 && !bayer)
        return image;
    return Picture(image->Unpack2Image8(8, pool_));
}

PictureMaker::Picture PictureMaker::ScaledTo16(const Picture& image) const {
    Picture unpacked = Unpacked(image);
    if (!unpacked)
        return nullptr;
    const unsigned int depth = FormatOf(*unpacked).BitDepth();
    return depth < 16 ? Picture(unpacked->Shift(static_cast<int>(16 - depth), pool_)) : unpacked;
}

// The same 8-bit pixels as Mono8, RGB8 or BGR8: channels picked, dropped, repeated or weighed.
PictureMaker::Picture PictureMaker::Recoloured(const Picture& image, PixelFormatValue target) const {
    const PixelFormat from = FormatOf(*image);
    const PixelFormat to(target);
    ImageInfo info(*image->GetImageInfo());
    info.pixelFormat = target;
    info.paddingX = 0;
    Picture result(ImageCreator::Create(&info, pool_, nullptr));
    if (!result)
        return nullptr;
    const bool fromMono = IsMono(from);
    const int red = fromMono ? 0 : Position(from, PixelChannelID::Red);
    const int green = fromMono ? 0 : Position(from, PixelChannelID::Green);
    const int blue = fromMono ? 0 : Position(from, PixelChannelID::Blue);
    if (red < 0 || green < 0 || blue < 0)
        return nullptr;
    const int order[3] = {target == BGR8 ? blue : red, green, target == BGR8 ? red : blue};
    for (unsigned int y = 0; y < info.height; ++y) {
        const unsigned char* source = image->GetImageBuff(static_cast<int>(y));
        unsigned char* line = result->GetImageBuff(static_cast<int>(y));
        if (source == nullptr || line == nullptr)
            return nullptr;
        for (unsigned int x = 0; x < info.width; ++x, source += from.Channels(), line += to.Channels())
            if (target == Mono8)
                *line = Luminance(source[red], source[green], source[blue]);
            else
                for (int channel = 0; channel < 3; ++channel)
                    line[channel] = source[order[channel]];
    }
    return result;
}

PictureMaker::Picture PictureMaker::ToMono8(const Picture& image) const {
    Picture reduced = image ? Reduced(image) : nullptr;
    if (!reduced || FormatOf(*reduced) == Mono8)
        return reduced;
    return Recoloured(reduced, Mono8);
}

PictureMaker::Picture PictureMaker::ToRgb8(const Picture& image) const {
    Picture reduced = image ? Reduced(image) : nullptr;
    if (!reduced || FormatOf(*reduced) == RGB8)
        return reduced;
    return Recoloured(reduced, RGB8);
}

PictureMaker::Picture PictureMaker::Mapped(const Picture& image) const {
    Picture mono = IsMono(FormatOf(*image)) ? Unpacked(image) : ToMono8(image);
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
    if (IsMono(format)) {
        if (format == Mono8)
            return image;
        return options_.format == "bmp" ? Reduced(image) : ScaledTo16(image);
    }
    Picture reduced = Reduced(image);
    if (!reduced || FormatOf(*reduced) == BGR8)
        return reduced;
    return Recoloured(reduced, BGR8);
}

} // namespace VX3::Tool
