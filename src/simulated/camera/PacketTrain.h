// Sends packets cheaply: gathers those that may leave together and hands the kernel whole trains
// (UDP_SEGMENT; one sendmmsg where that is not to be had). Used by one thread.
#pragma once

#include "simulated/camera/Pacer.h"
#include "wire/WireCursor.h"

#include <array>
#include <cstddef>
#include <sys/uio.h>

namespace VX3 {
namespace Simulated {

class PacketTrain {
public:
    // `socket`, which is connected, and `pacer` outlive the train. A null pacer: flat out.
    PacketTrain(int socket, bool segmentation, Pacer* pacer);

    // Both must stay where they are until the next Flush.
    void Add(WireBytes head, WireBytes data) {
        const std::size_t size = head.size + data.size;
        if (packetCount_ != 0 && !Joins(size))
            Flush();
        if (head.data + head.size == data.data) {
            Append({head.data, size});
        } else {
            Append(head);
            Append(data);
        }
        sizes_[packetCount_++] = size;
        bytes_ += size;
        if (packetCount_ == packetLimit_)
            Flush();
    }
    // Sends what was gathered. A packet that the system refuses for long is a lost one.
    void Flush();

private:
    static constexpr std::size_t MostPackets = 64;

    struct Pieces {
        std::array<iovec, 3 * MostPackets> vectors;
        std::array<std::size_t, MostPackets + 1> first; // of each packet
    };

    // Segments are of one size, but for a shorter last one.
    bool Joins(std::size_t size) const {
        return bytes_ + size <= largestTrain_ &&
               (!segmentation_ || (size <= sizes_[0] && sizes_[packetCount_ - 1] == sizes_[0]));
    }
    // Bytes that follow each other in memory are one piece.
    void Append(WireBytes bytes) {
        iovec* const last = vectorCount_ != 0 ? &vectors_[vectorCount_ - 1] : nullptr;
        if (last != nullptr && static_cast<std::uint8_t*>(last->iov_base) + last->iov_len == bytes.data)
            last->iov_len += bytes.size;
        else if (bytes.size != 0)
            vectors_[vectorCount_++] = {const_cast<std::uint8_t*>(bytes.data), bytes.size};
    }
    bool SendSegmented();
    void SendSingly();
    void Cut(Pieces& pieces) const;

    int socket_;
    bool segmentation_;
    Pacer* pacer_;
    std::size_t largestTrain_;
    std::size_t packetLimit_;

    std::array<iovec, 2 * MostPackets> vectors_;
    std::array<std::size_t, MostPackets> sizes_;
    std::size_t vectorCount_ = 0;
    std::size_t packetCount_ = 0;
    std::size_t bytes_ = 0;
};

} // namespace Simulated
} // namespace VX3
