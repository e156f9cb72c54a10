// One range of packets missing from a block, as the resend bookkeeping keeps it.
#pragma once

#include <chrono>
#include <cstdint>

namespace VX3 {

struct GvspResendItem {
    static constexpr std::uint32_t ToBlockEnd = 0xFFFFFFFFU;

    std::uint32_t next = 0; // first packet still missing
    std::uint32_t blockId = 0;
    std::uint32_t first = 0;
    std::uint32_t last = 0; // ToBlockEnd: to the end of the block
    std::chrono::steady_clock::time_point created{};
    std::chrono::steady_clock::time_point asked{}; // of the latest request
    std::uint64_t createdAt = 0;                   // packets the stream had taken by then
    std::uint32_t countdown = 0;                   // packets to go before it may be asked for again
    std::uint8_t attempts = 0;
    bool extended = false;
    bool due = false; // may be handed out

    bool Holds(std::uint32_t packetId) const { return next <= packetId && packetId <= last; }
    // Nothing of the block was ever seen.
    bool IsWholeBlock() const { return next == 0 && last == ToBlockEnd; }
};

} // namespace VX3
