// A stream's counters.
#pragma once

#include "vx3/core/Export.h"

#include <atomic>
#include <cstdint>
#include <initializer_list>

namespace VX3 {

// A copy of a stream's counters; the first six in the order of the C interface's record.
struct VX3_API Statistics {
    std::uint64_t blocks = 0;           // frames handed on, complete or not
    std::uint64_t lostBlocks = 0;       // frames of which nothing arrived
    std::uint64_t resentPackets = 0;    // packets asked for again
    std::uint64_t missingPackets = 0;   // packets that never came, summed over frames handed on
    std::uint64_t incompleteBlocks = 0; // frames handed on with packets missing
    std::uint64_t reserved = 0;
    std::uint64_t droppedImages = 0;  // dropped because the delivery queue was full
    std::uint64_t foreignPackets = 0; // datagrams refused because somebody else than the camera sent them
    std::uint64_t overruns = 0;       // datagrams, or trains of them, that found the socket's buffer full
    std::uint64_t leftOutBlocks = 0;  // frames not taken at all, as the host could not keep up
};

// The live counters: one thread writes each, any thread reads.
struct LiveStatistics {
    std::atomic<std::uint64_t> blocks{0};
    std::atomic<std::uint64_t> lostBlocks{0};
    std::atomic<std::uint64_t> resentPackets{0};
    std::atomic<std::uint64_t> missingPackets{0};
    std::atomic<std::uint64_t> incompleteBlocks{0};
    std::atomic<std::uint64_t> reserved{0};
    std::atomic<std::uint64_t> droppedImages{0};
    std::atomic<std::uint64_t> foreignPackets{0};
    std::atomic<std::uint64_t> overruns{0};
    std::atomic<std::uint64_t> leftOutBlocks{0};

    static void Add(std::atomic<std::uint64_t>& counter, std::uint64_t n = 1) {
        counter.fetch_add(n, std::memory_order_relaxed);
    }
    Statistics Snapshot() const {
        constexpr auto Relaxed = std::memory_order_relaxed;
        return {blocks.load(Relaxed),         lostBlocks.load(Relaxed),       resentPackets.load(Relaxed),
                missingPackets.load(Relaxed), incompleteBlocks.load(Relaxed), reserved.load(Relaxed),
                droppedImages.load(Relaxed),  foreignPackets.load(Relaxed),   overruns.load(Relaxed),
                leftOutBlocks.load(Relaxed)};
    }
    void Reset() {
        for (auto* counter : {&blocks, &lostBlocks, &resentPackets, &missingPackets, &incompleteBlocks,
                              &reserved, &droppedImages, &foreignPackets, &overruns, &leftOutBlocks})
            counter->store(0, std::memory_order_relaxed);
    }
};

} // namespace VX3
