#include "processing/ImageFileName.h"

#include "vx3/core/Utilities.h"

#include <algorithm>
#include <cctype>
#include <stdexcept>

namespace VX3 {

namespace {

constexpr const char* PictureExtensions[] = {"bmp", "jpg", "png", "tiff", "jpeg", "webp"};
constexpr std::size_t FirstTag = 3; // after width, height and format

std::string LowerCase(std::string text) {
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

// Whether one of the tags behind the format begins with `letter`.
bool HasTag(const std::string& description, char letter) {
    const std::vector<std::string> parts = SplitString(description, '_');
    return std::any_of(
        parts.begin() + std::min(parts.size(), FirstTag), parts.end(), [letter](const auto& part) {
            return part.size() >= 2 && std::toupper(static_cast<unsigned char>(part[0])) == letter;
        });
}

ImageBaseInfo Parse(const std::string& description) {
    try {
        return ImageInfoCreator::CreateBaseInfo(description);
    } catch (const std::logic_error&) { // a text where a number belongs: no description
        ImageBaseInfo none;
        none.format = InvalidFormat;
        return none;
    }
}

} // namespace

// Only the last component is split: dots in the names of directories say nothing.
ImageFileName::ImageFileName(const std::string& path) : path_(path) {
    const std::size_t slash = path.rfind('/');
    const std::size_t start = slash == std::string::npos ? 0 : slash + 1;
    const std::size_t dot = path.rfind('.');
    if (dot == std::string::npos || dot < start || dot + 1 == path.size())
        return;
    stem_ = path.substr(0, dot);
    lastPart_ = path.substr(dot + 1);
    extension_ = LowerCase(lastPart_);
    const std::size_t before = stem_.rfind('.');
    if (before != std::string::npos && before >= start)
        description_ = stem_.substr(before + 1);
}

bool ImageFileName::IsPicture() const {
    return std::find(std::begin(PictureExtensions), std::end(PictureExtensions), extension_) !=
           std::end(PictureExtensions);
}

std::string ImageFileName::WithDescription(const ImageInfo& info) const {
    if (lastPart_.empty())
        return path_;
    std::string description =
        StringFormat("%u_%u_%s", info.width, info.height, PixelFormat(info.pixelFormat).ToString().c_str());
    // Without it the file could not be read back.
    if (info.paddingX != 0)
        description += "_P" + std::to_string(info.paddingX);
    return stem_ + "." + description + "." + lastPart_;
}

ImageBaseInfo ImageFileName::Describe(const ImageBaseInfo* base) const {
    ImageBaseInfo result = Parse(description_);
    if (base == nullptr)
        return result;
    if (!result.format.IsValid())
        return *base;
    if (!HasTag(description_, 'P'))
        result.paddingX = base->paddingX;
    if (!HasTag(description_, 'T'))
        result.timestamp = base->timestamp;
    if (!HasTag(description_, 'E'))
        result.bigEndian = base->bigEndian;
    result.blockId = base->blockId;
    return result;
}

} // namespace VX3
