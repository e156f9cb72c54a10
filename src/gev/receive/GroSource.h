// Trains of datagrams: the kernel joins consecutive datagrams of one sender and equal size (the last may be
// shorter) and hands over up to 64 KiB a message. Where it joins nothing, these are plain batches.
#pragma once

#include "gev/receive/DatagramSource.h"

#include <array>
#include <cstdint>
#include <netinet/in.h>
#include <sys/socket.h>
#include <vector>

namespace VX3 {

class GroSource final : public DatagramSource {
public:
    static constexpr std::size_t Messages = 16; // a call
    static constexpr std::size_t TrainBytes = 65536;

    // Asks the socket for trains; false when the system has none.
    static bool Enable(int socketFd);

    GroSource(int socketFd, SenderCheck& senders);

    Batch Receive(WireRoom room, std::chrono::milliseconds wait) override;
    bool Places() const override { return false; }
    const char* Name() const override { return "gro"; }

private:
    // Room for the one control message, aligned as the kernel's header wants it.
    struct alignas(cmsghdr) Control {
        std::array<unsigned char, CMSG_SPACE(sizeof(int))> bytes;
    };

    int ReceiveTrains();
    void Split(const mmsghdr& message, const sockaddr_in& sender);

    std::vector<std::uint8_t> buffer_; // Messages trains
    std::array<iovec, Messages> vectors_{};
    std::array<Control, Messages> controls_{};
    std::array<sockaddr_in, Messages> from_{}; // one a train: the kernel joins no two senders
    std::array<mmsghdr, Messages> messages_{};
    std::vector<WireBytes> datagrams_;
    std::size_t count_ = 0;
};

} // namespace VX3
