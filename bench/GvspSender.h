// A cheap GVSP sender for benchmarks: frames laid out once, sent as trains (UDP_SEGMENT), paced. Runs in the
// camera's process and obeys commands from a pipe; answers register reads with zeros, so that receivers start
// at once.
#pragma once

#include "gev/protocol/Gvcp.h"
#include "gev/protocol/Gvsp.h"

#include <algorithm>
#include <arpa/inet.h>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

#ifndef UDP_SEGMENT
#define UDP_SEGMENT 103
#endif

namespace VX3 {
namespace Bench {

struct SendOrder {
    std::uint32_t destinationIp = 0; // host order
    std::uint32_t port = 0;
    std::uint32_t packetSize = 1500;
    std::uint32_t width = 1920;
    std::uint32_t height = 1200;
    std::uint32_t frames = 0; // 0: end
    double gigabits = 0;      // a second; 0: flat out
};

struct SendReport {
    std::uint64_t packets = 0;
    std::uint64_t bytes = 0; // payload
    double seconds = 0;
};

class GvspSender {
public:
    explicit GvspSender(const SendOrder& order) : order_(order), fd_(::socket(AF_INET, SOCK_DGRAM, 0)) {
        const std::size_t perPacket = Gvsp::DataPerPacket(order.packetSize, false);
        const std::size_t frame = std::size_t{order.width} * order.height;
        const std::vector<std::uint8_t> data(perPacket, 0x3C);
        datagram_ = perPacket + Gvsp::StandardHeaderSize;
        payloads_ = static_cast<std::uint32_t>((frame + perPacket - 1) / perPacket);
        bytes_.resize(payloads_ * datagram_);
        for (std::uint32_t i = 0; i < payloads_; ++i) {
            Gvsp::Header header;
            header.packetId = i + 1;
            const std::size_t size = std::min(perPacket, frame - i * perPacket);
            last_ =
                Gvsp::EncodePayload({bytes_.data() + i * datagram_, datagram_}, header, {data.data(), size});
        }
        to_.sin_family = AF_INET;
        to_.sin_addr.s_addr = htonl(order.destinationIp);
        to_.sin_port = htons(static_cast<std::uint16_t>(order.port));
        (void)::connect(fd_, reinterpret_cast<const sockaddr*>(&to_), sizeof(to_));
        const int room = 8 << 20;
        (void)::setsockopt(fd_, SOL_SOCKET, SO_SNDBUF, &room, sizeof(room));
    }
    ~GvspSender() { ::close(fd_); }
    GvspSender(const GvspSender&) = delete;
    GvspSender& operator=(const GvspSender&) = delete;

    SendReport Send() {
        const auto start = Clock::now();
        due_ = start;
        for (std::uint32_t n = 0; n < order_.frames; ++n)
            SendFrame(static_cast<std::uint16_t>(n % 65535 + 1));
        report_.seconds = std::chrono::duration<double>(Clock::now() - start).count();
        return report_;
    }

private:
    using Clock = std::chrono::steady_clock;

    void SendFrame(std::uint16_t blockId) {
        for (std::uint32_t i = 0; i < payloads_; ++i)
            Wire::Store<std::uint16_t>(bytes_.data() + i * datagram_ + 2, blockId);
        Gvsp::Header header;
        header.blockId = blockId;
        Gvsp::Leader leader;
        leader.pixelFormat = 0x01080001;
        leader.sizeX = order_.width;
        leader.sizeY = order_.height;
        std::uint8_t small[64];
        Train(small, Gvsp::EncodeLeader({small, sizeof(small)}, header, leader), 0);
        const std::uint32_t perTrain =
            static_cast<std::uint32_t>(std::min<std::size_t>(60, 65000 / datagram_));
        for (std::uint32_t i = 0; i < payloads_; i += perTrain) {
            const std::uint32_t count = std::min(perTrain, payloads_ - i);
            const std::size_t size = (count - 1) * datagram_ + (i + count == payloads_ ? last_ : datagram_);
            Train(bytes_.data() + i * datagram_, size, count > 1 ? datagram_ : 0);
        }
        header.packetId = payloads_ + 1;
        Gvsp::Trailer trailer;
        trailer.sizeY = order_.height;
        Train(small, Gvsp::EncodeTrailer({small, sizeof(small)}, header, trailer), 0);
        report_.packets += payloads_ + 2;
        report_.bytes += std::uint64_t{order_.width} * order_.height;
    }

    void Train(const std::uint8_t* data, std::size_t size, std::size_t segment) {
        Pace(size);
        iovec vector{const_cast<std::uint8_t*>(data), size};
        msghdr message{};
        message.msg_iov = &vector;
        message.msg_iovlen = 1;
        alignas(cmsghdr) unsigned char control[CMSG_SPACE(sizeof(std::uint16_t))] = {};
        if (segment != 0) {
            message.msg_control = control;
            message.msg_controllen = sizeof(control);
            cmsghdr* header = CMSG_FIRSTHDR(&message);
            header->cmsg_level = IPPROTO_UDP;
            header->cmsg_type = UDP_SEGMENT;
            header->cmsg_len = CMSG_LEN(sizeof(std::uint16_t));
            const auto value = static_cast<std::uint16_t>(segment);
            std::memcpy(CMSG_DATA(header), &value, sizeof(value));
        }
        while (::sendmsg(fd_, &message, 0) < 0 &&
               (errno == ENOBUFS || errno == EAGAIN || errno == ECONNREFUSED)) {
        }
    }

    void Pace(std::size_t size) {
        if (order_.gigabits <= 0)
            return;
        while (Clock::now() < due_) {
        }
        due_ += std::chrono::nanoseconds(
            static_cast<std::int64_t>(static_cast<double>(size) * 8 / order_.gigabits));
        due_ = std::max(due_, Clock::now() - std::chrono::milliseconds(1)); // late is late
    }

    SendOrder order_;
    int fd_;
    sockaddr_in to_{};
    std::vector<std::uint8_t> bytes_;
    std::size_t datagram_ = 0;
    std::size_t last_ = 0;
    std::uint32_t payloads_ = 0;
    Clock::time_point due_;
    SendReport report_;
};

// The camera's process: obeys until an order of 0 frames or a closed pipe.
inline void ServeCamera(int orders, int reports) {
    const int gvcp = ::socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in any{};
    any.sin_family = AF_INET;
    any.sin_port = htons(Gvcp::Port);
    (void)::bind(gvcp, reinterpret_cast<const sockaddr*>(&any), sizeof(any));
    for (;;) {
        pollfd waits[2] = {{orders, POLLIN, 0}, {gvcp, POLLIN, 0}};
        if (::poll(waits, 2, -1) < 0)
            return;
        if (waits[1].revents != 0) {
            std::uint8_t command[600];
            sockaddr_in from{};
            socklen_t length = sizeof(from);
            if (::recvfrom(gvcp, command, sizeof(command), 0, reinterpret_cast<sockaddr*>(&from), &length) >=
                8) {
                const std::uint8_t ack[12] = {0, 0, 0, 0x81, 0, 4, command[6], command[7], 0, 0, 0, 0};
                (void)::sendto(gvcp, ack, sizeof(ack), 0, reinterpret_cast<const sockaddr*>(&from), length);
            }
        }
        if (waits[0].revents == 0)
            continue;
        SendOrder order;
        if (::read(orders, &order, sizeof(order)) != sizeof(order) || order.frames == 0)
            return;
        const SendReport report = GvspSender(order).Send();
        if (::write(reports, &report, sizeof(report)) != sizeof(report))
            return;
    }
}

} // namespace Bench
} // namespace VX3
