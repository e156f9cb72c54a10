#include "gev/control/GevCmdHelper.h"

#include <algorithm>
#include <arpa/inet.h>
#include <chrono>
#include <cstring>
#include <limits>

namespace VX3 {

namespace {

constexpr std::uint32_t discoveryTimeoutMs = 1000;
constexpr std::size_t discoveryReceiveSize = 1024;
// A network that never falls silent, or answers without end, must not hold discovery for ever.
constexpr auto longestDiscovery = std::chrono::seconds(10);
constexpr std::size_t mostDiscoveryAcks = 1024;

using Clock = std::chrono::steady_clock;

std::uint64_t MillisecondsSince(Clock::time_point start) {
    return static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count());
}

template <std::size_t N>
WireRoom RoomOf(std::array<std::uint8_t, N>& buffer) {
    return {buffer.data(), buffer.size()};
}

// Counts travel in a signed 32-bit result.
bool CountFits(std::size_t count) {
    return count <= static_cast<std::size_t>(std::numeric_limits<StatusCode>::max());
}

} // namespace

GevCmdHelper::GevCmdHelper(const NET_PARAM& local, const NET_PARAM& remote, std::uint32_t timeoutMs,
                           std::atomic<std::uint16_t>& requestCounter, std::uint32_t remotePort)
    : local_(local),
      remote_(remote),
      timeoutMs_(timeoutMs),
      requestCounter_(requestCounter),
      port_(remote.ip, remotePort, local.ip, 0) {}

void GevCmdHelper::AdvanceRequestId(std::atomic<std::uint16_t>& counter) {
    std::uint16_t id = counter.load();
    std::uint16_t next = 0;
    do
        next = id == 0xFFFF ? std::uint16_t{1} : static_cast<std::uint16_t>(id + 1);
    while (!counter.compare_exchange_weak(id, next));
}

StatusCode GevCmdHelper::ReceiveData(WireRoom receive, std::uint16_t expectedLength, Gvcp::Ack expectedAck) {
    const Gvcp::AckExpectation expected{requestCounter_.load(), expectedAck, expectedLength};
    std::uint64_t timeout = timeoutMs_;
    Clock::time_point start = Clock::now();
    for (;;) {
        const std::uint64_t elapsed = MillisecondsSince(start);
        if (elapsed >= timeout)
            return Status::TimeOut;
        const StatusCode received =
            port_.RecvData(receive.data, receive.size, static_cast<std::uint32_t>(timeout - elapsed));
        if (Failed(received))
            return received;
        const std::size_t size = std::min(static_cast<std::size_t>(received), receive.size);
        const Gvcp::AckVerdict verdict = Gvcp::JudgeAck({receive.data, size}, expected);
        switch (verdict.kind) {
        case Gvcp::AckVerdict::Kind::Ignore:
            break;
        case Gvcp::AckVerdict::Kind::Extend:
            start = Clock::now();
            timeout = verdict.pendingMs;
            break;
        case Gvcp::AckVerdict::Kind::ErrorCode:
            return Status::FromGvcp(verdict.status);
        case Gvcp::AckVerdict::Kind::BadLength:
            return Status::Malformed;
        case Gvcp::AckVerdict::Kind::Complete:
            AdvanceRequestId(requestCounter_);
            return static_cast<StatusCode>(size);
        }
    }
}

StatusCode GevCmdHelper::TransceiveData(WireBytes command, std::uint16_t expectedLength,
                                        Gvcp::Ack expectedAck, WireRoom receive) {
    constexpr int attempts = 2;
    StatusCode result = Status::TimeOut;
    for (int attempt = 0; attempt < attempts && result == Status::TimeOut; ++attempt) {
        result = port_.SendData(command.data, command.size);
        if (!Failed(result))
            result = ReceiveData(receive, expectedLength, expectedAck);
    }
    return result;
}

StatusCode GevCmdHelper::Exchange(std::size_t size, std::size_t expectedLength, Gvcp::Ack expectedAck,
                                  WireBytes& payload) {
    if (size == 0)
        return Status::NotFound; // the arguments did not make a packet
    const StatusCode received =
        TransceiveData({sendBuffer_.data(), size}, static_cast<std::uint16_t>(expectedLength), expectedAck,
                       RoomOf(receiveBuffer_));
    if (Failed(received))
        return received;
    payload = {receiveBuffer_.data() + Gvcp::HeaderSize,
               static_cast<std::size_t>(received) - Gvcp::HeaderSize};
    return received;
}

StatusCode GevCmdHelper::ReadRegister(std::uint64_t address, std::uint32_t& value) {
    MutexLock lock(mutex_);
    WireBytes payload;
    const std::size_t size =
        Gvcp::EncodeReadReg(RoomOf(sendBuffer_), requestCounter_.load(), static_cast<std::uint32_t>(address));
    const StatusCode result = Exchange(size, 4, Gvcp::Ack::ReadReg, payload);
    if (Failed(result))
        return result;
    return Gvcp::DecodeReadRegAck(payload, value) ? 4 : Status::Malformed;
}

StatusCode GevCmdHelper::WriteRegister(std::uint64_t address, std::uint32_t value) {
    MutexLock lock(mutex_);
    WireBytes payload;
    const std::size_t size = Gvcp::EncodeWriteReg(RoomOf(sendBuffer_), requestCounter_.load(),
                                                  static_cast<std::uint32_t>(address), value);
    const StatusCode result = Exchange(size, 4, Gvcp::Ack::WriteReg, payload);
    if (Failed(result))
        return result;
    std::uint32_t index = 0;
    return Gvcp::DecodeWriteRegAck(payload, index) && index == 1 ? 4 : Status::IncompleteWrite;
}

StatusCode GevCmdHelper::ReadMemory(std::uint64_t address, void* destination, std::size_t count,
                                    bool roundUp) {
    return ReadChunks(false, address, static_cast<std::uint8_t*>(destination), count, roundUp);
}

StatusCode GevCmdHelper::ReadMemoryEx(std::uint64_t address, void* destination, std::size_t count,
                                      bool roundUp) {
    return ReadChunks(true, address, static_cast<std::uint8_t*>(destination), count, roundUp);
}

StatusCode GevCmdHelper::WriteMemory(std::uint64_t address, const void* source, std::size_t count) {
    return WriteChunks(false, address, static_cast<const std::uint8_t*>(source), count);
}

StatusCode GevCmdHelper::WriteMemoryEx(std::uint64_t address, const void* source, std::size_t count) {
    return WriteChunks(true, address, static_cast<const std::uint8_t*>(source), count);
}

StatusCode GevCmdHelper::ReadChunks(bool extended, std::uint64_t address, std::uint8_t* destination,
                                    std::size_t count, bool roundUp) {
    if (!CountFits(count))
        return Status::NotFound;
    for (std::size_t done = 0; done < count;) {
        const std::size_t chunk = std::min(count - done, Gvcp::MaxChunk);
        const StatusCode result = ReadChunk(extended, address + done, destination + done, chunk, roundUp);
        if (Failed(result))
            return result;
        done += chunk;
    }
    return static_cast<StatusCode>(count);
}

StatusCode GevCmdHelper::ReadChunk(bool extended, std::uint64_t address, std::uint8_t* destination,
                                   std::size_t count, bool roundUp) {
    const std::uint64_t wireAddress = extended ? address : address & 0xFFFFFFFFU;
    const std::size_t padded = Gvcp::RoundUp4(count);
    const auto asked = static_cast<std::uint16_t>(roundUp ? padded : count);
    MutexLock lock(mutex_);
    WireBytes payload;
    const std::size_t size =
        Gvcp::EncodeReadMem(RoomOf(sendBuffer_), extended, requestCounter_.load(), {wireAddress, asked});
    const StatusCode result = Exchange(size, padded + (extended ? 8 : 4),
                                       extended ? Gvcp::Ack::ReadMemEx : Gvcp::Ack::ReadMem, payload);
    if (Failed(result))
        return result;
    Gvcp::MemoryData read;
    if (!Gvcp::DecodeReadMemAck(payload, extended, read) || read.address != wireAddress ||
        read.data.size < count)
        return Status::Malformed;
    std::memcpy(destination, read.data.data, count);
    return result;
}

StatusCode GevCmdHelper::WriteChunks(bool extended, std::uint64_t address, const std::uint8_t* source,
                                     std::size_t count) {
    if (!CountFits(count))
        return Status::NotFound;
    for (std::size_t done = 0; done < count;) {
        const std::size_t chunk = std::min(count - done, Gvcp::MaxChunk);
        const StatusCode result = WriteChunk(extended, address + done, source + done, chunk);
        if (Failed(result))
            return result;
        done += chunk;
    }
    return static_cast<StatusCode>(count);
}

StatusCode GevCmdHelper::WriteChunk(bool extended, std::uint64_t address, const std::uint8_t* source,
                                    std::size_t count) {
    MutexLock lock(mutex_);
    WireBytes payload;
    const std::size_t size = Gvcp::EncodeWriteMem(RoomOf(sendBuffer_), extended, requestCounter_.load(),
                                                  {address, {source, count}});
    const StatusCode result =
        Exchange(size, 4, extended ? Gvcp::Ack::WriteMemEx : Gvcp::Ack::WriteMem, payload);
    if (Failed(result))
        return result;
    std::uint16_t written = 0;
    const bool complete = Gvcp::DecodeWriteMemAck(payload, written) && written == Gvcp::RoundUp4(count);
    return complete ? result : Status::IncompleteWrite;
}

StatusCode GevCmdHelper::ResendPacket(bool extended, std::uint64_t blockId, std::uint32_t firstPacket,
                                      std::uint32_t lastPacket, std::uint32_t channel) {
    const Gvcp::ResendRequest request{extended, blockId, firstPacket, lastPacket,
                                      static_cast<std::uint16_t>(channel)};
    MutexLock lock(mutex_);
    const std::size_t size = Gvcp::EncodePacketResend(RoomOf(resendBuffer_), requestCounter_.load(), request);
    return port_.SendData(resendBuffer_.data(), size);
}

std::vector<GVCP_DISCOVERY_ACK> GevCmdHelper::Discovery() {
    std::vector<GVCP_DISCOVERY_ACK> acks;
    std::array<std::uint8_t, Gvcp::HeaderSize> command{};
    if (Failed(port_.SendData(command.data(), Gvcp::EncodeDiscovery(RoomOf(command)))))
        return acks;
    const Clock::time_point start = Clock::now();
    std::array<std::uint8_t, discoveryReceiveSize> buffer{};
    while (acks.size() < mostDiscoveryAcks && Clock::now() - start < longestDiscovery) {
        const StatusCode received = port_.RecvData(buffer.data(), buffer.size(), discoveryTimeoutMs);
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
    const Gvcp::ForceIpRequest request{ntohl(macHigh), ntohl(macLow), ntohl(ip), ntohl(mask), ntohl(gateway)};
    std::array<std::uint8_t, Gvcp::ForceIpSize> command{};
    const StatusCode sent = port_.SendData(command.data(), Gvcp::EncodeForceIp(RoomOf(command), request));
    if (Failed(sent))
        return sent;
    const Clock::time_point start = Clock::now();
    std::array<std::uint8_t, discoveryReceiveSize> buffer{};
    while (Clock::now() - start < longestDiscovery) {
        const StatusCode received = port_.RecvData(buffer.data(), buffer.size(), discoveryTimeoutMs);
        if (Failed(received))
            return received;
        if (static_cast<std::size_t>(received) == Gvcp::HeaderSize)
            return Status::Ok;
    }
    return Status::TimeOut;
}

} // namespace VX3
