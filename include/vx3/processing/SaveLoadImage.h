// Images to and from files, caller memory and OpenCV matrices. Nothing here throws; any thread may call as
// long as nobody writes the images concerned.
#pragma once

#include "vx3/image/IImage.h"

#include <cstddef>
#include <memory>
#include <string>

namespace cv {
class Mat;
}

namespace VX3 {

// A matrix header over the image's pixels, Stride() bytes a row, without a copy (rows whose bytes OpenCV
// could not address, such as 16-bit samples at odd offsets, are copied). Mono8: CV_8UC1; Mono10..Mono16:
// CV_16UC1; RGB8 and BGR8: CV_8UC3; RGBa8 and BGRa8: CV_8UC4; any other format, or no image: an empty matrix.
VX3_API cv::Mat Image2Mat(const IImage* image);

// A copy of the matrix in `pool`, with block id and time stamp of `base`. CV_8UC1: Mono8; CV_8UC3: BGR8;
// CV_8UC4: BGRa8; CV_16UC1: Mono16; every other matrix gives an empty result.
VX3_API std::unique_ptr<IImage> Mat2Image(cv::Mat& mat, const ImageBaseInfo& base,
                                          std::shared_ptr<IImagePool> pool);

class VX3_API SaveLoadImage {
public:
    // Extensions bmp, jpg, png, tiff, jpeg and webp (in any case) are pictures, with the right colours
    // whatever the order of the image's bytes: mosaics become colour, packed samples are unpacked, and what
    // has more bits than the picture keeps its upper 8 (Mono10 to Mono16 go into png and tiff as they are,
    // with 16 bits). Every other file gets the bare pixel bytes. Mode 1 puts the description into a raw
    // file's name: frame.raw becomes frame.640_480_MONO12.raw, with "_P16" behind the format for 16 bytes of
    // line padding. NotFound: no image; NotAvailable: the format has no picture or the image no pixels;
    // WrongState: the file could not be opened or written whole (what was written is removed). The thread's
    // last failure says more, here and below.
    static unsigned int Save2File(const std::shared_ptr<IImage>& image, const std::string& path,
                                  unsigned int mode);

    // The text between the last two dots of a file name describes the image; `base` (may be null) fills in
    // what the name does not say. Pictures come as BGR8; raw 16-bit samples that are said to be big-endian
    // are swapped. Empty when there is no such file, no description, no image of that size, or
    // when a raw file is shorter than its image.
    static std::unique_ptr<IImage> LoadFromFile(const std::string& path, const ImageBaseInfo* base,
                                                std::shared_ptr<IImagePool> pool);

    // With a description: a copy of `size` raw pixel bytes, as a raw file of that content loads. Without one:
    // an encoded picture, decoded to BGR8.
    static std::unique_ptr<IImage> LoadFromBuffer(const unsigned char* data, std::size_t size,
                                                  const ImageBaseInfo* base,
                                                  std::shared_ptr<IImagePool> pool);

    // An image over the caller's pixels, who keeps them alive; `padding` bytes end each line. Empty for null
    // data, an empty geometry, or one whose sizes do not fit 32 bits.
    static std::unique_ptr<IImage> WrapFromBuffer(unsigned char* data, unsigned int width,
                                                  unsigned int height, PixelFormatValue format,
                                                  unsigned int padding);

    // BGR8 `src` to RGB8 `dst`, whose header is set; an empty `dst` is made in the default pool. NotFound:
    // `src` has another format, or `dst` is too small.
    static unsigned int ConvertBGR2RGB(const std::shared_ptr<IImage>& src, std::shared_ptr<IImage>& dst);
    // The same from BGRa8 to RGBa8.
    static unsigned int ConvertBGRA2RGBA(const std::shared_ptr<IImage>& src, std::shared_ptr<IImage>& dst);

    // Sample by sample a + b, saturated at the largest value of the format's bit depth; header of `a`. Empty
    // unless both have the same size and format, one that Image2Mat knows.
    static std::unique_ptr<IImage> ImagesAdd(const std::shared_ptr<IImage>& a,
                                             const std::shared_ptr<IImage>& b,
                                             std::shared_ptr<IImagePool> pool);
};

} // namespace VX3
