// What the kernel says of a socket's receive queue. One system call a reading and none a datagram, as a
// counter that came along with each would cost. Owned by the receive thread.
#pragma once

#include <cstdint>

namespace VX3 {

class SocketGauge {
public:
    // All 0 where the system does not tell (before Linux 4.12).
    struct Reading {
        std::uint64_t queued = 0; // bytes, with the kernel's own overhead
        std::uint64_t room = 0;   // of the buffer, counted alike
        // Datagrams, or trains of them, that were dropped since the last reading: the buffer was full, or a
        // filter refused them.
        std::uint64_t dropped = 0;
    };

    explicit SocketGauge(int socketFd) : socketFd_(socketFd) { (void)Read(); }
    Reading Read();

private:
    const int socketFd_;
    std::uint32_t drops_ = 0;
};

} // namespace VX3
