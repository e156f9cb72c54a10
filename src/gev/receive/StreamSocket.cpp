#include "gev/receive/StreamSocket.h"

#include "vx3/core/Logger.h"
#include "vx3/core/Utilities.h"

#include <arpa/inet.h>
#include <cerrno>
#include <netinet/in.h>
#include <sys/socket.h>
#include <system_error>

namespace VX3 {

namespace {

// What a received datagram takes in the kernel besides its bytes: buffer head and rounding.
constexpr std::uint64_t DatagramOverhead = 832;

sockaddr_in AddressOf(std::uint32_t ip, std::uint32_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(ip);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    return address;
}

// The forcing option ignores the system's limit but needs privilege.
std::size_t SizeReceiveBuffer(int fd, std::size_t bytes) {
    // The kernel doubles what it is asked for.
    const int wanted = bytes == 0 ? StreamSocket::ReceiveBufferBytes : static_cast<int>(bytes / 2);
    if (::setsockopt(fd, SOL_SOCKET, SO_RCVBUFFORCE, &wanted, sizeof(wanted)) != 0)
        (void)::setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &wanted, sizeof(wanted));
    int granted = 0;
    socklen_t length = sizeof(granted);
    if (::getsockopt(fd, SOL_SOCKET, SO_RCVBUF, &granted, &length) != 0 || granted < 0)
        return 0;
    return static_cast<std::size_t>(granted);
}

} // namespace

StatusCode StreamSocket::Open(std::uint32_t hostIp, std::size_t bufferBytes) {
    UniqueFd fd(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, IPPROTO_UDP));
    sockaddr_in address = AddressOf(hostIp, 0);
    socklen_t length = sizeof(address);
    if (!fd || ::bind(fd.Get(), reinterpret_cast<const sockaddr*>(&address), length) != 0 ||
        ::getsockname(fd.Get(), reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        VxLoggerLog(LogLevel::Error, "SDK", "cannot bind a stream socket to %s: %s", Ipv4Text(hostIp).c_str(),
                    std::system_category().message(errno).c_str());
        return Status::Generic;
    }
    port_ = ntohs(address.sin_port);
    granted_ = SizeReceiveBuffer(fd.Get(), bufferBytes);
    const int on = 1;
    (void)::setsockopt(fd.Get(), SOL_SOCKET, SO_BROADCAST, &on, sizeof(on));
    fd_ = std::move(fd);
    return Status::Ok;
}

std::size_t StreamSocket::DatagramsHeld(std::uint32_t packetSize) const {
    return granted_ / (packetSize + DatagramOverhead);
}

void StreamSocket::WarnIfTooSmall(const GevStreamParam& param) const {
    if (param.bufferSize == 0 || param.packetSize <= 64)
        return;
    const std::uint64_t packets = param.bufferSize / (param.packetSize - 48U) + 3;
    const std::uint64_t frame = packets * (param.packetSize + DatagramOverhead);
    if (granted_ >= frame)
        return;
    // The kernel grants twice what is asked for, so the limit need be half a frame; recommend two frames.
    VxLoggerLog(
        LogLevel::Warning, "SDK",
        "the stream socket's receive buffer is %llu bytes, one frame needs %llu: packets will be lost in "
        "bursts. Remedy: sysctl -w net.core.rmem_max=%llu",
        static_cast<unsigned long long>(granted_), static_cast<unsigned long long>(frame),
        static_cast<unsigned long long>(frame));
}

void StreamSocket::SendOpening(std::uint32_t ip, std::uint32_t port) const {
    static constexpr char Text[] = "12345678901234567890"; // with its zero byte
    const sockaddr_in address = AddressOf(ip, port);
    (void)::sendto(fd_.Get(), Text, sizeof(Text), MSG_NOSIGNAL | MSG_DONTWAIT,
                   reinterpret_cast<const sockaddr*>(&address), sizeof(address));
}

} // namespace VX3
