#include "gev/DatagramSource.h"

#include "gev/GroSource.h"
#include "gev/RecvFromSource.h"
#include "gev/RecvMmsgSource.h"

#include <cstdlib>
#include <poll.h>

namespace VX3 {

bool DatagramSource::WaitReadable(int socketFd, int wakeFd, std::chrono::milliseconds wait) {
    pollfd descriptors[2] = {{socketFd, POLLIN, 0}, {wakeFd, POLLIN, 0}};
    const int ready = ::poll(descriptors, 2, static_cast<int>(wait.count()));
    return ready > 0 && descriptors[0].revents != 0;
}

std::unique_ptr<DatagramSource> DatagramSource::Create(ReceiveMethod method, int socketFd, int wakeFd,
                                                       std::size_t maxDatagram) {
    if (method == ReceiveMethod::Best || method == ReceiveMethod::Gro) {
        if (GroSource::Enable(socketFd))
            return std::make_unique<GroSource>(socketFd, wakeFd);
        if (method == ReceiveMethod::Gro)
            return nullptr;
    }
    if (method == ReceiveMethod::RecvFrom)
        return std::make_unique<RecvFromSource>(socketFd, wakeFd, maxDatagram);
    return std::make_unique<RecvMmsgSource>(socketFd, wakeFd, maxDatagram);
}

ReceiveMethod DatagramSource::MethodNamed(const std::string& name) {
    if (name == "recvfrom")
        return ReceiveMethod::RecvFrom;
    if (name == "recvmmsg")
        return ReceiveMethod::RecvMmsg;
    return name == "gro" ? ReceiveMethod::Gro : ReceiveMethod::Best;
}

ReceiveMethod DatagramSource::MethodFromEnvironment() {
    const char* name = std::getenv("VX3_RECEIVE_METHOD");
    return MethodNamed(name == nullptr ? "" : name);
}

} // namespace VX3
