#include "gev/receive/DatagramSource.h"

#include "gev/receive/GroSource.h"
#include "gev/receive/RecvFromSource.h"
#include "gev/receive/RecvMmsgSource.h"

#include <algorithm>
#include <cstdlib>
#include <sys/socket.h>
#include <sys/time.h>

namespace VX3 {

void DatagramSource::LimitWait(std::chrono::milliseconds wait) {
    wait = std::clamp(wait, std::chrono::milliseconds(1), LongestWait);
    if (wait == limit_)
        return;
    limit_ = wait;
    const timeval time{0, static_cast<suseconds_t>(wait.count() * 1000)};
    (void)::setsockopt(socketFd_, SOL_SOCKET, SO_RCVTIMEO, &time, sizeof(time));
}

std::unique_ptr<DatagramSource> DatagramSource::Create(ReceiveMethod method, int socketFd,
                                                       std::size_t maxDatagram, SenderCheck& senders) {
    if (method == ReceiveMethod::Best || method == ReceiveMethod::Gro) {
        if (GroSource::Enable(socketFd))
            return std::make_unique<GroSource>(socketFd, senders);
        if (method == ReceiveMethod::Gro)
            return nullptr;
    }
    if (method == ReceiveMethod::RecvFrom)
        return std::make_unique<RecvFromSource>(socketFd, maxDatagram, senders);
    return std::make_unique<RecvMmsgSource>(socketFd, maxDatagram, senders);
}

ReceiveMethod DatagramSource::MethodNamed(const std::string& name) {
    if (name == "recvfrom")
        return ReceiveMethod::RecvFrom;
    if (name == "recvmmsg")
        return ReceiveMethod::RecvMmsg;
    return name == "gro" ? ReceiveMethod::Gro : ReceiveMethod::Best;
}

ReceiveMethod DatagramSource::MethodFromEnvironment() {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing in the library changes the environment
    const char* name = std::getenv("VX3_RECEIVE_METHOD");
    return MethodNamed(name == nullptr ? "" : name);
}

} // namespace VX3
