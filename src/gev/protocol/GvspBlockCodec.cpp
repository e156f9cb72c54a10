#include "gev/protocol/GvspBlockCodec.h"

#include <algorithm>

namespace VX3 {
namespace Gvsp {

namespace {

constexpr std::size_t FlagsOffset = 2;
constexpr std::size_t CountOffset = 7;
constexpr std::uint16_t ResentFlag = 0x0001;

std::size_t SizeIf(bool ok, const WireWriter& writer) {
    return ok ? writer.Written() : 0;
}

bool Write48(WireWriter& writer, std::uint64_t value) {
    return writer.U16(static_cast<std::uint16_t>(value >> 32)) &&
           writer.U32(static_cast<std::uint32_t>(value));
}

bool WriteShape(WireWriter& writer, const ImageShape& image) {
    return writer.U32(image.sizeX) && writer.U32(image.sizeY) && writer.U32(image.offsetX) &&
           writer.U32(image.offsetY) && writer.U16(image.paddingX) && writer.U16(image.paddingY);
}

bool WriteH264(WireWriter& writer, const BlockInfo& info) {
    const H264Info& h264 = info.h264;
    return writer.U64(info.payloadSize) && writer.U8(0) && writer.U8(h264.packetizationMode) &&
           writer.U16(h264.packetSize) && writer.U8(0) && writer.U8(h264.profile) &&
           writer.U8(h264.constraints) && writer.U8(h264.level) && writer.U16(h264.interleavingDepth) &&
           writer.U16(h264.maxDonDifference) && writer.U32(h264.deinterleaveBufferSize) &&
           writer.U32(h264.initialBufferTime);
}

bool WritePart(WireWriter& writer, const PartInfo& part) {
    const bool head = writer.U16(part.dataType) && Write48(writer, part.length) &&
                      writer.U32(part.image.pixelFormat) && writer.U16(0) && writer.U8(part.sourceId) &&
                      writer.U8(part.additionalZones) && writer.U32(part.zoneDirections) &&
                      writer.U16(part.purposeId) && writer.U16(part.regionId);
    if (!head)
        return false;
    if (PartType::IsImage(part.dataType))
        return WriteShape(writer, part.image) && writer.U32(0);
    if (PartType::IsJpeg(part.dataType))
        return writer.U8(part.jpeg.flags) && writer.Zeros(3) && writer.U64(part.jpeg.tickFrequency) &&
               writer.U32(part.jpeg.dataFormat) && writer.U64(0);
    return writer.Zeros(24);
}

bool WriteParts(WireWriter& writer, const BlockInfo& info) {
    return std::all_of(info.parts.begin(), info.parts.end(),
                       [&](const PartInfo& part) { return WritePart(writer, part); });
}

bool WriteFileName(WireWriter& writer, const std::string& name) {
    return writer.Copy(name.c_str(), name.size() + 1);
}

// What follows the time stamp.
bool WriteLeaderFields(WireWriter& writer, const BlockInfo& info) {
    switch (PayloadType::Base(info.payloadType)) {
    case PayloadType::Image:
    case PayloadType::ExtendedChunkData:
        return writer.U32(info.image.pixelFormat) && WriteShape(writer, info.image);
    case PayloadType::File:
        return writer.U64(info.payloadSize) && WriteFileName(writer, info.fileName);
    case PayloadType::Jpeg:
    case PayloadType::Jpeg2000:
        return writer.U64(info.payloadSize) && writer.U64(info.jpeg.tickFrequency) &&
               writer.U32(info.jpeg.dataFormat);
    case PayloadType::MultiZone:
        return writer.U32(info.zoneDirections) && writer.U32(info.image.pixelFormat) &&
               WriteShape(writer, info.image);
    case PayloadType::MultiPart:
        return WriteParts(writer, info);
    case PayloadType::GenDc:
        return writer.U64(info.payloadSize) && writer.U8(info.descriptorFlags) && writer.Zeros(3) &&
               writer.U32(info.descriptorSize);
    case PayloadType::ChunkData:
        return true;
    default: // raw data and what a device calls its own
        return writer.U64(info.payloadSize);
    }
}

bool WritePartTrailers(WireWriter& writer, const BlockInfo& info) {
    return std::all_of(info.parts.begin(), info.parts.end(), [&](const PartInfo& part) {
        return writer.U16(part.dataType) && Write48(writer, part.length) &&
               writer.U32(PartType::IsImage(part.dataType) ? part.image.sizeY : 0) && writer.U32(0);
    });
}

bool WriteTrailerFields(WireWriter& writer, const BlockInfo& info) {
    const std::uint32_t sizeY = info.trailerSizeY.value_or(info.image.sizeY);
    switch (PayloadType::Base(info.payloadType)) {
    case PayloadType::Image:
    case PayloadType::MultiZone:
        return writer.U32(sizeY);
    case PayloadType::ChunkData:
        return writer.U32(info.chunkPayloadLength);
    case PayloadType::ExtendedChunkData:
        return writer.U32(info.chunkPayloadLength) && writer.U32(sizeY) && writer.U32(info.chunkLayoutId);
    case PayloadType::MultiPart:
        return WritePartTrailers(writer, info);
    default:
        return true;
    }
}

// A GenDC descriptor leads the container; its packets are marked.
std::uint8_t GenDcDataFlags(const BlockInfo& info, const PayloadPlace& place) {
    if (place.blockOffset >= info.descriptorSize)
        return 0;
    const std::uint64_t end = place.blockOffset + place.size;
    const bool preliminary = (info.descriptorFlags & 0x80U) != 0;
    unsigned kind = preliminary ? 3 : end > info.descriptorSize ? 2 : 1;
    kind <<= 6;
    return static_cast<std::uint8_t>(kind | (place.blockOffset == 0 ? 0x20U : 0U) |
                                     (end >= info.descriptorSize ? 0x10U : 0U));
}

} // namespace

DataFormat PayloadFormat(std::uint16_t payloadType) {
    switch (PayloadType::Base(payloadType)) {
    case PayloadType::H264:
        return DataFormat::H264;
    case PayloadType::MultiZone:
        return DataFormat::MultiZone;
    case PayloadType::MultiPart:
        return DataFormat::MultiPart;
    case PayloadType::GenDc:
        return DataFormat::GenDc;
    default:
        return DataFormat::Plain;
    }
}

std::size_t PayloadPrefixSize(std::uint16_t payloadType) {
    switch (PayloadFormat(payloadType)) {
    case DataFormat::Plain:
        return 0;
    case DataFormat::GenDc:
        return 16;
    default:
        return 8;
    }
}

bool NeedsExtendedIds(std::uint16_t payloadType) {
    const std::uint16_t base = PayloadType::Base(payloadType);
    return base == PayloadType::MultiPart || base == PayloadType::MultiZone;
}

std::size_t EncodeHeader(WireRoom room, Header header, const HeaderExtras& extras) {
    const std::size_t size = EncodeHeader(room, header);
    if (size == ExtendedHeaderSize) {
        Wire::Store<std::uint16_t>(room.data + FlagsOffset, extras.resent ? ResentFlag : 0);
        room.data[CountOffset] = extras.count;
    }
    return size;
}

std::size_t EncodeLeaderBody(WireRoom room, const BlockInfo& info) {
    WireWriter writer(room);
    if (!writer.U8(info.fieldInfo) || !writer.U8(info.flags) || !writer.U16(info.payloadType))
        return 0;
    if (PayloadType::Base(info.payloadType) == PayloadType::H264)
        return SizeIf(WriteH264(writer, info), writer);
    return SizeIf(writer.U64(info.timeStamp) && WriteLeaderFields(writer, info), writer);
}

std::size_t EncodeTrailerBody(WireRoom room, const BlockInfo& info) {
    WireWriter writer(room);
    bool ok = writer.U16(0) && writer.U16(info.payloadType) && WriteTrailerFields(writer, info);
    if (PayloadType::HasChunks(info.payloadType))
        ok = ok && writer.U32(info.chunkPayloadLength) && writer.U32(info.chunkLayoutId);
    return SizeIf(ok, writer);
}

std::size_t EncodePayloadPrefix(WireRoom room, const BlockInfo& info, const PayloadPlace& place) {
    WireWriter writer(room);
    const auto part = static_cast<std::uint8_t>(place.part);
    switch (PayloadFormat(info.payloadType)) {
    case DataFormat::H264:
        return SizeIf(writer.U64(info.timeStamp), writer);
    case DataFormat::MultiZone: {
        const unsigned zone = (place.part & 0x1FU) << 1 | (place.lastOfPart ? 1U : 0U);
        return SizeIf(writer.U8(0) && writer.U8(static_cast<std::uint8_t>(zone)) &&
                          Write48(writer, place.blockOffset),
                      writer);
    }
    case DataFormat::MultiPart: // a part sent as one zone ends together with it
        return SizeIf(writer.U8(part) && writer.U8(place.lastOfPart ? 0x41 : 0) &&
                          Write48(writer, place.blockOffset),
                      writer);
    case DataFormat::GenDc: {
        const unsigned flow = (place.firstOfPart ? 0x80U : 0U) | (place.lastOfPart ? 0x40U : 0U);
        return SizeIf(writer.U32(place.size) && writer.U64(place.blockOffset) &&
                          writer.U8(GenDcDataFlags(info, place)) &&
                          writer.U8(static_cast<std::uint8_t>(flow)) &&
                          writer.U16(static_cast<std::uint16_t>(place.part)),
                      writer);
    }
    default:
        return 0;
    }
}

} // namespace Gvsp
} // namespace VX3
