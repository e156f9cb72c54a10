// What a file name says about the image in the file. Pure text work: names come from outside and are refused,
// never believed.
#pragma once

#include "vx3/image/ImageInfo.h"

#include <string>

namespace VX3 {

class ImageFileName {
public:
    explicit ImageFileName(const std::string& path);

    // The lower-case extension is one of a picture codec.
    bool IsPicture() const;
    // Lower case, without the dot; empty when there is none.
    const std::string& Extension() const { return extension_; }
    // The name with the header's description put before the extension; the path unchanged without an
    // extension.
    std::string WithDescription(const ImageInfo& info) const;
    // The name's description, completed from `base` (may be null) where the name is silent. Format 0 when
    // neither says enough.
    ImageBaseInfo Describe(const ImageBaseInfo* base) const;

private:
    std::string path_;
    std::string stem_;        // path up to the dot before the extension
    std::string lastPart_;    // extension as written
    std::string extension_;   // extension in lower case
    std::string description_; // between the last two dots
};

} // namespace VX3
