#include "gev/receive/RecvFromSource.h"

#include <sys/socket.h>

namespace VX3 {

RecvFromSource::RecvFromSource(int socketFd, std::size_t maxDatagram)
    : DatagramSource(socketFd), buffer_(maxDatagram) {}

DatagramSource::Batch RecvFromSource::Receive(WireRoom room, std::chrono::milliseconds wait) {
    if (room.data == nullptr)
        room = {buffer_.data(), buffer_.size()};
    Batch batch;
    // MSG_TRUNC gives the datagram's own length: a cut one may not pass for a whole one.
    ssize_t length = -1;
    if (untilProbe_ == 0)
        length = ::recvfrom(socketFd_, room.data, room.size, MSG_DONTWAIT | MSG_TRUNC, nullptr, nullptr);
    if (length < 0) {
        // An empty socket is likely to be found empty again: for a while one call waits at once.
        if (untilProbe_ == 0) {
            batch.drained = true;
            untilProbe_ = ProbeEvery;
        }
        --untilProbe_;
        batch.waited = true;
        LimitWait(wait);
        length = ::recvfrom(socketFd_, room.data, room.size, MSG_TRUNC, nullptr, nullptr);
        batch.drained = batch.drained || length < 0;
    }
    if (length < 0 || static_cast<std::size_t>(length) > room.size)
        return batch;
    datagram_ = {room.data, static_cast<std::size_t>(length)};
    batch.items = &datagram_;
    batch.count = 1;
    return batch;
}

} // namespace VX3
