// Payload datagrams that came before the first leader. Nothing can be placed without it; it may be late, or
// lost and sent again, so the newest datagrams are kept. Owned by the parser; its thread only.
#pragma once

#include "gev/stream/GvspPacket.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace VX3 {

class GvspEarlyPackets {
public:
    using Datagrams = std::vector<std::vector<std::uint8_t>>;
    static constexpr std::size_t MaxEarly = 64;

    void Keep(const GvspPacket& packet) {
        if (datagrams_.size() >= MaxEarly)
            datagrams_.erase(datagrams_.begin());
        const std::uint8_t* const end = packet.payload.data + packet.payload.size;
        datagrams_.emplace_back(packet.payload.data - packet.header.Size(), end);
    }
    bool IsEmpty() const { return datagrams_.empty(); }
    Datagrams TakeAll() { return std::exchange(datagrams_, {}); }

private:
    Datagrams datagrams_;
};

} // namespace VX3
