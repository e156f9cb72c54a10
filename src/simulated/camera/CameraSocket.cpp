#include "simulated/camera/CameraSocket.h"

#include <arpa/inet.h>
#include <array>
#include <cstring>
#include <netinet/in.h>
#include <sys/socket.h>

namespace VX3 {
namespace Simulated {

namespace {

sockaddr_in SocketAddress(const NET_ENDPOINT& endPoint) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(endPoint.ip);
    address.sin_port = htons(static_cast<std::uint16_t>(endPoint.port));
    return address;
}

} // namespace

bool CameraSocket::Bind(std::uint32_t ip, std::uint16_t port) {
    fd_.Reset(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    sockaddr_in address = SocketAddress({ip, port});
    socklen_t length = sizeof(address);
    if (!fd_ || ::bind(fd_.Get(), reinterpret_cast<const sockaddr*>(&address), length) != 0 ||
        ::getsockname(fd_.Get(), reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        fd_.Reset();
        return false;
    }
    port_ = ntohs(address.sin_port);
    const int yes = 1;
    const int room = 8 << 20; // whole frames may wait in the kernel; it grants what it likes
    (void)::setsockopt(fd_.Get(), SOL_SOCKET, SO_BROADCAST, &yes, sizeof(yes));
    (void)::setsockopt(fd_.Get(), SOL_SOCKET, SO_SNDBUF, &room, sizeof(room));
    (void)::setsockopt(fd_.Get(), SOL_SOCKET, SO_RCVBUF, &room, sizeof(room)); // and a flood of commands
    // Answers leave from the address that was asked, whichever way the system would prefer.
    (void)::setsockopt(fd_.Get(), IPPROTO_IP, IP_PKTINFO, &yes, sizeof(yes));
    return true;
}

bool CameraSocket::Connect(const NET_ENDPOINT& to) const {
    constexpr std::uint32_t FirstMulticast = 0xE0000000;
    const sockaddr_in address = SocketAddress(to);
    sockaddr_in own{};
    socklen_t length = sizeof(own);
    if (to.ip >= FirstMulticast && to.ip != BroadcastIp &&
        ::getsockname(fd_.Get(), reinterpret_cast<sockaddr*>(&own), &length) == 0)
        (void)::setsockopt(fd_.Get(), IPPROTO_IP, IP_MULTICAST_IF, &own.sin_addr, sizeof(own.sin_addr));
    return ::connect(fd_.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
}

void CameraSocket::ForbidFragments(bool forbid) const {
    const int how = forbid ? IP_PMTUDISC_DO : IP_PMTUDISC_WANT;
    (void)::setsockopt(fd_.Get(), IPPROTO_IP, IP_MTU_DISCOVER, &how, sizeof(how));
}

void CameraSocket::Send(WireBytes bytes, const NET_ENDPOINT& to, std::uint32_t from) const {
    sockaddr_in address = SocketAddress(to);
    iovec vector{const_cast<std::uint8_t*>(bytes.data), bytes.size};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(in_pktinfo))> control{};
    msghdr message{};
    message.msg_name = &address;
    message.msg_namelen = sizeof(address);
    message.msg_iov = &vector;
    message.msg_iovlen = 1;
    if (from != 0) {
        message.msg_control = control.data();
        message.msg_controllen = control.size();
        cmsghdr* const header = CMSG_FIRSTHDR(&message);
        header->cmsg_level = IPPROTO_IP;
        header->cmsg_type = IP_PKTINFO;
        header->cmsg_len = CMSG_LEN(sizeof(in_pktinfo));
        in_pktinfo info{};
        info.ipi_spec_dst.s_addr = htonl(from);
        std::memcpy(CMSG_DATA(header), &info, sizeof(info));
    }
    (void)::sendmsg(fd_.Get(), &message, 0);
}

std::size_t CameraSocket::Receive(WireRoom room, NET_ENDPOINT& from) const {
    sockaddr_in sender{};
    socklen_t length = sizeof(sender);
    const auto received = ::recvfrom(fd_.Get(), room.data, room.size, MSG_DONTWAIT,
                                     reinterpret_cast<sockaddr*>(&sender), &length);
    if (received <= 0)
        return 0;
    from = {ntohl(sender.sin_addr.s_addr), ntohs(sender.sin_port)};
    return static_cast<std::size_t>(received);
}

} // namespace Simulated
} // namespace VX3
