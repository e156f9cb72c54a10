#include "gev/receive/SocketGauge.h"

#include <array>
#include <linux/sock_diag.h>
#include <sys/socket.h>

#ifndef SO_MEMINFO
#define SO_MEMINFO 55 // Linux 4.12; older C libraries do not know it
#endif

namespace VX3 {

SocketGauge::Reading SocketGauge::Read() {
    std::array<std::uint32_t, SK_MEMINFO_VARS> values{};
    socklen_t size = sizeof(values);
    if (::getsockopt(socketFd_, SOL_SOCKET, SO_MEMINFO, values.data(), &size) != 0)
        return {};
    const std::uint32_t dropped = values[SK_MEMINFO_DROPS] - drops_; // it wraps
    drops_ = values[SK_MEMINFO_DROPS];
    return {values[SK_MEMINFO_RMEM_ALLOC], values[SK_MEMINFO_RCVBUF], dropped};
}

} // namespace VX3
