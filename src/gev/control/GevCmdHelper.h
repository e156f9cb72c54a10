// The GVCP client: one object per conversation partner (a camera, or an interface for discovery). Owned by
// whoever holds the conversation; a camera's helper is shared by application, heartbeat and receive threads.
#pragma once

#include "gev/net/SocketPort.h"
#include "gev/protocol/DiscoveryInfo.h"
#include "gev/protocol/Gvcp.h"
#include "vx3/core/Mutex.h"
#include "vx3/core/Status.h"
#include "vx3/gev/NetParam.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace VX3 {

// Results: a count of bytes (0 or more), or a negative code. Status::TimeOut: no answer to two attempts.
// Status::FromGvcp(s): the device answered with GigE Vision status s. Status::Malformed: the answer has
// another length or address than asked for. Status::IncompleteWrite: the device wrote less. Addresses and
// values are in host order. A transaction allocates nothing.
class GevCmdHelper {
public:
    // remote.ip BroadcastIp broadcasts. `timeoutMs` bounds one attempt. `requestCounter` gives the request
    // ids; it starts at 1, may be shared between helpers and must outlive this object.
    GevCmdHelper(const NET_PARAM& local, const NET_PARAM& remote, std::uint32_t timeoutMs,
                 std::atomic<std::uint16_t>& requestCounter, std::uint32_t remotePort = Gvcp::Port);

    // The low 32 bits of `address` travel. Result 4.
    [[nodiscard]] StatusCode ReadRegister(std::uint64_t address, std::uint32_t& value);
    [[nodiscard]] StatusCode WriteRegister(std::uint64_t address, std::uint32_t value);
    // In chunks of up to 512 bytes; result `count`. After an error the chunks before it stay done.
    // `roundUp` asks for whole words even where the last one is partly wanted.
    [[nodiscard]] StatusCode ReadMemory(std::uint64_t address, void* destination, std::size_t count,
                                        bool roundUp);
    [[nodiscard]] StatusCode WriteMemory(std::uint64_t address, const void* source, std::size_t count);
    // The same with the device-specific commands for 64-bit addresses.
    [[nodiscard]] StatusCode ReadMemoryEx(std::uint64_t address, void* destination, std::size_t count,
                                          bool roundUp);
    [[nodiscard]] StatusCode WriteMemoryEx(std::uint64_t address, const void* source, std::size_t count);
    // Asks once, awaits nothing and leaves the request counter alone; result bytes sent.
    [[nodiscard]] StatusCode ResendPacket(bool extended, std::uint64_t blockId, std::uint32_t firstPacket,
                                          std::uint32_t lastPacket, std::uint32_t channel);

    // Every 256-byte answer in order of arrival, until 1000 ms pass without a datagram. For a helper of
    // one's own: not serialised with the operations above.
    std::vector<GVCP_DISCOVERY_ACK> Discovery();
    // All five words in network byte order. For a helper of one's own. Result 0.
    [[nodiscard]] StatusCode ForceIp(std::uint32_t ip, std::uint32_t mask, std::uint32_t gateway,
                                     std::uint32_t macLow, std::uint32_t macHigh);

    // Sends a command and awaits its acknowledgement; once more after a time-out, with the same request id.
    // Result: the acknowledgement's size in `receive`. Takes no lock.
    [[nodiscard]] StatusCode TransceiveData(WireBytes command, std::uint16_t expectedLength,
                                            Gvcp::Ack expectedAck, WireRoom receive);
    [[nodiscard]] StatusCode ReceiveData(WireRoom receive, std::uint16_t expectedLength,
                                         Gvcp::Ack expectedAck);

    const NET_PARAM& LocalParam() const { return local_; }
    const NET_PARAM& RemoteParam() const { return remote_; }
    std::uint32_t TimeoutMs() const { return timeoutMs_; }
    // The next request id after a successful exchange: 0 is never used.
    static void AdvanceRequestId(std::atomic<std::uint16_t>& counter);

private:
    StatusCode ReadChunks(bool extended, std::uint64_t address, std::uint8_t* destination, std::size_t count,
                          bool roundUp);
    StatusCode ReadChunk(bool extended, std::uint64_t address, std::uint8_t* destination, std::size_t count,
                         bool roundUp);
    StatusCode WriteChunks(bool extended, std::uint64_t address, const std::uint8_t* source,
                           std::size_t count);
    StatusCode WriteChunk(bool extended, std::uint64_t address, const std::uint8_t* source,
                          std::size_t count);
    // Runs the command of `size` bytes in sendBuffer_; `payload` is then the acknowledgement's payload.
    StatusCode Exchange(std::size_t size, std::size_t expectedLength, Gvcp::Ack expectedAck,
                        WireBytes& payload) VX3_REQUIRES(mutex_);

    const NET_PARAM local_;
    const NET_PARAM remote_;
    const std::uint32_t timeoutMs_;
    std::atomic<std::uint16_t>& requestCounter_;
    SocketPort port_;
    Mutex mutex_; // one whole transaction
    std::array<std::uint8_t, Gvcp::MaxPacket> sendBuffer_ VX3_GUARDED_BY(mutex_){};
    std::array<std::uint8_t, Gvcp::MaxPacket> receiveBuffer_ VX3_GUARDED_BY(mutex_){};
    std::array<std::uint8_t, 28> resendBuffer_ VX3_GUARDED_BY(mutex_){};
};

} // namespace VX3
