// Batches of datagrams, one recvmmsg a batch.
#pragma once

#include "gev/receive/DatagramSource.h"

#include <array>
#include <cstdint>
#include <netinet/in.h>
#include <sys/socket.h>
#include <vector>

namespace VX3 {

class RecvMmsgSource final : public DatagramSource {
public:
    static constexpr std::size_t BatchSize = 64;

    RecvMmsgSource(int socketFd, std::size_t maxDatagram, SenderCheck& senders);

    Batch Receive(WireRoom room, std::chrono::milliseconds wait) override;
    bool Places() const override { return false; }
    const char* Name() const override { return "recvmmsg"; }

private:
    std::vector<std::uint8_t> buffer_; // BatchSize datagrams
    std::array<iovec, BatchSize> vectors_{};
    std::array<sockaddr_in, BatchSize> from_{};
    std::array<mmsghdr, BatchSize> messages_{};
    std::array<WireBytes, BatchSize> datagrams_;
};

} // namespace VX3
