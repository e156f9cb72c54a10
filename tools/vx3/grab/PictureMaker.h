// Turns a camera's image, whatever its pixel format, into one that a picture file shows correctly. Stateless
// after construction; one thread at a time.
#pragma once

#include "vx3/image/IImage.h"

#include <memory>
#include <string>

namespace VX3::Tool {

struct PictureOptions {
    std::string format = "png";                  // png, tiff, bmp, jpg, jpeg or raw
    PixelFormatValue conversion = InvalidFormat; // Mono8 or RGB8; invalid: none
    bool map = false;                            // false colour of mono images
    unsigned int mapIndex = 0;
    unsigned int mapLow = 0;
    unsigned int mapRange = 0; // 0: up to the format's largest sample
};

class PictureMaker {
public:
    PictureMaker(const PictureOptions& options, std::shared_ptr<IImagePool> pool);

    // The image to save; empty when the format cannot be shown. Raw files get the camera's own bytes unless a
    // conversion or a map is asked for. Mono samples of more than 8 bits keep their precision in png and
    // tiff, scaled to 16 bits, so that white is white; the others get the upper 8 bits.
    std::shared_ptr<IImage> Make(const std::shared_ptr<IImage>& image) const;

private:
    using Picture = std::shared_ptr<IImage>;

    Picture Unpacked(const Picture& image) const;
    Picture Converted(const Picture& image, PixelFormatValue format) const;
    Picture ScaledTo16(const Picture& image) const;
    Picture Mapped(const Picture& image) const;
    Picture InFileOrder(const Picture& image) const;

    const PictureOptions options_;
    const std::shared_ptr<IImagePool> pool_;
};

// The number of a colour map's name; throws ToolError listing the names.
unsigned int MapIndex(const std::string& name);

} // namespace VX3::Tool
