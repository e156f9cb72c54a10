// Where a packet belongs in a stream, and the order of block ids: 1 .. 65535 (standard) or 1 .. 2^32 - 1
// (extended, low 32 bits), each wrapping to 1, so that "later" holds across the wrap.
#pragma once

#include <cstdint>

namespace VX3 {

struct GvspPacketAddr {
    std::uint32_t packetId = 0;
    std::uint32_t blockId = 0;

    bool operator==(const GvspPacketAddr& other) const {
        return packetId == other.packetId && blockId == other.blockId;
    }
};

class GvspBlockOrder {
public:
    explicit GvspBlockOrder(bool extended = false) : period_(extended ? 0xFFFFFFFFLL : 0xFFFFLL) {}

    // Steps from `from` to `to`, negative when `to` is the earlier one.
    std::int64_t Distance(std::uint32_t from, std::uint32_t to) const {
        std::int64_t steps = static_cast<std::int64_t>(to) - static_cast<std::int64_t>(from);
        if (steps > period_ / 2)
            steps -= period_;
        else if (steps < -(period_ / 2))
            steps += period_;
        return steps;
    }
    std::uint32_t Next(std::uint32_t blockId) const {
        return blockId >= static_cast<std::uint32_t>(period_) ? 1 : blockId + 1;
    }
    std::uint32_t Previous(std::uint32_t blockId) const {
        return blockId <= 1 ? static_cast<std::uint32_t>(period_) : blockId - 1;
    }
    // The block so many steps before that one.
    std::uint32_t Back(std::uint32_t blockId, std::int64_t steps) const {
        const std::int64_t id = static_cast<std::int64_t>(blockId) - steps;
        return static_cast<std::uint32_t>(id > 0 ? id : id + period_);
    }
    bool IsLater(const GvspPacketAddr& a, const GvspPacketAddr& b) const {
        if (a.blockId == b.blockId)
            return a.packetId > b.packetId;
        return Distance(b.blockId, a.blockId) > 0;
    }

private:
    std::int64_t period_;
};

} // namespace VX3
