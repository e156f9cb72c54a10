#include "gev/protocol/Gvsp.h"

namespace VX3 {
namespace Gvsp {

namespace {

bool WriteHeader(WireWriter& writer, const Header& header) {
    const std::uint8_t format = header.format & FormatMask;
    if (!writer.U16(header.status))
        return false;
    if (header.extended)
        return writer.U16(0) && writer.U32(static_cast<std::uint32_t>(format | ExtendedIdFlag) << 24) &&
               writer.U64(header.blockId) && writer.U32(header.packetId);
    return writer.U16(static_cast<std::uint16_t>(header.blockId)) &&
           writer.U32((static_cast<std::uint32_t>(format) << 24) | (header.packetId & MaxStandardPacketId));
}

bool WriteHeader(WireWriter& writer, Header header, Format format) {
    header.format = static_cast<std::uint8_t>(format);
    return WriteHeader(writer, header);
}

} // namespace

std::size_t EncodeHeader(WireRoom room, const Header& header) {
    WireWriter writer(room);
    return WriteHeader(writer, header) ? writer.Written() : 0;
}

bool DecodeLeader(WireBytes payload, Leader& leader) {
    WireReader reader(payload);
    Leader read;
    if (!reader.U16(read.fieldInfo) || !reader.U16(read.payloadType) || !reader.U64(read.timeStamp))
        return false;
    const bool size = reader.U32(read.pixelFormat) && reader.U32(read.sizeX);
    const bool geometry = size && reader.U32(read.sizeY) && reader.U32(read.offsetX) &&
                          reader.U32(read.offsetY) && reader.U16(read.paddingX) && reader.U16(read.paddingY);
    if ((read.payloadType == PayloadType::Image && !geometry) || (read.IsPlainBytes() && !size))
        return false;
    leader = read;
    return true;
}

bool DecodeTrailer(WireBytes payload, Trailer& trailer) {
    WireReader reader(payload);
    Trailer read;
    if (!reader.Skip(2) || !reader.U16(read.payloadType))
        return false;
    if (!reader.U32(read.sizeY))
        read.sizeY = 0;
    trailer = read;
    return true;
}

std::size_t EncodeLeader(WireRoom room, Header header, const Leader& leader) {
    WireWriter writer(room);
    const bool ok = WriteHeader(writer, header, Format::Leader) && writer.U16(leader.fieldInfo) &&
                    writer.U16(leader.payloadType) && writer.U64(leader.timeStamp) &&
                    writer.U32(leader.pixelFormat) && writer.U32(leader.sizeX) && writer.U32(leader.sizeY) &&
                    writer.U32(leader.offsetX) && writer.U32(leader.offsetY) && writer.U16(leader.paddingX) &&
                    writer.U16(leader.paddingY);
    return ok ? writer.Written() : 0;
}

std::size_t EncodePayload(WireRoom room, Header header, WireBytes data) {
    WireWriter writer(room);
    return WriteHeader(writer, header, Format::Payload) && writer.Copy(data) ? writer.Written() : 0;
}

std::size_t EncodeTrailer(WireRoom room, Header header, const Trailer& trailer) {
    WireWriter writer(room);
    const bool ok = WriteHeader(writer, header, Format::Trailer) && writer.U16(0) &&
                    writer.U16(trailer.payloadType) && writer.U32(trailer.sizeY);
    return ok ? writer.Written() : 0;
}

} // namespace Gvsp
} // namespace VX3
