// Writes leaders, trailers and the small headers inside payload packets for every payload type. No
// allocation.
//
// Encoders write a whole packet's start (or all of it) and return its size, 0 when it does not fit.
#pragma once

#include "gev/protocol/Gvsp.h"

namespace VX3 {
namespace Gvsp {

// Contents of packets that carry data, in the place of Format; what stands between header and data differs.
enum class DataFormat : std::uint8_t { Plain = 3, H264 = 5, MultiZone = 6, MultiPart = 7, GenDc = 8 };

// What the packet header says besides Header; travels only with extended ids.
struct HeaderExtras {
    bool resent = false;
    std::uint8_t count = 0; // leaders: number of parts, or additional zones
};

// The packet content that carries a payload type's data.
DataFormat PayloadFormat(std::uint16_t payloadType);
// Bytes between packet header and data in such a packet.
std::size_t PayloadPrefixSize(std::uint16_t payloadType);
// Multi-part and multi-zone blocks tell their counts where the header has room only with extended ids.
bool NeedsExtendedIds(std::uint16_t payloadType);

[[nodiscard]] std::size_t EncodeHeader(WireRoom room, Header header, const HeaderExtras& extras);
// After the packet header.
[[nodiscard]] std::size_t EncodeLeaderBody(WireRoom room, const BlockInfo& info);
[[nodiscard]] std::size_t EncodeTrailerBody(WireRoom room, const BlockInfo& info);

// Where a payload packet's data belong.
struct PayloadPlace {
    std::uint32_t part = 0;        // part, zone or flow
    std::uint64_t blockOffset = 0; // from the block's first byte
    std::uint32_t size = 0;
    bool firstOfPart = false;
    bool lastOfPart = false;
};
// The prefix of a payload packet; 0 also for types that have none.
[[nodiscard]] std::size_t EncodePayloadPrefix(WireRoom room, const BlockInfo& info,
                                              const PayloadPlace& place);

// Change what differs between blocks that are alike otherwise; `packet` holds a whole head.
inline void PatchBlockId(std::uint8_t* packet, bool extended, std::uint64_t blockId) {
    if (extended)
        Wire::Store<std::uint64_t>(packet + 8, blockId);
    else
        Wire::Store<std::uint16_t>(packet + 2, static_cast<std::uint16_t>(blockId));
}
// In a leader (H.264: in a payload packet, which begins with it).
inline void PatchTimeStamp(std::uint8_t* packet, bool extended, bool leader, std::uint64_t timeStamp) {
    Wire::Store<std::uint64_t>(packet + HeaderSize(extended) + (leader ? 4 : 0), timeStamp);
}

} // namespace Gvsp
} // namespace VX3
