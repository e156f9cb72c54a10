// Sends the images of one stream of a published camera: they are pushed into a queue of four, and leave on a
// thread of their own, paced, in trains, and again where a host asks for them. Owned by the published camera.
// Safe to use from any thread.
#pragma once

#include "device/FpsCalculator.h"
#include "simulated/camera/StreamChannel.h"
#include "simulated/publish/PushedBlocks.h"
#include "vx3/core/Mutex.h"
#include "vx3/core/Status.h"
#include "vx3/simulated/CameraScript.h"

#include <atomic>
#include <cstdint>
#include <memory>

namespace VX3 {

class GevSimuGvsp {
public:
    // What a host may choose beside end points and packet size, and what the owner chooses.
    struct Options {
        bool extendedIds = false;
        std::chrono::nanoseconds packetDelay{0};
        std::uint64_t bandwidthLimit = 0; // bit/s; 0: none
        std::size_t resendFrames = 8;
        bool segmentation = true;
        Simulated::StreamFaults faults;
    };
    struct Counts {
        Simulated::StreamCounts stream;
        std::uint64_t overLimit = 0; // images dropped by the bandwidth limit
        std::uint64_t overrun = 0;   // images refused because the queue was full
    };

    GevSimuGvsp() = default;
    ~GevSimuGvsp();

    void SetOptions(const Options& options) VX3_EXCLUDES(mutex_);
    // Sends from `source` (port 0: any) to `destination` in packets of `packetSize` bytes, IP and UDP headers
    // included. A running one is stopped first. NotFound for a destination that is none, OpenFailed when the
    // source is not to be had.
    [[nodiscard]] StatusCode Start(const NET_ENDPOINT& source, const NET_ENDPOINT& destination,
                                   std::uint32_t packetSize) VX3_EXCLUDES(mutex_);
    void Stop() VX3_EXCLUDES(mutex_);
    bool IsSending() const VX3_EXCLUDES(mutex_);
    // The port packets come from; 0 while nothing is sent.
    std::uint16_t SourcePort() const VX3_EXCLUDES(mutex_);
    // QueueFull while four images wait; 0 also for an image dropped by the bandwidth limit, and one that
    // comes while nothing is sent.
    StatusCode PushImage(std::shared_ptr<IImage> image) VX3_EXCLUDES(mutex_);
    // Packets of a block of the last frames, again, to where the stream goes.
    void ResendPacket(std::uint64_t blockId, std::uint32_t first, std::uint32_t last) VX3_EXCLUDES(mutex_);
    // The same as a host asks for it; another host than the stream's is not heard.
    void Resend(const Gvcp::ResendRequest& request, const NET_ENDPOINT& sender,
                Simulated::Resender::TimePoint now) VX3_EXCLUDES(mutex_);
    bool ServeLateResends(Simulated::Resender::TimePoint now) VX3_EXCLUDES(mutex_);
    Counts GetCounts() const VX3_EXCLUDES(mutex_);

private:
    struct Running {
        std::shared_ptr<Simulated::StreamChannel> channel;
        std::shared_ptr<PushedBlocks> blocks;
        NET_ENDPOINT destination;
        bool extendedIds = false;
    };

    Running Current() const VX3_EXCLUDES(mutex_);
    bool IsOverLimit(const IImage& image, std::uint64_t now);

    mutable Mutex mutex_;
    Options options_ VX3_GUARDED_BY(mutex_);
    Running running_ VX3_GUARDED_BY(mutex_);
    Simulated::StreamCounts last_ VX3_GUARDED_BY(mutex_); // of the stream that was stopped
    FpsCalculator<32> rate_;
    std::atomic<std::uint64_t> limit_{0};
    std::atomic<std::uint64_t> overLimit_{0};
    std::atomic<std::uint64_t> overrun_{0};
};

} // namespace VX3
