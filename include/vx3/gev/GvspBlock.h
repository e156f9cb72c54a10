// What the leader and trailer of a GigE Vision block tell, for every payload type.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace VX3 {
namespace Gvsp {

namespace PayloadType {
constexpr std::uint16_t Image = 0x0001;
constexpr std::uint16_t RawData = 0x0002;
constexpr std::uint16_t File = 0x0003;
constexpr std::uint16_t ChunkData = 0x0004;
constexpr std::uint16_t ExtendedChunkData = 0x0005;
constexpr std::uint16_t Jpeg = 0x0006;
constexpr std::uint16_t Jpeg2000 = 0x0007;
constexpr std::uint16_t H264 = 0x0008;
constexpr std::uint16_t MultiZone = 0x0009;
constexpr std::uint16_t MultiPart = 0x000A;
constexpr std::uint16_t GenDc = 0x000B;
constexpr std::uint16_t DeviceSpecific = 0x8001; // and all above 0x8000: a plain byte count
// Added to a type: chunk data follows the payload.
constexpr std::uint16_t ChunkBit = 0x4000;
constexpr std::uint16_t TypeMask = 0x3FFF;

constexpr bool IsDeviceSpecific(std::uint16_t type) {
    return (type & 0x8000U) != 0;
}
// The type without its chunk bit.
constexpr std::uint16_t Base(std::uint16_t type) {
    return IsDeviceSpecific(type) ? type : static_cast<std::uint16_t>(type & TypeMask);
}
constexpr bool HasChunks(std::uint16_t type) {
    return !IsDeviceSpecific(type) && (type & ChunkBit) != 0;
}
} // namespace PayloadType

// Data types of the parts of a multi-part block.
namespace PartType {
constexpr std::uint16_t Image2D = 1; // 2 to 4: planes; 5 to 8: 3D images and their planes
constexpr std::uint16_t ConfidenceMap = 9;
constexpr std::uint16_t ChunkData = 10;
constexpr std::uint16_t Jpeg = 11;
constexpr std::uint16_t Jpeg2000 = 12;

constexpr bool IsImage(std::uint16_t type) {
    return type >= Image2D && type <= ConfidenceMap;
}
constexpr bool IsJpeg(std::uint16_t type) {
    return type == Jpeg || type == Jpeg2000;
}
} // namespace PartType

struct ImageShape {
    std::uint32_t pixelFormat = 0x01080001; // PFNC code; Mono8
    std::uint32_t sizeX = 0;                // pixels
    std::uint32_t sizeY = 0;                // lines
    std::uint32_t offsetX = 0;
    std::uint32_t offsetY = 0;
    std::uint16_t paddingX = 0; // bytes behind each line
    std::uint16_t paddingY = 0; // bytes behind the image
};

// JPEG and JPEG 2000.
struct JpegInfo {
    std::uint8_t flags = 0;
    std::uint64_t tickFrequency = 0;
    std::uint32_t dataFormat = 0;
};

struct H264Info {
    std::uint8_t packetizationMode = 0;
    std::uint16_t packetSize = 0;
    std::uint8_t profile = 0;
    std::uint8_t constraints = 0; // cs0 .. cs3 in bits 0x80 .. 0x10
    std::uint8_t level = 0;
    std::uint16_t interleavingDepth = 0;
    std::uint16_t maxDonDifference = 0;
    std::uint32_t deinterleaveBufferSize = 0;
    std::uint32_t initialBufferTime = 0;
};

struct PartInfo {
    std::uint16_t dataType = PartType::Image2D;
    std::uint64_t length = 0; // bytes, 48 bits
    ImageShape image;         // images; otherwise only pixelFormat, as "data format"
    JpegInfo jpeg;
    std::uint8_t sourceId = 0;
    std::uint8_t additionalZones = 0; // at most 31
    std::uint32_t zoneDirections = 0; // zone 0 is the most significant bit; 1: bottom up
    std::uint16_t purposeId = 0;
    std::uint16_t regionId = 0;
};

// Fields that a payload type does not have are ignored for it.
struct BlockInfo {
    std::uint16_t payloadType = PayloadType::Image;
    std::uint8_t fieldInfo = 0; // interlaced: field id in the high, field count in the low four bits
    std::uint8_t flags = 0;     // generic flags
    std::uint64_t timeStamp = 0;
    ImageShape image;
    std::uint64_t payloadSize = 0; // bytes; types that tell it
    std::string fileName;
    JpegInfo jpeg; // its flags are the block's
    H264Info h264;
    std::uint8_t additionalZones = 0; // at most 31
    std::uint32_t zoneDirections = 0;
    std::uint32_t descriptorSize = 0; // GenDC
    std::uint8_t descriptorFlags = 0; // GenDC; 0x80: the descriptor is preliminary
    std::vector<PartInfo> parts;      // multi-part
    // Trailer.
    std::optional<std::uint32_t> trailerSizeY; // lines really sent; empty: as in the leader
    std::uint32_t chunkPayloadLength = 0;      // with the chunk bit, and the chunk types
    std::uint32_t chunkLayoutId = 0;
};

} // namespace Gvsp
} // namespace VX3
