#include "gev/receive/RecvMmsgSource.h"

namespace VX3 {

RecvMmsgSource::RecvMmsgSource(int socketFd, std::size_t maxDatagram, SenderCheck& senders)
    : DatagramSource(socketFd, senders) {
    const std::size_t stride = (maxDatagram + 127) / 64 * 64; // whole cache lines, and never a power of two
    buffer_.resize(BatchSize * stride);
    for (std::size_t i = 0; i < BatchSize; ++i) {
        vectors_[i] = {buffer_.data() + i * stride, maxDatagram};
        messages_[i].msg_hdr.msg_iov = &vectors_[i];
        messages_[i].msg_hdr.msg_iovlen = 1;
        messages_[i].msg_hdr.msg_name = &from_[i];
        messages_[i].msg_hdr.msg_namelen = sizeof(from_[i]); // and stays so: every IPv4 address is as long
    }
}

DatagramSource::Batch RecvMmsgSource::Receive(WireRoom, std::chrono::milliseconds wait) {
    Batch batch;
    LimitWait(wait);
    const int count = ::recvmmsg(socketFd_, messages_.data(), BatchSize, MSG_WAITFORONE, nullptr);
    batch.waited = true; // or not; a batch is worth a look at the clock
    for (int i = 0; i < count; ++i) {
        const auto index = static_cast<std::size_t>(i);
        const mmsghdr& message = messages_[index];
        if (senders_.Takes(from_[index], 1) && (message.msg_hdr.msg_flags & MSG_TRUNC) == 0)
            datagrams_[batch.count++] = {static_cast<const std::uint8_t*>(message.msg_hdr.msg_iov->iov_base),
                                         message.msg_len};
    }
    batch.drained = count < static_cast<int>(BatchSize);
    batch.items = datagrams_.data();
    return batch;
}

} // namespace VX3
