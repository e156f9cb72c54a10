// The zero-copy step: where the next datagram is to be received so that its data lands in the image. Its
// header then overwrites the end of the packet before; those bytes are kept here and put back. Owned by the
// parser; its thread only.
#pragma once

#include "gev/protocol/Gvsp.h"
#include "gev/stream/GvspPacketAddr.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace VX3 {

class GvspRedirect {
public:
    // The datagram of `addr` shall land with its data at `place`; `headerSize` bytes before it must be
    // writable, and `dataSize` from it on.
    WireRoom Set(const GvspPacketAddr& addr, std::uint8_t* place, std::size_t headerSize,
                 std::size_t dataSize) {
        addr_ = addr;
        start_ = place - headerSize;
        headerSize_ = headerSize;
        std::memcpy(saved_.data(), start_, headerSize);
        return {start_, headerSize + dataSize};
    }
    // Puts the saved bytes back and forgets the place. The datagram's header must have been read by then.
    void Restore() {
        if (start_ == nullptr)
            return;
        std::memcpy(start_, saved_.data(), headerSize_);
        start_ = nullptr;
    }
    bool Holds(const std::uint8_t* packet) const { return start_ != nullptr && packet == start_; }
    const GvspPacketAddr& Addr() const { return addr_; }

private:
    GvspPacketAddr addr_;
    std::uint8_t* start_ = nullptr;
    std::size_t headerSize_ = 0;
    std::array<std::uint8_t, Gvsp::ExtendedHeaderSize> saved_{};
};

} // namespace VX3
