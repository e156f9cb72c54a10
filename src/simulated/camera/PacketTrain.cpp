#include "simulated/camera/PacketTrain.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <netinet/udp.h>
#include <sys/socket.h>

#ifndef UDP_SEGMENT
#define UDP_SEGMENT 103
#endif

namespace VX3 {
namespace Simulated {

namespace {

constexpr std::size_t MostBytes = 65000;
constexpr int MostAttempts = 1000; // a full queue empties within milliseconds

// Worth trying again: queues that are full for a moment, and what an earlier packet caused.
bool IsPassing(int error) {
    return error == ENOBUFS || error == EAGAIN || error == ECONNREFUSED || error == EINTR;
}

} // namespace

PacketTrain::PacketTrain(int socket, bool segmentation, Pacer* pacer)
    : socket_(socket),
      segmentation_(segmentation),
      pacer_(pacer),
      largestTrain_(pacer != nullptr ? pacer->LargestTrain() : MostBytes),
      packetLimit_(pacer != nullptr ? std::min(pacer->MostPackets(), MostPackets) : MostPackets) {}

void PacketTrain::Flush() {
    if (packetCount_ == 0)
        return;
    if (pacer_ != nullptr)
        pacer_->Await(bytes_, packetCount_);
    if (packetCount_ == 1 || !segmentation_ || !SendSegmented())
        SendSingly();
    vectorCount_ = packetCount_ = bytes_ = 0;
}

bool PacketTrain::SendSegmented() {
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(std::uint16_t))> control{};
    msghdr message{};
    message.msg_iov = vectors_.data();
    message.msg_iovlen = vectorCount_;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    cmsghdr* header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = IPPROTO_UDP;
    header->cmsg_type = UDP_SEGMENT;
    header->cmsg_len = CMSG_LEN(sizeof(std::uint16_t));
    const auto segment = static_cast<std::uint16_t>(sizes_[0]);
    std::memcpy(CMSG_DATA(header), &segment, sizeof(segment));
    for (int attempt = 0; attempt < MostAttempts; ++attempt) {
        if (::sendmsg(socket_, &message, 0) >= 0)
            return true;
        if (!IsPassing(errno)) {
            segmentation_ = false; // this kernel or interface has none, or the packets exceed the MTU
            return false;
        }
    }
    return true;
}

// The packets' own pieces of what was gathered.
void PacketTrain::Cut(Pieces& pieces) const {
    std::size_t next = 0;
    std::size_t vector = 0;
    std::size_t used = 0; // of that vector
    for (std::size_t i = 0; i < packetCount_; ++i) {
        pieces.first[i] = next;
        for (std::size_t left = sizes_[i]; left != 0;) {
            const iovec& from = vectors_[vector];
            const std::size_t here = std::min(left, from.iov_len - used);
            pieces.vectors[next++] = {static_cast<std::uint8_t*>(from.iov_base) + used, here};
            left -= here;
            used += here;
            if (used == from.iov_len) {
                ++vector;
                used = 0;
            }
        }
    }
    pieces.first[packetCount_] = next;
}

void PacketTrain::SendSingly() {
    Pieces pieces;
    Cut(pieces);
    std::array<mmsghdr, MostPackets> messages{};
    for (std::size_t i = 0; i < packetCount_; ++i) {
        messages[i].msg_hdr.msg_iov = &pieces.vectors[pieces.first[i]];
        messages[i].msg_hdr.msg_iovlen = pieces.first[i + 1] - pieces.first[i];
    }
    int attempts = 0;
    for (std::size_t sent = 0; sent < packetCount_;) {
        const int n = ::sendmmsg(socket_, &messages[sent], static_cast<unsigned>(packetCount_ - sent), 0);
        if (n <= 0 && IsPassing(errno) && ++attempts < MostAttempts)
            continue;
        sent += n > 0 ? static_cast<std::size_t>(n) : 1;
        attempts = 0;
    }
}

} // namespace Simulated
} // namespace VX3
