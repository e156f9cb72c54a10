// Whose datagrams a stream takes: those that come from its camera's address. The rest is refused, counted
// and, now and then, logged. Owned by the receive thread.
//
// The address alone decides, not the port: cameras tell the port they stream from late, wrongly or not at
// all, and may resend from another one. The socket stays unconnected for the same reason, and because the
// kernel tells nobody what a connected socket dropped.
#pragma once

#include "vx3/device/Statistics.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <netinet/in.h>
#include <string>

namespace VX3 {

class SenderCheck {
public:
    // `cameraIp` in host order; 0: not known, everybody is taken. The statistics must outlive the check.
    SenderCheck(std::uint32_t cameraIp, std::string stream, LiveStatistics& statistics);

    // As the kernel gave the sender's address with so many datagrams.
    bool Takes(const sockaddr_in& sender, std::size_t datagrams) {
        if (sender.sin_addr.s_addr == camera_ || camera_ == INADDR_ANY)
            return true;
        Refuse(sender, datagrams);
        return false;
    }

private:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::minutes LogPause{1}; // between two lines

    void Refuse(const sockaddr_in& sender, std::size_t datagrams);

    const in_addr_t camera_; // as on the wire
    const std::string stream_;
    LiveStatistics& statistics_;
    Clock::time_point mayLog_{}; // from then on
};

} // namespace VX3
