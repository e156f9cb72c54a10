#include "gev/net/CrossSocket.h"

#include "gev/net/NICEnumerator.h"
#include "vx3/core/Logger.h"
#include "vx3/core/Utilities.h"

#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <net/if.h>
#include <netinet/in.h>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <system_error>

namespace VX3 {

namespace {

constexpr int ReceiveBufferBytes = 0x100000;
constexpr std::uint32_t SliceMs = 100;
constexpr std::uint32_t DefaultTimeoutMs = 1000;

sockaddr_in AddressOf(std::uint32_t ip, std::uint32_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(ip);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    return address;
}

void SetOption(int fd, int option, int value) {
    (void)::setsockopt(fd, SOL_SOCKET, option, &value, sizeof(value));
}

} // namespace

CrossSocket::CrossSocket(std::uint32_t remoteIp, std::uint32_t /*remotePort*/, std::uint32_t localIp,
                         std::uint32_t localPort)
    : fd_(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, IPPROTO_UDP)),
      bound_(remoteIp != BroadcastIp),
      localIp_(localIp),
      localPort_(localPort) {
    if (!fd_)
        return;
    if (localIp != 0)
        BindToInterfaceOf(localIp);
    const std::uint32_t bindIp = bound_ ? localIp : 0;
    sockaddr_in address = AddressOf(bindIp, localPort);
    if (::bind(fd_.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
        VxLoggerLog(LogLevel::Error, "SDK", "cannot bind a UDP socket to %s:%u: %s", Ipv4Text(bindIp).c_str(),
                    localPort, std::system_category().message(errno).c_str());
        fd_.Reset();
        return;
    }
    socklen_t length = sizeof(address);
    if (::getsockname(fd_.Get(), reinterpret_cast<sockaddr*>(&address), &length) == 0)
        localPort_ = ntohs(address.sin_port);
    SetOption(fd_.Get(), SO_RCVBUF, ReceiveBufferBytes);
    SetOption(fd_.Get(), SO_BROADCAST, 1);
}

void CrossSocket::BindToInterfaceOf(std::uint32_t ip) {
    const std::string name = NICEnumerator::GetNicNameByIp(ip);
    if (name.empty())
        return;
    const auto length = static_cast<socklen_t>(name.size() + 1);
    if (::setsockopt(fd_.Get(), SOL_SOCKET, SO_BINDTODEVICE, name.c_str(), length) == 0)
        return;
    // Older kernels keep that option for the privileged. Broadcasts must still leave by this interface,
    // which everyone may ask for.
    const std::uint32_t index = htonl(::if_nametoindex(name.c_str()));
    (void)::setsockopt(fd_.Get(), IPPROTO_IP, IP_UNICAST_IF, &index, sizeof(index));
}

long CrossSocket::SendPlain(const void* bytes, std::size_t length, std::uint32_t ip,
                            std::uint32_t port) const {
    const sockaddr_in address = AddressOf(ip, port);
    return ::sendto(fd_.Get(), bytes, length, MSG_NOSIGNAL, reinterpret_cast<const sockaddr*>(&address),
                    sizeof(address));
}

// Else broadcasts would carry the interface's first address, which cameras of another subnet cannot answer.
long CrossSocket::SendFromLocalIp(const void* bytes, std::size_t length, std::uint32_t ip,
                                  std::uint32_t port) const {
    sockaddr_in address = AddressOf(ip, port);
    in_pktinfo source{};
    source.ipi_spec_dst.s_addr = htonl(localIp_);
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(source))> control{};
    iovec data{const_cast<void*>(bytes), length};
    msghdr message{};
    message.msg_name = &address;
    message.msg_namelen = sizeof(address);
    message.msg_iov = &data;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    cmsghdr* header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = IPPROTO_IP;
    header->cmsg_type = IP_PKTINFO;
    header->cmsg_len = CMSG_LEN(sizeof(source));
    std::memcpy(CMSG_DATA(header), &source, sizeof(source));
    return ::sendmsg(fd_.Get(), &message, MSG_NOSIGNAL);
}

StatusCode CrossSocket::SendTo(const void* bytes, std::size_t length, std::uint32_t ip, std::uint32_t port) {
    const auto sent = bound_ || localIp_ == 0 ? SendPlain(bytes, length, ip, port)
                                              : SendFromLocalIp(bytes, length, ip, port);
    if (sent < 0)
        VxLoggerLog(LogLevel::Debug, "SDK", "cannot send to %s:%u: %s", Ipv4Text(ip).c_str(), port,
                    std::system_category().message(errno).c_str());
    return static_cast<StatusCode>(sent);
}

StatusCode CrossSocket::RecvFrom(void* buffer, std::size_t size, std::uint32_t timeoutMs, std::uint32_t& ip,
                                 std::uint32_t& port) {
    if (!fd_)
        return Status::PortNotOpen;
    const std::uint64_t total = timeoutMs == 0 ? DefaultTimeoutMs : timeoutMs;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(total);
    for (std::uint64_t charged = 0; charged < total;) {
        pollfd poller{fd_.Get(), POLLIN, 0};
        if (::poll(&poller, 1, static_cast<int>(SliceMs)) == 0) {
            charged += SliceMs;
            continue;
        }
        sockaddr_in sender{};
        socklen_t senderLength = sizeof(sender);
        // MSG_TRUNC: the datagram's own length comes back even when it did not fit.
        const auto received = ::recvfrom(fd_.Get(), buffer, size, MSG_TRUNC | MSG_DONTWAIT,
                                         reinterpret_cast<sockaddr*>(&sender), &senderLength);
        if (received >= 1) {
            ip = ntohl(sender.sin_addr.s_addr);
            port = ntohs(sender.sin_port);
            return static_cast<StatusCode>(received);
        }
        // An empty datagram or an ICMP error somebody sent us: neither ends the wait, nor may a stream of
        // them prolong it.
        if (std::chrono::steady_clock::now() >= deadline)
            break;
    }
    return Status::TimeOut;
}

} // namespace VX3
