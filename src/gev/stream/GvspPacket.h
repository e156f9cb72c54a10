// One datagram of a stream, taken apart. A view: the datagram's bytes must outlive it.
#pragma once

#include "gev/protocol/Gvsp.h"
#include "gev/stream/GvspPacketAddr.h"

#include <cstddef>
#include <cstdint>

namespace VX3 {

struct GvspPacket {
    Gvsp::Header header;
    GvspPacketAddr addr;
    WireBytes payload; // behind the header
    std::size_t length = 0;
    bool inPlace = false;   // received where it belongs
    bool endsBlock = false; // a trailer before the block's last slot

    // False when the datagram is shorter than its own header form.
    [[nodiscard]] bool Decode(const std::uint8_t* data, std::size_t size) {
        if (!Gvsp::DecodeHeader(data, size, header))
            return false;
        addr = {header.packetId, static_cast<std::uint32_t>(header.blockId)};
        payload = {data + header.Size(), size - header.Size()};
        length = size;
        return true;
    }
    bool Is(Gvsp::Format format) const { return header.Is(format); }
};

} // namespace VX3
