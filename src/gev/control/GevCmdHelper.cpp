#include "gev/control/GevCmdHelper.h"

#include "gev/net/SocketPort.h"
#include "gev/protocol/GvcpCodec.h"
#include "wire/RequestSplit.h"

#include <algorithm>
#include <arpa/inet.h>
#include <chrono>
#include <cstring>
#include <limits>
#include <utility>

namespace VX3 {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// An interruption is noticed after at most this long.
constexpr milliseconds LongestSlice{100};
constexpr milliseconds DiscoverySilence{1000};
constexpr std::size_t DiscoveryReceiveSize = 1024;
// A network that never falls silent, or answers without end, must not hold discovery for ever.
constexpr auto LongestDiscovery = std::chrono::seconds(10);
constexpr std::size_t MostDiscoveryAcks = 1024;

const GvcpCodec Codec;

template <std::size_t N>
WireRoom RoomOf(std::array<std::uint8_t, N>& buffer) {
    return {buffer.data(), buffer.size()};
}

// Counts travel in a signed 32-bit result.
bool CountFits(std::size_t count) {
    return count <= static_cast<std::size_t>(std::numeric_limits<StatusCode>::max());
}

// The time-out of the port's next receive. Rounded up: 0 would not mean none.
std::uint32_t SliceMs(Clock::duration left) {
    return static_cast<std::uint32_t>(std::min(std::chrono::ceil<milliseconds>(left), LongestSlice).count());
}

WireRequest RequestOf(Gvcp::Command command, std::uint64_t address, WireBytes data, std::size_t count) {
    return {static_cast<std::uint16_t>(command), address, data, count};
}

StatusCode StatusOf(const Transaction& transaction) {
    switch (transaction.Result()) {
    case Transaction::Outcome::Complete:
        return Status::Ok;
    case Transaction::Outcome::Refused:
        return Status::FromGvcp(transaction.Answer().status);
    case Transaction::Outcome::Malformed:
        return Status::Malformed;
    case Transaction::Outcome::Incomplete:
        return Status::IncompleteWrite;
    case Transaction::Outcome::Unsendable:
        return Status::NotFound;
    case Transaction::Outcome::Abandoned:
        return Status::WrongState;
    default:
        return Status::TimeOut;
    }
}

} // namespace

GevCmdHelper::GevCmdHelper(const NET_PARAM& local, const NET_PARAM& remote, std::uint32_t timeoutMs,
                           std::atomic<std::uint16_t>& requestCounter, std::uint32_t remotePort)
    : local_(local),
      remote_(remote),
      timeoutMs_(timeoutMs),
      requestCounter_(requestCounter),
      port_(std::make_unique<SocketPort>(remote.ip, remotePort, local.ip, 0)) {}

GevCmdHelper::GevCmdHelper(std::unique_ptr<ICommPort> port, std::uint32_t timeoutMs,
                           std::atomic<std::uint16_t>& requestCounter)
    : local_(), remote_(), timeoutMs_(timeoutMs), requestCounter_(requestCounter), port_(std::move(port)) {}

void GevCmdHelper::AdvanceRequestId(std::atomic<std::uint16_t>& counter) {
    std::uint16_t id = counter.load();
    while (!counter.compare_exchange_weak(id, GvcpCodec::SharedRules().NextId(id)))
        continue;
}

// Interruption --------------------------------------------------------------------------------------------

void GevCmdHelper::Interrupt() {
    interruptions_ |= 1U;
}

void GevCmdHelper::Resume() {
    Ticket count = interruptions_;
    while (count % 2 != 0 && !interruptions_.compare_exchange_weak(count, count + 1))
        continue;
}

// One transaction -----------------------------------------------------------------------------------------

void GevCmdHelper::LimitTotal(std::uint32_t ms) {
    totalEnd_ = (Clock::now() + milliseconds(ms)).time_since_epoch().count();
}

bool GevCmdHelper::TotalIsOver(Clock::time_point now) const {
    const Clock::rep end = totalEnd_;
    return end != 0 && now.time_since_epoch().count() >= end;
}

NET_ENDPOINT GevCmdHelper::LocalEndPoint() const {
    const auto* port = dynamic_cast<const SocketPort*>(port_.get());
    return port != nullptr ? port->GetLocalEndPoint() : NET_ENDPOINT{};
}

Transaction::Limits GevCmdHelper::Limits() const {
    const milliseconds attempt(timeoutMs_);
    const milliseconds pending = Transaction::PendingLimit(milliseconds(pendingTimeoutMs_));
    const Clock::time_point end{Clock::duration(totalEnd_.load())};
    if (end == Clock::time_point())
        return {attempt, pending};
    const auto left = std::max(std::chrono::duration_cast<milliseconds>(end - Clock::now()), milliseconds(2));
    return {std::min(attempt, left / 2), std::min(pending, left)}; // two attempts
}

// To the transaction's end, or to an error of the port, which is returned.
StatusCode GevCmdHelper::Drive(Transaction& transaction, Ticket begun) {
    for (;;) {
        if (Interrupted(begun))
            transaction.Abandon();
        StatusCode status = Status::Ok;
        const Transaction::Time now = Clock::now();
        switch (transaction.Next(now)) {
        case Transaction::Step::Send:
            status = port_->SendData(transaction.Command().data, transaction.Command().size);
            if (status == Status::TimeOut)
                transaction.SendFailed();
            else if (status == Status::Generic)
                status =
                    Status::Ok; // as if it were lost on its way: the link may be back for the next attempt
            break;
        case Transaction::Step::Wait:
            if (TotalIsOver(now))
                return Status::TimeOut; // sent, and that is all
            status = port_->RecvData(transaction.Room().data, transaction.Room().size,
                                     SliceMs(transaction.Deadline() - now));
            if (!Failed(status))
                transaction.Received(static_cast<std::size_t>(status), Clock::now());
            break;
        case Transaction::Step::Finished:
            return StatusOf(transaction);
        }
        if (Failed(status) && status != Status::TimeOut)
            return status;
    }
}

StatusCode GevCmdHelper::Finish(Transaction& transaction, Ticket begun) {
    const StatusCode status = Drive(transaction, begun);
    transaction.Abandon(); // what the port or the time ended; nothing else changes by it
    if (transaction.IdUsed())
        AdvanceRequestId(requestCounter_);
    return status;
}

StatusCode GevCmdHelper::Exchange(const WireRequest& request, Ticket begun, WireBytes& data) {
    Transaction transaction(Codec, RoomOf(sendBuffer_), RoomOf(receiveBuffer_));
    transaction.Start(request, requestCounter_, Limits());
    const StatusCode status = Finish(transaction, begun);
    data = transaction.Answer().data;
    return status;
}

StatusCode GevCmdHelper::TransceiveData(WireBytes command, std::uint16_t expectedLength,
                                        Gvcp::Ack expectedAck, WireRoom receive) {
    const GvcpRawCodec codec(command, expectedAck, expectedLength);
    Transaction transaction(codec, {}, receive);
    transaction.Start({}, requestCounter_, Limits());
    const StatusCode status = Finish(transaction, Begin());
    return Failed(status) ? status : static_cast<StatusCode>(transaction.Packet().size);
}

StatusCode GevCmdHelper::ReceiveData(WireRoom receive, std::uint16_t expectedLength, Gvcp::Ack expectedAck) {
    const GvcpRawCodec codec({}, expectedAck, expectedLength);
    Transaction transaction(codec, {}, receive);
    transaction.Await({}, requestCounter_, Limits());
    const StatusCode status = Finish(transaction, Begin());
    return Failed(status) ? status : static_cast<StatusCode>(transaction.Packet().size);
}

// Registers and memory ------------------------------------------------------------------------------------

StatusCode GevCmdHelper::ReadRegister(std::uint64_t address, std::uint32_t& value) {
    const Ticket begun = Begin();
    MutexLock lock(mutex_);
    WireBytes data;
    const StatusCode status =
        Exchange(RequestOf(Gvcp::Command::ReadReg, address, {}, sizeof(value)), begun, data);
    if (Failed(status))
        return status;
    value = Wire::Load<std::uint32_t>(data.data);
    return sizeof(value);
}

StatusCode GevCmdHelper::WriteRegister(std::uint64_t address, std::uint32_t value) {
    const Ticket begun = Begin();
    std::array<std::uint8_t, sizeof(value)> bytes{};
    Wire::Store(bytes.data(), value);
    MutexLock lock(mutex_);
    WireBytes nothing;
    const StatusCode status = Exchange(
        RequestOf(Gvcp::Command::WriteReg, address, {bytes.data(), bytes.size()}, 0), begun, nothing);
    return Failed(status) ? status : static_cast<StatusCode>(sizeof(value));
}

StatusCode GevCmdHelper::ReadMemory(std::uint64_t address, void* destination, std::size_t count,
                                    bool roundUp) {
    return ReadSplit(Gvcp::Command::ReadMem, address, destination, count, roundUp);
}

StatusCode GevCmdHelper::ReadMemoryEx(std::uint64_t address, void* destination, std::size_t count,
                                      bool roundUp) {
    return ReadSplit(Gvcp::Command::ReadMemEx, address, destination, count, roundUp);
}

StatusCode GevCmdHelper::WriteMemory(std::uint64_t address, const void* source, std::size_t count) {
    return WriteSplit(Gvcp::Command::WriteMem, address, source, count);
}

StatusCode GevCmdHelper::WriteMemoryEx(std::uint64_t address, const void* source, std::size_t count) {
    return WriteSplit(Gvcp::Command::WriteMemEx, address, source, count);
}

StatusCode GevCmdHelper::ReadSplit(Gvcp::Command command, std::uint64_t address, void* destination,
                                   std::size_t count, bool roundUp) {
    if (!CountFits(count))
        return Status::NotFound;
    const Ticket begun = Begin();
    RequestSplit split(RequestOf(command, address, {}, count), Codec.Rules());
    for (WireRequest piece; split.Next(piece);) {
        const std::size_t wanted = piece.count;
        if (roundUp)
            piece.count = Gvcp::RoundUp4(wanted);
        MutexLock lock(mutex_);
        WireBytes data;
        const StatusCode status = Exchange(piece, begun, data);
        if (Failed(status))
            return status;
        std::memcpy(static_cast<std::uint8_t*>(destination) + split.Offset(), data.data, wanted);
    }
    return static_cast<StatusCode>(count);
}

StatusCode GevCmdHelper::WriteSplit(Gvcp::Command command, std::uint64_t address, const void* source,
                                    std::size_t count) {
    if (!CountFits(count))
        return Status::NotFound;
    const Ticket begun = Begin();
    const WireBytes data{static_cast<const std::uint8_t*>(source), count};
    RequestSplit split(RequestOf(command, address, data, 0), Codec.Rules());
    for (WireRequest piece; split.Next(piece);) {
        MutexLock lock(mutex_);
        WireBytes nothing;
        const StatusCode status = Exchange(piece, begun, nothing);
        if (Failed(status))
            return status;
    }
    return static_cast<StatusCode>(count);
}

// Commands that are no transactions -----------------------------------------------------------------------

StatusCode GevCmdHelper::ResendPacket(bool extended, std::uint64_t blockId, std::uint32_t firstPacket,
                                      std::uint32_t lastPacket, std::uint32_t channel) {
    const Gvcp::ResendRequest request{extended, blockId, firstPacket, lastPacket,
                                      static_cast<std::uint16_t>(channel)};
    MutexLock lock(mutex_);
    const std::size_t size = Gvcp::EncodePacketResend(RoomOf(resendBuffer_), requestCounter_.load(), request);
    return port_->SendData(resendBuffer_.data(), size);
}

// The next datagram, whoever sends it.
StatusCode GevCmdHelper::ReceiveAny(WireRoom room, Ticket begun) {
    const Transaction::Time deadline = Clock::now() + DiscoverySilence;
    for (auto now = Clock::now(); now < deadline; now = Clock::now()) {
        if (Interrupted(begun))
            return Status::WrongState;
        const StatusCode received = port_->RecvData(room.data, room.size, SliceMs(deadline - now));
        if (received != Status::TimeOut)
            return received;
    }
    return Status::TimeOut;
}

std::vector<GVCP_DISCOVERY_ACK> GevCmdHelper::Discovery() {
    const Ticket begun = Begin();
    std::vector<GVCP_DISCOVERY_ACK> acks;
    std::array<std::uint8_t, Gvcp::HeaderSize> command{};
    if (Failed(port_->SendData(command.data(), Gvcp::EncodeDiscovery(RoomOf(command)))))
        return acks;
    const Clock::time_point start = Clock::now();
    std::array<std::uint8_t, DiscoveryReceiveSize> buffer{};
    while (acks.size() < MostDiscoveryAcks && Clock::now() - start < LongestDiscovery) {
        const StatusCode received = ReceiveAny(RoomOf(buffer), begun);
        if (Failed(received))
            break;
        if (static_cast<std::size_t>(received) != Gvcp::DiscoveryAckSize)
            continue;
        std::memcpy(acks.emplace_back().bytes.data(), buffer.data(), Gvcp::DiscoveryAckSize);
    }
    return acks;
}

StatusCode GevCmdHelper::ForceIp(std::uint32_t ip, std::uint32_t mask, std::uint32_t gateway,
                                 std::uint32_t macLow, std::uint32_t macHigh) {
    const Ticket begun = Begin();
    const Gvcp::ForceIpRequest request{ntohl(macHigh), ntohl(macLow), ntohl(ip), ntohl(mask), ntohl(gateway)};
    std::array<std::uint8_t, Gvcp::ForceIpSize> command{};
    const StatusCode sent = port_->SendData(command.data(), Gvcp::EncodeForceIp(RoomOf(command), request));
    if (Failed(sent))
        return sent;
    const Clock::time_point start = Clock::now();
    std::array<std::uint8_t, DiscoveryReceiveSize> buffer{};
    while (Clock::now() - start < LongestDiscovery) {
        const StatusCode received = ReceiveAny(RoomOf(buffer), begun);
        if (Failed(received))
            return received;
        if (static_cast<std::size_t>(received) == Gvcp::HeaderSize)
            return Status::Ok;
    }
    return Status::TimeOut;
}

} // namespace VX3
