#include "vx3/image/ImageInfo.h"

#include <cstring>

namespace VX3 {

ImageInfo::ImageInfo(const ImageInfo& other) {
    *this = other;
}

ImageInfo& ImageInfo::operator=(const ImageInfo& other) {
    if (this != &other)
        std::memcpy(static_cast<void*>(this), static_cast<const void*>(&other), HeaderSize);
    headerVersion = 1;
    return *this;
}

unsigned int ImageInfo::Stride() const {
    return PixelFormat(pixelFormat).BuffNeeded(width, 1) + paddingX;
}

unsigned int ImageInfo::ImageDataSize() const {
    return Stride() * height;
}

unsigned int ImageInfo::DataBuffNeeded() const {
    if (pixelFormat == RawBlock)
        return height + SlackBytes + dataOffset;
    return dataOffset + SlackBytes + ImageDataSize();
}

unsigned int ImageInfo::ImageInfoSize() const {
    return extraInfoSize + HeaderSize;
}

unsigned int ImageInfo::PayloadPacketsNeeded(unsigned int packetPayload,
                                             unsigned int* lastPacketBytes) const {
    const unsigned int bytes = DataBuffNeeded();
    if (lastPacketBytes != nullptr)
        *lastPacketBytes = packetPayload == 0 ? bytes : bytes % packetPayload;
    if (packetPayload == 0)
        return 0;
    return bytes / packetPayload + (bytes % packetPayload != 0 ? 1U : 0U);
}

bool ImageInfo::SizesFit() const {
    const std::uint64_t stride = PixelFormat(pixelFormat).BuffNeeded64(width, 1) + paddingX;
    if (stride > UINT32_MAX || static_cast<std::uint64_t>(extraInfoSize) + HeaderSize > UINT32_MAX)
        return false;
    const std::uint64_t data = stride * height;
    if (data + dataOffset + SlackBytes > UINT32_MAX)
        return false;
    // A raw block is its height, so padding would count bytes that its buffer does not have.
    return pixelFormat != RawBlock || paddingX == 0;
}

} // namespace VX3
