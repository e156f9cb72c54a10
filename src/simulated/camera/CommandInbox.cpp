#include "simulated/camera/CommandInbox.h"

#include <arpa/inet.h>
#include <cstring>
#include <netinet/in.h>
#include <sys/socket.h>

namespace VX3 {
namespace Simulated {

namespace {

std::uint32_t DestinationOf(msghdr& message) {
    for (cmsghdr* header = CMSG_FIRSTHDR(&message); header != nullptr;
         header = CMSG_NXTHDR(&message, header)) {
        if (header->cmsg_level != IPPROTO_IP || header->cmsg_type != IP_PKTINFO)
            continue;
        in_pktinfo info{};
        std::memcpy(&info, CMSG_DATA(header), sizeof(info));
        return ntohl(info.ipi_spec_dst.s_addr); // of the interface, where it was a broadcast
    }
    return 0;
}

} // namespace

std::size_t CommandInbox::Fill(const CameraSocket& socket) {
    constexpr std::size_t ControlSize = CMSG_SPACE(sizeof(in_pktinfo));
    struct alignas(cmsghdr) Control {
        char bytes[ControlSize];
    };
    std::array<mmsghdr, MostDatagrams> messages{};
    std::array<iovec, MostDatagrams> vectors{};
    std::array<sockaddr_in, MostDatagrams> senders{};
    std::array<Control, MostDatagrams> controls{};
    for (std::size_t i = 0; i < MostDatagrams; ++i) {
        vectors[i] = {room_.data() + i * LargestCommand, LargestCommand};
        msghdr& header = messages[i].msg_hdr;
        header.msg_name = &senders[i];
        header.msg_namelen = sizeof(senders[i]);
        header.msg_iov = &vectors[i];
        header.msg_iovlen = 1;
        header.msg_control = controls[i].bytes;
        header.msg_controllen = ControlSize;
    }
    const int count = ::recvmmsg(socket.Descriptor(), messages.data(), MostDatagrams, MSG_DONTWAIT, nullptr);
    for (int i = 0; i < count; ++i) {
        const auto at = static_cast<std::size_t>(i);
        arrived_[at].bytes = {static_cast<const std::uint8_t*>(vectors[at].iov_base), messages[at].msg_len};
        arrived_[at].from = {ntohl(senders[at].sin_addr.s_addr), ntohs(senders[at].sin_port)};
        arrived_[at].to = DestinationOf(messages[at].msg_hdr);
    }
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

} // namespace Simulated
} // namespace VX3
