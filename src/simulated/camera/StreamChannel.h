// One stream channel of a simulated camera: its socket, the thread that sends blocks, and the resends.
#pragma once

#include "simulated/camera/CameraSocket.h"
#include "simulated/camera/Pacer.h"
#include "simulated/camera/Resender.h"
#include "simulated/camera/StopSignal.h"

#include <chrono>
#include <memory>
#include <thread>

namespace VX3 {
namespace Simulated {

// What a stream's registers say when it starts.
struct StreamSetting {
    NET_ENDPOINT destination;
    Gvsp::ImageShape image;
    PacketForm form;
    std::chrono::nanoseconds packetDelay{0};
};

// Safe to use from any thread.
class StreamChannel {
public:
    // Null when the socket is not to be had. sourceIp 0, sourcePort 0: whatever the system chooses.
    static std::unique_ptr<StreamChannel> Open(std::uint32_t sourceIp, std::uint16_t sourcePort = 0);
    ~StreamChannel();

    // Null, or why such a stream cannot be sent. A running one is stopped first; counts start again at zero.
    const char* Start(const StreamSetting& setting, const StreamScript& script);
    // The same with blocks from elsewhere; the script's blocks and the setting's image then mean nothing.
    const char* Start(const StreamSetting& setting, const StreamScript& script,
                      std::shared_ptr<IBlockSource> source);
    void Stop();
    bool WaitDone(std::chrono::milliseconds timeout);
    void Resend(const Gvcp::ResendRequest& request, const NET_ENDPOINT& sender, Resender::TimePoint now) {
        resender_.Ask(request, sender, now);
    }
    // True while requests wait for their time.
    bool ServeLateResends(Resender::TimePoint now) {
        resender_.ServeDue(now);
        return resender_.Waiting();
    }

    std::uint16_t SourcePort() const { return socket_.Port(); }
    StreamCounts Counts() const;
    std::map<PacketAddress, unsigned> ResendRequests() const { return resender_.Requests(); }
    // One datagram of zeros as long as the packet size says. `whole`: it is lost rather than cut.
    void SendTestPacket(const NET_ENDPOINT& destination, std::uint32_t packetSize, bool whole = false) const;
    // Takes what hosts sent here; the newest one's size, 0 when there was none.
    std::size_t TakeNewestDatagram() const;

private:
    explicit StreamChannel(CameraSocket socket);
    void StopThread() VX3_REQUIRES(control_);
    void Run(const StreamSetting& setting, const StreamScript& script, IBlockSource& source);
    void Publish(StreamCounts counts) VX3_EXCLUDES(mutex_);

    CameraSocket socket_;
    Resender resender_;
    StopSignal stop_;
    mutable Mutex mutex_;
    CondVar done_;
    bool running_ VX3_GUARDED_BY(mutex_) = false;
    StreamCounts sent_ VX3_GUARDED_BY(mutex_);
    Mutex control_; // starts and stops; never taken by the sending thread
    std::thread thread_ VX3_GUARDED_BY(control_);
};

} // namespace Simulated
} // namespace VX3
