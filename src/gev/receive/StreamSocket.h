// The UDP socket of one stream: bound to the host address, with as large a receive buffer as the system
// grants. Owned by a receiver.
#pragma once

#include "core/UniqueFd.h"
#include "vx3/core/Status.h"
#include "vx3/gev/NetParam.h"

#include <cstddef>
#include <cstdint>

namespace VX3 {

class StreamSocket {
public:
    static constexpr int ReceiveBufferBytes = 524288000; // asked for

    // Generic (logged) when the address cannot be bound. The port is chosen by the system. `bufferBytes` as
    // the kernel counts them; 0: as many as it grants.
    [[nodiscard]] StatusCode Open(std::uint32_t hostIp, std::size_t bufferBytes = 0);
    void Close() { fd_.Reset(); }

    int Descriptor() const { return fd_.Get(); }
    std::uint32_t Port() const { return port_; }
    // What the kernel counts against, its own overhead included.
    std::size_t GrantedBytes() const { return granted_; }
    // Datagrams that fill it, about: so many when the kernel keeps each by itself.
    std::size_t DatagramsHeld(std::uint32_t packetSize) const;
    // Logs once, with the remedy, when less than one frame of `param` fits.
    void WarnIfTooSmall(const GevStreamParam& param) const;
    // A small datagram that opens the path from the camera through address translation and firewalls.
    void SendOpening(std::uint32_t ip, std::uint32_t port) const;

private:
    UniqueFd fd_;
    std::uint32_t port_ = 0;
    std::size_t granted_ = 0;
};

} // namespace VX3
