// Watches the packet addresses of a stream and decides what to ask the camera for again. No sockets and no
// clock: the caller says what time it is. Owned by a parser, used by its receive thread alone; GetImagesLost
// may be called from any thread.
#pragma once

#include "gev/stream/GvspPacketAddr.h"
#include "gev/stream/GvspResendInfo.h"
#include "vx3/core/Status.h"

#include <chrono>
#include <cstdint>

namespace VX3 {

class IGvspResendParser {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    virtual StatusCode Reset() = 0;
    // Forgets what is missing of a block: it was handed on.
    virtual StatusCode Remove(std::uint32_t blockId) = 0;
    // The next request that is due; false when there is none.
    [[nodiscard]] virtual bool GetResendInfo(GvspResendInfo& info, TimePoint now) = 0;
    // An accepted packet.
    virtual StatusCode UpdateResend(const GvspPacketAddr* addr, TimePoint now) = 0;
    // Every packet from `from` to `to` of one block; WrongState when they are not that.
    virtual StatusCode UpdateResend(const GvspPacketAddr* from, const GvspPacketAddr* to, TimePoint now) = 0;
    virtual StatusCode UpdateResend(unsigned int unused) = 0;
    // Blocks of which nothing arrived.
    virtual std::uint64_t GetImagesLost() const = 0;
    // The last packet id of every block (its trailer).
    virtual StatusCode SetMaxPid(std::uint32_t packetId) = 0;
    virtual StatusCode SetFlagExt(bool extended) = 0;
    virtual ~IGvspResendParser() = default;
};

} // namespace VX3
