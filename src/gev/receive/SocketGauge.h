// What the kernel says of a socket's receive queue. One system call a reading and none a datagram, as a
// counter that came along with each would cost. Owned by the receive thread.
#pragma once

#include <cstdint>

namespace VX3 {

class SocketGauge {
public:
    explicit SocketGauge(int socketFd);

    // Datagrams, or trains of them, that found the queue full since the last call; 0 where the system does
    // not tell (before Linux 4.12).
    std::uint64_t NewOverruns();

private:
    std::uint32_t Drops() const;

    const int socketFd_;
    std::uint32_t drops_;
};

} // namespace VX3
