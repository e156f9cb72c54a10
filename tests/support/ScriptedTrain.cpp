#include "support/ScriptedTrain.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cstring>
#include <netinet/in.h>
#include <netinet/udp.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <thread>

#ifndef UDP_SEGMENT
#define UDP_SEGMENT 103
#endif

namespace VX3 {
namespace Test {

namespace {

constexpr std::size_t mostPackets = 64;
constexpr std::size_t mostBytes = 65000;

sockaddr_in AddressOf(const NET_ENDPOINT& endPoint) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(endPoint.ip);
    address.sin_port = htons(static_cast<std::uint16_t>(endPoint.port));
    return address;
}

void Gather(OutPacket& packet, iovec* vectors) {
    vectors[0] = {packet.head.data(), packet.headSize};
    vectors[1] = {const_cast<std::uint8_t*>(packet.data.data), packet.data.size};
}

} // namespace

ScriptedTrain::ScriptedTrain(int socket, const NET_ENDPOINT& destination, bool segmentation,
                             double bytesPerSecond)
    : socket_(socket),
      destination_(destination),
      segmentation_(segmentation),
      bytesPerSecond_(bytesPerSecond),
      due_(std::chrono::steady_clock::now()) {
    packets_.reserve(mostPackets);
}

void ScriptedTrain::Add(const OutPacket& packet) {
    packets_.push_back(packet);
    if (packets_.size() == mostPackets)
        Flush();
}

void ScriptedTrain::Flush() {
    for (std::size_t first = 0; first < packets_.size();) {
        const std::size_t count = RunLength(first);
        if (count == 1 || !segmentation_ || !SendSegmented(first, count))
            SendSingly(first, count);
        std::size_t bytes = 0;
        for (std::size_t i = first; i < first + count; ++i)
            bytes += packets_[i].Size();
        Pace(bytes);
        first += count;
    }
    packets_.clear();
}

// Packets of one size, the last of which may be shorter: what one segmented send can carry.
std::size_t ScriptedTrain::RunLength(std::size_t first) const {
    const std::size_t size = packets_[first].Size();
    std::size_t bytes = size;
    std::size_t end = first + 1;
    while (end < packets_.size() && bytes + packets_[end].Size() <= mostBytes &&
           packets_[end].Size() <= size) {
        bytes += packets_[end].Size();
        if (packets_[end++].Size() < size)
            break;
    }
    return end - first;
}

bool ScriptedTrain::SendSegmented(std::size_t first, std::size_t count) {
    std::array<iovec, 2 * mostPackets> vectors;
    for (std::size_t i = 0; i < count; ++i)
        Gather(packets_[first + i], &vectors[2 * i]);
    sockaddr_in address = AddressOf(destination_);
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(std::uint16_t))> control{};
    msghdr message{};
    message.msg_name = &address;
    message.msg_namelen = sizeof(address);
    message.msg_iov = vectors.data();
    message.msg_iovlen = 2 * count;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    cmsghdr* header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_UDP;
    header->cmsg_type = UDP_SEGMENT;
    header->cmsg_len = CMSG_LEN(sizeof(std::uint16_t));
    const auto segment = static_cast<std::uint16_t>(packets_[first].Size());
    std::memcpy(CMSG_DATA(header), &segment, sizeof(segment));
    if (::sendmsg(socket_, &message, 0) >= 0)
        return true;
    segmentation_ = false; // this kernel or interface does not know it, or the packets exceed the MTU
    return false;
}

void ScriptedTrain::SendSingly(std::size_t first, std::size_t count) {
    std::array<iovec, 2 * mostPackets> vectors;
    std::array<mmsghdr, mostPackets> messages{};
    sockaddr_in address = AddressOf(destination_);
    for (std::size_t i = 0; i < count; ++i) {
        Gather(packets_[first + i], &vectors[2 * i]);
        msghdr& message = messages[i].msg_hdr;
        message.msg_name = &address;
        message.msg_namelen = sizeof(address);
        message.msg_iov = &vectors[2 * i];
        message.msg_iovlen = 2;
    }
    for (std::size_t sent = 0; sent < count;) {
        const int n = ::sendmmsg(socket_, &messages[sent], static_cast<unsigned>(count - sent), 0);
        sent += n > 0 ? static_cast<std::size_t>(n) : 1; // a refused packet is a lost one
    }
}

void ScriptedTrain::Pace(std::size_t bytes) {
    if (bytesPerSecond_ <= 0)
        return;
    using Clock = std::chrono::steady_clock;
    const auto now = Clock::now();
    // Time lost is not made good in a burst beyond a few milliseconds.
    due_ = std::max(due_, now - std::chrono::milliseconds(2));
    due_ += std::chrono::duration_cast<Clock::duration>(
        std::chrono::duration<double>(static_cast<double>(bytes) / bytesPerSecond_));
    if (due_ - now > std::chrono::microseconds(80))
        std::this_thread::sleep_until(due_);
}

} // namespace Test
} // namespace VX3
