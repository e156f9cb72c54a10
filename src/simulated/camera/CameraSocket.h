// A bound UDP socket of the simulated camera. Unlike a host's it is tied to an address, never to an
// interface: hosts behind routers and on this machine are served like any other.
#pragma once

#include "core/UniqueFd.h"
#include "vx3/gev/NetParam.h"
#include "wire/WireCursor.h"

#include <cstddef>
#include <cstdint>

namespace VX3 {
namespace Simulated {

class CameraSocket {
public:
    // ip 0: every address; port 0: chosen by the system. False when they are not to be had.
    [[nodiscard]] bool Bind(std::uint32_t ip, std::uint16_t port);
    // Whereto bytes go that name no destination. False when there is no way there.
    [[nodiscard]] bool Connect(const NET_ENDPOINT& to) const;
    void Close() { fd_.Reset(); }
    std::uint16_t Port() const { return port_; }
    int Descriptor() const { return fd_.Get(); }
    // Datagrams that would have to be cut on their way are not sent at all.
    void ForbidFragments(bool forbid) const;
    // A datagram that the system refuses is a lost one. `from`: the address of ours it carries, of a socket
    // that is bound to all; 0: the system's choice.
    void Send(WireBytes bytes, const NET_ENDPOINT& to, std::uint32_t from = 0) const;
    // The next datagram that is there already, cut to the room; 0 when there is none.
    std::size_t Receive(WireRoom room, NET_ENDPOINT& from) const;

private:
    UniqueFd fd_;
    std::uint16_t port_ = 0;
};

} // namespace Simulated
} // namespace VX3
