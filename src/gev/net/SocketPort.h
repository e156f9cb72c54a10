// A UDP conversation with one partner; carries all GVCP traffic. Not locked: its owner serialises calls.
#pragma once

#include "gev/net/CommPortAbs.h"
#include "gev/net/CrossSocket.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace VX3 {

class SocketPort : public CommPortAbs {
public:
    // remoteIp 0 or BroadcastIp: any sender is heard. remotePort 0: any port of the sender is.
    SocketPort(std::uint32_t remoteIp, std::uint32_t remotePort, std::uint32_t localIp,
               std::uint32_t localPort);

    StatusCode Open(const char* name) override;
    StatusCode Close() override;
    // To the partner; with remoteIp 0 to whoever was heard last. Status::PortNotOpen without a socket, -1
    // when the system refuses.
    [[nodiscard]] StatusCode SendData(const void* bytes, std::size_t length) override;
    // The next datagram of the partner. Datagrams of others are dropped and do not prolong the wait.
    // timeoutMs 0 waits as long as others keep talking, and 1000 ms in silence.
    [[nodiscard]] StatusCode RecvData(void* buffer, std::size_t size, std::uint32_t timeoutMs) override;
    bool IsOpened() const override { return socket_ != nullptr; }
    StatusCode ClearSendBuff() override { return Status::Ok; }
    StatusCode ClearRecvBuff() override { return Status::Ok; }
    StatusCode SetParam(const void*) override { return Status::Ok; }

    [[nodiscard]] StatusCode SendTo(const void* bytes, std::size_t length, std::uint32_t ip,
                                    std::uint32_t port);
    // {0, 0} without a socket.
    NET_ENDPOINT GetLocalEndPoint() const;
    NET_ENDPOINT GetLastPeer() const { return {lastPeerIp_, lastPeerPort_}; }

private:
    bool Accepts(std::uint32_t ip, std::uint32_t port);

    std::uint32_t remoteIp_;
    std::uint32_t remotePort_;
    std::uint32_t localIp_;
    std::uint32_t localPort_;
    std::uint32_t lastPeerIp_ = BroadcastIp;
    std::uint32_t lastPeerPort_ = 0;
    std::unique_ptr<CrossSocket> socket_;
};

} // namespace VX3
