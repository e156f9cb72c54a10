// The 64-byte image header and the short description it is built from.
#pragma once

#include "vx3/image/PixelFormat.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace VX3 {

// GigE Vision payload types.
enum ImageTypeValue : std::uint16_t {
    ImageTypeInvalid = 0,
    ImageTypeImage = 1,
};

class VX3_API ImageType {
public:
    ImageType(unsigned short code) : value_(static_cast<ImageTypeValue>(code)) {}
    ImageType(ImageTypeValue value) : value_(value) {}
    ImageTypeValue GetType() const { return value_; }
    operator ImageTypeValue() const { return value_; }

private:
    ImageTypeValue value_;
};

// The header every image carries: 64 bytes in host order, copied byte for byte into and out of buffers. Its
// first 36 bytes are laid out as the GigE Vision image leader after its packet header.
struct VX3_API ImageInfo {
    static constexpr unsigned int HeaderSize = 64;
    // Room behind the pixels of every allocated image: streams may write past the nominal size.
    static constexpr unsigned int SlackBytes = 65536;

    std::uint16_t fieldInfo = 0;
    std::uint16_t imageType = 0;
    std::uint32_t timestampHigh = 0;
    std::uint32_t timestampLow = 0;
    std::uint32_t pixelFormat = 0;
    std::uint32_t width = 0;  // pixels
    std::uint32_t height = 0; // lines; bytes for RawBlock
    std::uint32_t offsetX = 0;
    std::uint32_t offsetY = 0;
    std::uint16_t paddingX = 0; // bytes at the end of every line
    std::uint16_t paddingY = 0; // carried, not used in sizes
    std::uint32_t statusA = 0;  // lines really sent (GigE Vision trailer); preset to height
    std::uint32_t lostPackets = 0;
    std::uint32_t statusC = 0; // packets that were asked for again
    std::uint64_t blockId = 0;
    std::uint32_t extraInfoSize = 0; // bytes behind the header in the info buffer
    std::uint16_t dataOffset = 0;    // of the first pixel byte in the data buffer
    std::uint8_t streamFlag = 0;
    std::uint8_t headerVersion = 1;

    ImageInfo() = default;
    // Copies everything but headerVersion, which is always 1.
    ImageInfo(const ImageInfo& other);
    ImageInfo& operator=(const ImageInfo& other);

    // Bytes from one line to the next. 32-bit arithmetic throughout, as the header's fields are.
    unsigned int Stride() const;
    // Bytes of all lines, padding included.
    unsigned int ImageDataSize() const;
    // Bytes of the data buffer an image allocates: dataOffset + pixels + slack.
    unsigned int DataBuffNeeded() const;
    // Bytes of the info buffer: the header and the extra information.
    unsigned int ImageInfoSize() const;
    // Packets of `packetPayload` bytes that DataBuffNeeded() takes; stores the rest in *lastPacketBytes when
    // it is not null. 0 for a payload of 0.
    unsigned int PayloadPacketsNeeded(unsigned int packetPayload, unsigned int* lastPacketBytes) const;
    // False when the 32-bit sizes above would wrap, so that a header from outside can be refused.
    bool SizesFit() const;
};

static_assert(sizeof(ImageInfo) == ImageInfo::HeaderSize, "the image header is 64 bytes");
static_assert(offsetof(ImageInfo, blockId) == 48 && offsetof(ImageInfo, headerVersion) == 63,
              "the image header has a fixed layout");

// What a caller knows about an image without a header.
struct VX3_API ImageBaseInfo {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    PixelFormat format = Mono8;
    std::uint32_t paddingX = 0;
    std::uint64_t blockId = 0;
    std::uint64_t timestamp = 0;
    std::uint8_t bigEndian = 0; // 16-bit samples: 0 little endian, 1 big endian
};

class VX3_API ImageInfoCreator {
public:
    // Parses the description that raw image files carry in their names, "WIDTH_HEIGHT_FORMAT[_TAG...]". An
    // unusable description has format 0; a text where a number belongs raises std::invalid_argument or
    // std::out_of_range.
    static ImageBaseInfo CreateBaseInfo(const std::string& text);
    static ImageInfo CreateImageInfo(const ImageBaseInfo& base);
};

} // namespace VX3
