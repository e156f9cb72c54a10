// Turns the datagrams of one stream channel into images. No sockets and no clock: the caller says what time
// it is. Owned by a receiver, called by its receive thread; GetStatistics may be called from any thread.
#pragma once

#include "gev/protocol/Gvsp.h"
#include "gev/stream/GvspParserInfo.h"
#include "gev/stream/GvspResendInfo.h"
#include "vx3/core/Status.h"
#include "vx3/device/Statistics.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>

namespace VX3 {

// A finished block's image; the number is 0 and free for later use.
using GvspImageCallback = std::function<void(std::unique_ptr<IImage>&&, unsigned int)>;

class IGvspParser {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    // Takes one datagram. `next` tells where to receive the one after it; an empty room is the receiver's own
    // buffer. Malformed, NoBuffer, WrongState: the datagram was dropped; `next` holds all the same.
    virtual StatusCode HandlePacket(const std::uint8_t* packet, std::size_t length, WireRoom& next,
                                    TimePoint now) = 0;
    virtual StatusCode Reset() = 0;
    // Hands on what is complete and drops the rest.
    virtual StatusCode Flush() = 0;
    // One more spare block; QueueFull when the ring has no room, NoBuffer when the pool has none.
    [[nodiscard]] virtual StatusCode AllocOneBuff() = 0;
    virtual LiveStatistics* GetStatistics() = 0;
    // A packet-resend request that is due; false when there is none.
    [[nodiscard]] virtual bool GetResendInfo(GvspResendInfo& info, TimePoint now) = 0;
    virtual ~IGvspParser() = default;
    // Makes the header that every later block gets, and blocks that can hold it. NoBuffer when it
    // asks for more than the stream may take.
    [[nodiscard]] virtual StatusCode CreateImage(std::uint32_t blockId, const Gvsp::Leader& leader,
                                                 std::uint32_t packets, std::uint32_t bytes,
                                                 bool extended) = 0;
    // Hands a block on, and every block before it. WrongState when nothing is in flight.
    [[nodiscard]] virtual StatusCode CommitBlock(GvspParserInfo& info) = 0;

    // To be called while nothing arrives, at least as often as MaxWait says: finds lost tails and repeats
    // requests. `next` as above.
    virtual void CheckSilence(WireRoom& next, TimePoint now) = 0;
    virtual std::chrono::milliseconds MaxWait() const = 0;
};

} // namespace VX3
