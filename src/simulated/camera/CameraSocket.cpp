#include "simulated/camera/CameraSocket.h"

#include <arpa/inet.h>
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
    return true;
}

bool CameraSocket::Connect(const NET_ENDPOINT& to) const {
    const sockaddr_in address = SocketAddress(to);
    return ::connect(fd_.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
}

void CameraSocket::Send(WireBytes bytes, const NET_ENDPOINT& to) const {
    const sockaddr_in address = SocketAddress(to);
    (void)::sendto(fd_.Get(), bytes.data, bytes.size, 0, reinterpret_cast<const sockaddr*>(&address),
                   sizeof(address));
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
