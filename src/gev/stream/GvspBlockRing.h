// The blocks of a stream in a ring of 64 slots: those in flight first, in block-id order, the spare ones
// behind them. Owned by the parser; its thread only. Nothing here allocates after construction but AddSpare's
// image, which the pool recycles.
#pragma once

#include "gev/stream/GvspPacketAddr.h"
#include "gev/stream/GvspParserInfo.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace VX3 {

class GvspBlockRing {
public:
    static constexpr std::size_t Slots = 64; // one stays empty: at most 63 blocks

    GvspBlockRing();
    GvspBlockRing(const GvspBlockRing&) = delete;
    GvspBlockRing& operator=(const GvspBlockRing&) = delete;

    std::size_t InFlight() const { return inFlight_; }
    std::size_t Size() const { return (tail_ + Slots - head_) % Slots; }
    bool IsFull() const { return (tail_ + 1) % Slots == head_; }
    bool HasSpare() const { return Size() > inFlight_; }
    // In flight, oldest first.
    GvspParserInfo& At(std::size_t index) { return *Slot(index); }
    // The blocks in flight that go next and last; InFlight must not be 0.
    std::uint32_t Oldest() const { return ring_[head_]->blockId; }
    std::uint32_t Newest() const { return ring_[(head_ + inFlight_ - 1) % Slots]->blockId; }
    GvspParserInfo* Find(std::uint32_t blockId);
    // Room for one more spare block; the ring must not be full.
    void AddSpare(std::unique_ptr<IImage> image, std::uint32_t bufferId, std::size_t capacity);
    // A spare block, put into its place by `blockId` (which it does not get yet); HasSpare must hold.
    GvspParserInfo& Open(std::uint32_t blockId, const GvspBlockOrder& order);
    // Undoes Open: the block becomes spare again.
    void Close(GvspParserInfo& info);
    // Takes the oldest block in flight out; its image goes to the caller.
    std::unique_ptr<IImage> PopHead();
    // Drops every spare block.
    void DropSpares();

private:
    GvspParserInfo*& Slot(std::size_t index) { return ring_[(head_ + index) % Slots]; }

    std::array<GvspParserInfo, Slots> blocks_;
    std::array<GvspParserInfo*, Slots> ring_;
    std::size_t head_ = 0;
    std::size_t tail_ = 0;
    std::size_t inFlight_ = 0;
};

} // namespace VX3
