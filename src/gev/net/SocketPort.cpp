#include "gev/net/SocketPort.h"

#include "vx3/core/Utilities.h"

#include <chrono>
#include <string>

namespace VX3 {

namespace {
std::string EndPointText(std::uint32_t ip, std::uint32_t port) {
    return Ipv4Text(ip) + ":" + std::to_string(port);
}
} // namespace

SocketPort::SocketPort(std::uint32_t remoteIp, std::uint32_t remotePort, std::uint32_t localIp,
                       std::uint32_t localPort)
    : CommPortAbs(EndPointText(remoteIp, remotePort).c_str()),
      remoteIp_(remoteIp),
      remotePort_(remotePort),
      localIp_(localIp),
      localPort_(localPort) {
    (void)Open(nullptr);
}

StatusCode SocketPort::Open(const char* /*name*/) {
    if (!socket_)
        socket_ = std::make_unique<CrossSocket>(remoteIp_, remotePort_, localIp_, localPort_);
    return Status::Ok;
}

StatusCode SocketPort::Close() {
    socket_.reset();
    return Status::Ok;
}

StatusCode SocketPort::SendData(const void* bytes, std::size_t length) {
    if (remoteIp_ != 0)
        return SendTo(bytes, length, remoteIp_, remotePort_);
    return SendTo(bytes, length, lastPeerIp_, lastPeerPort_);
}

StatusCode SocketPort::SendTo(const void* bytes, std::size_t length, std::uint32_t ip, std::uint32_t port) {
    return socket_ ? socket_->SendTo(bytes, length, ip, port) : Status::PortNotOpen;
}

NET_ENDPOINT SocketPort::GetLocalEndPoint() const {
    return socket_ ? socket_->GetLocalEndPoint() : NET_ENDPOINT{};
}

bool SocketPort::Accepts(std::uint32_t ip, std::uint32_t port) {
    if (remotePort_ != 0 && remotePort_ != port)
        return false;
    if (remoteIp_ != 0 && remoteIp_ != BroadcastIp)
        return ip == remoteIp_;
    lastPeerIp_ = ip;
    lastPeerPort_ = port;
    return true;
}

StatusCode SocketPort::RecvData(void* buffer, std::size_t size, std::uint32_t timeoutMs) {
    if (!socket_)
        return Status::PortNotOpen;
    const auto start = std::chrono::steady_clock::now();
    std::uint32_t remaining = timeoutMs;
    for (;;) {
        std::uint32_t ip = 0;
        std::uint32_t port = 0;
        const StatusCode received = socket_->RecvFrom(buffer, size, remaining, ip, port);
        if (Failed(received) || Accepts(ip, port))
            return received;
        if (timeoutMs == 0)
            continue;
        const auto elapsed =
            std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start)
                .count();
        if (elapsed >= timeoutMs)
            return Status::TimeOut;
        remaining = timeoutMs - static_cast<std::uint32_t>(elapsed);
    }
}

} // namespace VX3
