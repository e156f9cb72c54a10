// One recvfrom a datagram, into the image where the parser predicts its place: the plain method, without a
// copy of the payload.
#pragma once

#include "gev/receive/DatagramSource.h"

#include <cstdint>
#include <netinet/in.h>
#include <sys/types.h>
#include <vector>

namespace VX3 {

class RecvFromSource final : public DatagramSource {
public:
    RecvFromSource(int socketFd, std::size_t maxDatagram, SenderCheck& senders);

    Batch Receive(WireRoom room, std::chrono::milliseconds wait) override;
    bool Places() const override { return true; }
    const char* Name() const override { return "recvfrom"; }

private:
    static constexpr unsigned ProbeEvery = 16; // datagrams

    // The datagram's own length, however much of it fitted; negative when there is none.
    ssize_t Fetch(WireRoom room, int flags);

    std::vector<std::uint8_t> buffer_;
    unsigned untilProbe_ = 0;
    sockaddr_in sender_{}; // of the datagram fetched last
    WireBytes datagram_;
};

} // namespace VX3
