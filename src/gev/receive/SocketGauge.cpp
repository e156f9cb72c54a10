#include "gev/receive/SocketGauge.h"

#include <array>
#include <linux/sock_diag.h>
#include <sys/socket.h>

#ifndef SO_MEMINFO
#define SO_MEMINFO 55 // Linux 4.12; older C libraries do not know it
#endif

namespace VX3 {

SocketGauge::SocketGauge(int socketFd) : socketFd_(socketFd), drops_(Drops()) {}

std::uint32_t SocketGauge::Drops() const {
    std::array<std::uint32_t, SK_MEMINFO_VARS> values{};
    socklen_t size = sizeof(values);
    if (::getsockopt(socketFd_, SOL_SOCKET, SO_MEMINFO, values.data(), &size) != 0)
        return 0;
    return values[SK_MEMINFO_DROPS];
}

std::uint64_t SocketGauge::NewOverruns() {
    const std::uint32_t drops = Drops();
    const std::uint32_t fresh = drops - drops_; // it wraps
    drops_ = drops;
    return fresh;
}

} // namespace VX3
