#include "gev/receive/SenderCheck.h"

#include "vx3/core/Logger.h"
#include "vx3/core/Utilities.h"

#include <arpa/inet.h>
#include <utility>

namespace VX3 {

SenderCheck::SenderCheck(std::uint32_t cameraIp, std::string stream, LiveStatistics& statistics)
    : camera_(htonl(cameraIp)), stream_(std::move(stream)), statistics_(statistics) {}

void SenderCheck::Refuse(const sockaddr_in& sender, std::size_t datagrams) {
    LiveStatistics::Add(statistics_.foreignPackets, datagrams);
    const auto now = Clock::now();
    if (now < mayLog_)
        return;
    mayLog_ = now + LogPause;
    VxLoggerLog(
        LogLevel::Warning, "SDK",
        "%s: a datagram from %s:%u was refused, as this stream is that of the camera at %s: %llu so far",
        stream_.c_str(), Ipv4Text(ntohl(sender.sin_addr.s_addr)).c_str(),
        static_cast<unsigned int>(ntohs(sender.sin_port)), Ipv4Text(ntohl(camera_)).c_str(),
        static_cast<unsigned long long>(statistics_.foreignPackets.load(std::memory_order_relaxed)));
}

} // namespace VX3
