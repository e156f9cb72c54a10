// The GVCP client: one object per conversation partner (a camera, or an interface for discovery). Drives the
// transaction machine with a port and the clock. Owned by whoever holds the conversation; a camera's helper
// is shared by application, heartbeat and receive threads.
#pragma once

#include "gev/net/ICommPort.h"
#include "gev/protocol/DiscoveryInfo.h"
#include "gev/protocol/Gvcp.h"
#include "vx3/core/Mutex.h"
#include "vx3/core/Status.h"
#include "vx3/gev/NetParam.h"
#include "wire/Transaction.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace VX3 {

// Results: a count of bytes (0 or more), or a negative code. Status::TimeOut: no answer to two attempts, or
// none but pending acknowledgements within their limit; a send that the system refuses (a cut link) is an
// attempt without answer too. Status::FromGvcp(s): the device answered with GigE
// Vision status s. Status::Malformed: the answer has another length or address than asked for.
// Status::IncompleteWrite: the device wrote less. Status::WrongState: interrupted. Addresses and values are
// in host order. A transaction allocates nothing. Any answer uses its request id up; silence does not.
class GevCmdHelper {
public:
    // remote.ip BroadcastIp broadcasts. `timeoutMs` bounds one attempt. `requestCounter` gives the request
    // ids; it starts at 1, may be shared between helpers and must outlive this object.
    GevCmdHelper(const NET_PARAM& local, const NET_PARAM& remote, std::uint32_t timeoutMs,
                 std::atomic<std::uint16_t>& requestCounter, std::uint32_t remotePort = Gvcp::Port);
    // Over a port of the caller's choice, which must not be null.
    GevCmdHelper(std::unique_ptr<ICommPort> port, std::uint32_t timeoutMs,
                 std::atomic<std::uint16_t>& requestCounter);

    // Bounds one attempt from now on.
    void SetTimeout(std::uint32_t ms) { timeoutMs_ = ms; }
    // What begins from now on is given up `ms` from now, however long single attempts may take: each command
    // is still sent, and waited for as long as the rest of that time allows.
    void LimitTotal(std::uint32_t ms);
    // The device's own pending time-out, 0 when unknown. Pending acknowledgements put the end of a
    // transaction off by three times this, but by at least 5 and at most 30 seconds.
    void SetPendingTimeout(std::uint32_t ms) { pendingTimeoutMs_ = ms; }

    // Every operation that runs or waits for its turn ends with Status::WrongState within 100 ms, even when
    // Resume follows at once, and so does every one begun before Resume. From any thread. The device may
    // still have executed what was interrupted.
    void Interrupt();
    void Resume();

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

    // Sends a command and awaits its acknowledgement, which carries the request counter's id; once more after
    // a time-out, with the same bytes. Result: the acknowledgement's size in `receive`. Takes no lock.
    [[nodiscard]] StatusCode TransceiveData(WireBytes command, std::uint16_t expectedLength,
                                            Gvcp::Ack expectedAck, WireRoom receive);
    // The same for a command that is out already.
    [[nodiscard]] StatusCode ReceiveData(WireRoom receive, std::uint16_t expectedLength,
                                         Gvcp::Ack expectedAck);

    const NET_PARAM& LocalParam() const { return local_; }
    const NET_PARAM& RemoteParam() const { return remote_; }
    std::uint32_t TimeoutMs() const { return timeoutMs_; }
    // The address and port that commands come from; zeros over a port that is no socket.
    NET_ENDPOINT LocalEndPoint() const;
    // The next request id: 0 is never used.
    static void AdvanceRequestId(std::atomic<std::uint16_t>& counter);

private:
    // The count of interruptions and resumptions when an operation began: it is interrupted when that has
    // changed, or was odd.
    using Ticket = unsigned;
    Ticket Begin() const { return interruptions_; }
    bool Interrupted(Ticket begun) const { return begun % 2 != 0 || interruptions_ != begun; }

    StatusCode ReadSplit(Gvcp::Command command, std::uint64_t address, void* destination, std::size_t count,
                         bool roundUp);
    StatusCode WriteSplit(Gvcp::Command command, std::uint64_t address, const void* source,
                          std::size_t count);
    // One command; `data` is then what was read, while the lock is held.
    StatusCode Exchange(const WireRequest& request, Ticket begun, WireBytes& data) VX3_REQUIRES(mutex_);
    StatusCode Finish(Transaction& transaction, Ticket begun);
    StatusCode Drive(Transaction& transaction, Ticket begun);
    StatusCode ReceiveAny(WireRoom room, Ticket begun);
    Transaction::Limits Limits() const;
    bool TotalIsOver(std::chrono::steady_clock::time_point now) const;

    const NET_PARAM local_;
    const NET_PARAM remote_;
    std::atomic<std::uint32_t> timeoutMs_;
    std::atomic<std::chrono::steady_clock::rep> totalEnd_{0}; // 0: no limit
    std::atomic<std::uint32_t> pendingTimeoutMs_{0};
    std::atomic<Ticket> interruptions_{0};
    std::atomic<std::uint16_t>& requestCounter_;
    const std::unique_ptr<ICommPort> port_;
    Mutex mutex_; // one whole transaction
    std::array<std::uint8_t, Gvcp::MaxPacket> sendBuffer_ VX3_GUARDED_BY(mutex_){};
    std::array<std::uint8_t, Gvcp::MaxPacket> receiveBuffer_ VX3_GUARDED_BY(mutex_){};
    std::array<std::uint8_t, 28> resendBuffer_ VX3_GUARDED_BY(mutex_){};
};

} // namespace VX3
