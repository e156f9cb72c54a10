#include "vx3/core/Utilities.h"
#include "vx3/image/ImageInfo.h"

#include <cctype>

namespace VX3 {

namespace {

// One "_X..." tag of a description; unknown letters are skipped.
void ApplyTag(const std::string& tag, ImageBaseInfo& base) {
    const std::string rest = tag.substr(1);
    switch (std::toupper(static_cast<unsigned char>(tag[0]))) {
    case 'P':
        base.paddingX = static_cast<std::uint32_t>(std::stoi(rest));
        break;
    case 'T':
        base.timestamp = static_cast<std::uint64_t>(std::stoll(rest));
        break;
    case 'B': // a number nobody uses, but it must be one
        static_cast<void>(std::stoll(rest));
        break;
    case 'E': {
        const int order = std::toupper(static_cast<unsigned char>(tag[1]));
        if (order == 'B')
            base.bigEndian = 1;
        else if (order == 'L')
            base.bigEndian = 0;
        break;
    }
    default:
        break;
    }
}

} // namespace

ImageBaseInfo ImageInfoCreator::CreateBaseInfo(const std::string& text) {
    ImageBaseInfo base;
    base.format = InvalidFormat;
    const std::vector<std::string> parts = SplitString(text, '_');
    if (parts.size() < 3)
        return base;
    const auto width = static_cast<std::uint32_t>(std::stoi(parts[0]));
    const auto height = static_cast<std::uint32_t>(std::stoi(parts[1]));
    const PixelFormat format(PixelFormat::FromString(parts[2]));
    if (width == 0 || height == 0 || !format.IsValid())
        return base;
    base.width = width;
    base.height = height;
    base.format = format;
    for (std::size_t i = 3; i < parts.size(); ++i)
        if (parts[i].size() >= 2)
            ApplyTag(parts[i], base);
    return base;
}

ImageInfo ImageInfoCreator::CreateImageInfo(const ImageBaseInfo& base) {
    ImageInfo info;
    info.imageType = ImageTypeImage;
    info.width = base.width;
    info.height = base.height;
    info.pixelFormat = base.format;
    info.paddingX = static_cast<std::uint16_t>(base.paddingX);
    info.statusA = base.height;
    info.blockId = base.blockId;
    const std::uint64_t timestamp = base.timestamp != 0 ? base.timestamp : GetTimeStampLinux();
    info.timestampHigh = static_cast<std::uint32_t>(timestamp >> 32);
    info.timestampLow = static_cast<std::uint32_t>(timestamp);
    return info;
}

} // namespace VX3
