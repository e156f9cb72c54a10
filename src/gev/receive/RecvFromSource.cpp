#include "gev/receive/RecvFromSource.h"

#include <algorithm>
#include <cstring>
#include <sys/socket.h>

namespace VX3 {

RecvFromSource::RecvFromSource(int socketFd, std::size_t maxDatagram, SenderCheck& senders)
    : DatagramSource(socketFd, senders), buffer_(maxDatagram) {}

ssize_t RecvFromSource::Fetch(WireRoom room, int flags) {
    socklen_t size = sizeof(sender_);
    // MSG_TRUNC gives the datagram's own length: a cut one may not pass for a whole one.
    return ::recvfrom(socketFd_, room.data, room.size, flags | MSG_TRUNC,
                      reinterpret_cast<sockaddr*>(&sender_), &size);
}

DatagramSource::Batch RecvFromSource::Receive(WireRoom room, std::chrono::milliseconds wait) {
    if (room.data == nullptr)
        room = {buffer_.data(), buffer_.size()};
    Batch batch;
    ssize_t length = -1;
    if (untilProbe_ == 0)
        length = Fetch(room, MSG_DONTWAIT);
    if (length < 0) {
        // An empty socket is likely to be found empty again: for a while one call waits at once.
        if (untilProbe_ == 0) {
            batch.drained = true;
            untilProbe_ = ProbeEvery;
        }
        --untilProbe_;
        batch.waited = true;
        LimitWait(wait);
        length = Fetch(room, 0);
        batch.drained = batch.drained || length < 0;
    }
    if (length < 0)
        return batch;
    const auto size = static_cast<std::size_t>(length);
    const bool isOurs = senders_.Takes(sender_, 1);
    if (!isOurs) // it may lie in an image, which must not show it should the right datagram never come
        std::memset(room.data, 0, std::min(size, room.size));
    if (!isOurs || size > room.size) {
        batch.waited = true; // a flood of such must not stop the clock, which counts what is handed on
        return batch;
    }
    datagram_ = {room.data, size};
    batch.items = &datagram_;
    batch.count = 1;
    return batch;
}

} // namespace VX3
