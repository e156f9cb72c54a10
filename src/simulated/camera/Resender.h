// Sends packets again: keeps the last blocks of a stream and answers requests for them, late or not at all
// where the script says so.
#pragma once

#include "gev/protocol/Gvcp.h"
#include "simulated/camera/IBlockSource.h"
#include "vx3/core/Mutex.h"
#include "vx3/gev/NetParam.h"

#include <chrono>
#include <deque>
#include <map>
#include <random>

namespace VX3 {
namespace Simulated {

// Safe to use from any thread.
class Resender {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    // `socket` stays open as long as Ask and ServeDue are called.
    explicit Resender(int socket) : socket_(socket) {}

    // Forgets everything; a stream starts.
    void Begin(const NET_ENDPOINT& destination, const StreamScript& script, bool extendedIds);
    // A block is about to be sent.
    void Hold(const SentBlock& block);
    // Requests of other hosts than the stream's are not heard.
    void Ask(const Gvcp::ResendRequest& request, const NET_ENDPOINT& sender, TimePoint now);
    void ServeDue(TimePoint now);
    // Requests that wait for their time.
    bool Waiting() const;
    // resendRequests, packetsRequested, packetsResent, requestsNotServed.
    StreamCounts Counts() const;
    std::map<PacketAddress, unsigned> Requests() const;

private:
    struct Late {
        Gvcp::ResendRequest request;
        TimePoint due;
    };

    const SentBlock* Find(const Gvcp::ResendRequest& request) const VX3_REQUIRES(mutex_);
    void Serve(const Gvcp::ResendRequest& request) VX3_REQUIRES(mutex_);
    void Refuse(const Gvcp::ResendRequest& request, std::uint32_t last, std::uint16_t status)
        VX3_REQUIRES(mutex_);
    void SendAgain(const SentBlock& block, std::uint32_t first, std::uint32_t last) VX3_REQUIRES(mutex_);
    void Note(std::uint64_t blockId, std::uint32_t packetId) VX3_REQUIRES(mutex_);
    bool Chance(double probability) VX3_REQUIRES(mutex_);

    const int socket_;
    mutable Mutex mutex_;
    NET_ENDPOINT destination_ VX3_GUARDED_BY(mutex_);
    StreamFaults faults_ VX3_GUARDED_BY(mutex_);
    bool segmentation_ VX3_GUARDED_BY(mutex_) = true;
    bool rememberRequests_ VX3_GUARDED_BY(mutex_) = true;
    bool omitTrailer_ VX3_GUARDED_BY(mutex_) = false;
    bool extendedIds_ VX3_GUARDED_BY(mutex_) = false;
    std::size_t memory_ VX3_GUARDED_BY(mutex_) = 0;
    std::deque<SentBlock> held_ VX3_GUARDED_BY(mutex_);
    std::deque<Late> late_ VX3_GUARDED_BY(mutex_);
    StreamCounts counts_ VX3_GUARDED_BY(mutex_);
    std::map<PacketAddress, unsigned> requests_ VX3_GUARDED_BY(mutex_);
    std::mt19937 random_ VX3_GUARDED_BY(mutex_);
};

} // namespace Simulated
} // namespace VX3
