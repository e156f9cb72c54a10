// One stream channel of a scripted camera: a thread that sends frames as its script says, and the resends.
#pragma once

#include "core/UniqueFd.h"
#include "support/ScriptedPackets.h"
#include "vx3/core/Mutex.h"
#include "vx3/gev/NetParam.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <deque>
#include <map>
#include <random>
#include <thread>

namespace VX3 {
namespace Test {

// Safe to use from any thread.
class ScriptedStream {
public:
    explicit ScriptedStream(std::uint32_t sourceIp); // throws std::runtime_error when it cannot bind
    ~ScriptedStream();

    // A running stream is stopped first. Counts start again at zero.
    void Start(const NET_ENDPOINT& destination, const StreamGeometry& geometry, const StreamScript& script);
    void Stop();
    bool WaitDone(std::chrono::milliseconds timeout);
    bool Running() const { return running_; }
    void Resend(const Gvcp::ResendRequest& request);

    std::uint16_t SourcePort() const { return sourcePort_; }
    int Descriptor() const { return socket_.Get(); }
    StreamCounts Counts() const;
    std::map<PacketAddress, unsigned> ResendRequests() const;
    // One datagram of zeros as long as the packet size says, to the host.
    void SendTestPacket(const NET_ENDPOINT& destination, std::uint32_t packetSize) const;

    // The pixel bytes of a block; see ScriptedPackets.
    static const std::uint8_t* ExpectedData(std::uint64_t blockId, std::size_t size) {
        return ScriptedPackets::ExpectedData(blockId, size);
    }

private:
    void StopThread() VX3_REQUIRES(control_);
    void Run(NET_ENDPOINT destination, StreamGeometry geometry, StreamScript script);
    void BeginBlock(std::uint64_t blockId, std::size_t memory);
    void Publish(const StreamCounts& sent);
    void WaitUntil(std::chrono::steady_clock::time_point due);
    void SendAgain(const Gvcp::ResendRequest& request) VX3_REQUIRES(mutex_);

    UniqueFd socket_;
    std::uint16_t sourcePort_ = 0;
    std::atomic<bool> running_{false};
    std::atomic<bool> stop_{false};

    mutable Mutex mutex_;
    CondVar done_;
    NET_ENDPOINT destination_ VX3_GUARDED_BY(mutex_);
    StreamGeometry geometry_ VX3_GUARDED_BY(mutex_);
    StreamScript script_ VX3_GUARDED_BY(mutex_);
    StreamCounts counts_ VX3_GUARDED_BY(mutex_);
    std::deque<std::uint64_t> held_ VX3_GUARDED_BY(mutex_);
    std::map<PacketAddress, unsigned> requests_ VX3_GUARDED_BY(mutex_);
    std::mt19937 resendRandom_ VX3_GUARDED_BY(mutex_);
    Mutex control_; // starts and stops; never taken by the sending thread
    std::thread thread_ VX3_GUARDED_BY(control_);
};

} // namespace Test
} // namespace VX3
