// GigE Vision Streaming Protocol: packet header in its two forms, leader, payload and trailer, both
// directions. Header decoding is inline: it runs once a packet on the receive path.
#pragma once

#include "vx3/gev/GvspBlock.h"
#include "wire/WireCursor.h"

#include <cstddef>
#include <cstdint>

namespace VX3 {
namespace Gvsp {

constexpr std::size_t StandardHeaderSize = 8;
constexpr std::size_t ExtendedHeaderSize = 20;
// What a camera's packet size counts besides the datagram: IP and UDP headers.
constexpr std::size_t IpUdpOverhead = 28;
constexpr std::size_t ImageLeaderSize = 36;
constexpr std::size_t ImageTrailerSize = 8;
constexpr std::uint8_t ExtendedIdFlag = 0x80;
constexpr std::uint8_t FormatMask = 0x0F;
constexpr std::uint32_t MaxStandardPacketId = 0x00FFFFFFU;

enum class Format : std::uint8_t { Leader = 1, Trailer = 2, Payload = 3 };

// Bit 15 of a packet's status marks an error; other statuses (0x0100: resent) are successes with a flag.
constexpr bool IsErrorStatus(std::uint16_t status) {
    return (status & 0x8000U) != 0;
}

constexpr std::size_t HeaderSize(bool extended) {
    return extended ? ExtendedHeaderSize : StandardHeaderSize;
}

struct Header {
    std::uint64_t blockId = 0;
    std::uint32_t packetId = 0;
    std::uint16_t status = 0;
    std::uint8_t format = 0; // compare with Format; other values are possible
    bool extended = false;

    bool Is(Format f) const { return format == static_cast<std::uint8_t>(f); }
    std::size_t Size() const { return HeaderSize(extended); }
};

// False when the datagram is shorter than its own header form. Leaves `header` untouched then.
[[nodiscard]] inline bool DecodeHeader(const std::uint8_t* data, std::size_t size, Header& header) {
    if (size < StandardHeaderSize)
        return false;
    const bool extended = (data[4] & ExtendedIdFlag) != 0;
    if (extended && size < ExtendedHeaderSize)
        return false;
    header.status = Wire::Load<std::uint16_t>(data);
    header.format = data[4] & FormatMask;
    header.extended = extended;
    if (extended) {
        header.blockId = Wire::Load<std::uint64_t>(data + 8);
        header.packetId = Wire::Load<std::uint32_t>(data + 16);
    } else {
        header.blockId = Wire::Load<std::uint16_t>(data + 2);
        header.packetId = Wire::Load<std::uint32_t>(data + 4) & MaxStandardPacketId;
    }
    return true;
}

// Writes the header in the form header.extended names; returns its size, 0 when it does not fit.
[[nodiscard]] std::size_t EncodeHeader(WireRoom room, const Header& header);

struct Leader {
    std::uint16_t fieldInfo = 0;
    std::uint16_t payloadType = PayloadType::Image;
    std::uint64_t timeStamp = 0;
    std::uint32_t pixelFormat = 0;
    std::uint32_t sizeX = 0; // payload types with a plain byte count: that count
    std::uint32_t sizeY = 0;
    std::uint32_t offsetX = 0;
    std::uint32_t offsetY = 0;
    std::uint16_t paddingX = 0;
    std::uint16_t paddingY = 0;

    bool IsPlainBytes() const {
        return payloadType == PayloadType::Jpeg || payloadType == PayloadType::DeviceSpecific;
    }
};

struct Trailer {
    std::uint16_t payloadType = PayloadType::Image;
    std::uint32_t sizeY = 0;
};

// `payload` is what follows the packet header. Images need all ImageLeaderSize bytes, plain byte counts
// the first 20, other payload types the first 12; fields that the packet does not reach are 0.
[[nodiscard]] bool DecodeLeader(WireBytes payload, Leader& leader);
// Needs 4 bytes; sizeY is 0 in a trailer too short to carry one.
[[nodiscard]] bool DecodeTrailer(WireBytes payload, Trailer& trailer);

// Whole packets, header included; the header's format is set by the function. Sizes, 0 when it does not fit.
[[nodiscard]] std::size_t EncodeLeader(WireRoom room, Header header, const Leader& leader);
[[nodiscard]] std::size_t EncodePayload(WireRoom room, Header header, WireBytes data);
[[nodiscard]] std::size_t EncodeTrailer(WireRoom room, Header header, const Trailer& trailer);

// Data bytes in a full payload packet of a stream whose packet size (SCPS) is `packetSize`; 0 when the
// headers leave no room.
constexpr std::size_t DataPerPacket(std::size_t packetSize, bool extended) {
    const std::size_t overhead = IpUdpOverhead + HeaderSize(extended);
    return packetSize > overhead ? packetSize - overhead : 0;
}

// The block id after `blockId`: 0 is never used; standard ids wrap after 65535.
constexpr std::uint64_t NextBlockId(std::uint64_t blockId, bool extended) {
    const std::uint64_t next = extended ? blockId + 1 : ((blockId + 1) & 0xFFFFU);
    return next == 0 ? 1 : next;
}

} // namespace Gvsp
} // namespace VX3
