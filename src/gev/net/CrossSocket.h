// The UDP socket under a SocketPort and under the simulated camera. Owned by one of them; one thread at a
// time receives.
#pragma once

#include "core/UniqueFd.h"
#include "vx3/core/Status.h"
#include "vx3/gev/NetParam.h"

#include <cstddef>
#include <cstdint>

namespace VX3 {

class CrossSocket {
public:
    // Binds to localIp (every address when 0, or when remoteIp is BroadcastIp, so that broadcast answers
    // arrive; what is sent carries localIp all the same) on localPort (chosen by the system when 0), and to
    // the interface that owns localIp where the system lets us. A failed bind leaves the socket closed: sends
    // and receives then fail.
    CrossSocket(std::uint32_t remoteIp, std::uint32_t remotePort, std::uint32_t localIp,
                std::uint32_t localPort);

    // What sendto returned: bytes sent, or -1.
    [[nodiscard]] StatusCode SendTo(const void* bytes, std::size_t length, std::uint32_t ip,
                                    std::uint32_t port);
    // One datagram's whole length, however much of it fitted; Status::TimeOut after `timeoutMs` (0: 1000)
    // in slices of 100 ms; Status::PortNotOpen when the bind failed.
    [[nodiscard]] StatusCode RecvFrom(void* buffer, std::size_t size, std::uint32_t timeoutMs,
                                      std::uint32_t& ip, std::uint32_t& port);
    // The local address asked for and the port really bound.
    NET_ENDPOINT GetLocalEndPoint() const { return {localIp_, localPort_}; }
    // The conversation counts as open as long as the object lives; IsBound tells whether the bind succeeded.
    bool IsOpened() const { return true; }
    bool IsBound() const { return static_cast<bool>(fd_); }
    int Descriptor() const { return fd_.Get(); }

private:
    void BindToInterfaceOf(std::uint32_t ip);
    long SendPlain(const void* bytes, std::size_t length, std::uint32_t ip, std::uint32_t port) const;
    long SendFromLocalIp(const void* bytes, std::size_t length, std::uint32_t ip, std::uint32_t port) const;

    UniqueFd fd_;
    const bool bound_; // to localIp_ itself
    std::uint32_t localIp_;
    std::uint32_t localPort_;
};

} // namespace VX3
