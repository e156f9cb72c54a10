#include "gev/receive/GroSource.h"

#include <algorithm>
#include <cstring>
#include <netinet/in.h>
#include <netinet/udp.h>

#ifndef UDP_GRO
#define UDP_GRO 104 // Linux 5.0; older C libraries do not know it
#endif

namespace VX3 {

namespace {

// The kernel joins at most this many datagrams; a train of smaller pieces than that allows is cut short.
constexpr std::size_t MaxPerTrain = 1024;

std::size_t SegmentSize(msghdr& header, std::size_t whole) {
    for (cmsghdr* control = CMSG_FIRSTHDR(&header); control != nullptr;
         control = CMSG_NXTHDR(&header, control)) {
        if (control->cmsg_level != IPPROTO_UDP || control->cmsg_type != UDP_GRO)
            continue;
        int size = 0;
        std::memcpy(&size, CMSG_DATA(control), sizeof(size));
        return size > 0 ? static_cast<std::size_t>(size) : whole;
    }
    return whole;
}

} // namespace

bool GroSource::Enable(int socketFd) {
    const int on = 1;
    return ::setsockopt(socketFd, IPPROTO_UDP, UDP_GRO, &on, sizeof(on)) == 0;
}

GroSource::GroSource(int socketFd, SenderCheck& senders)
    : DatagramSource(socketFd, senders), buffer_(Messages * TrainBytes), datagrams_(Messages * MaxPerTrain) {
    for (std::size_t i = 0; i < Messages; ++i) {
        vectors_[i] = {buffer_.data() + i * TrainBytes, TrainBytes};
        messages_[i].msg_hdr.msg_iov = &vectors_[i];
        messages_[i].msg_hdr.msg_iovlen = 1;
        messages_[i].msg_hdr.msg_control = controls_[i].bytes.data();
        messages_[i].msg_hdr.msg_name = &from_[i];
        messages_[i].msg_hdr.msg_namelen = sizeof(from_[i]); // and stays so: every IPv4 address is as long
    }
}

int GroSource::ReceiveTrains() {
    for (mmsghdr& message : messages_)
        message.msg_hdr.msg_controllen = sizeof(Control::bytes);
    return ::recvmmsg(socketFd_, messages_.data(), Messages, MSG_WAITFORONE, nullptr);
}

DatagramSource::Batch GroSource::Receive(WireRoom, std::chrono::milliseconds wait) {
    Batch batch;
    LimitWait(wait);
    const int count = ReceiveTrains();
    batch.waited = true; // or not; a batch is worth a look at the clock
    count_ = 0;
    for (int i = 0; i < count; ++i) {
        const auto index = static_cast<std::size_t>(i);
        Split(messages_[index], from_[index]);
    }
    batch.drained = count < static_cast<int>(Messages);
    batch.items = datagrams_.data();
    batch.count = count_;
    return batch;
}

void GroSource::Split(const mmsghdr& message, const sockaddr_in& sender) {
    msghdr header = message.msg_hdr;
    const auto* data = static_cast<const std::uint8_t*>(header.msg_iov->iov_base);
    const std::size_t length = message.msg_len;
    const std::size_t segment = std::max<std::size_t>(SegmentSize(header, length), 1);
    if (!senders_.Takes(sender, std::max<std::size_t>((length + segment - 1) / segment, 1)) ||
        (header.msg_flags & MSG_TRUNC) != 0)
        return;
    for (std::size_t at = 0, n = 0; at < length && n < MaxPerTrain; at += segment, ++n)
        datagrams_[count_++] = {data + at, std::min(segment, length - at)};
}

} // namespace VX3
