// A camera's stream channels, driven by its registers: starts and stops them as hosts write, each with the
// script it was given.
#pragma once

#include "simulated/camera/PowerUp.h"
#include "simulated/camera/StreamChannel.h"
#include "vx3/core/Status.h"

#include <array>

namespace VX3 {
namespace Simulated {

// Safe to use from any thread.
class StreamChannels {
public:
    // `registers` outlive it.
    StreamChannels(RegisterFile& registers, const CameraConfig& config);

    // False when no sockets are to be had. sourceIp 0: whatever the system chooses.
    [[nodiscard]] bool Open(std::uint32_t sourceIp);
    void Close();
    // Writes what the sockets say into the registers.
    void ReportPorts();

    // A host wrote a register.
    void Written(std::uint32_t address, std::uint32_t value);
    bool SetScript(unsigned channel, const StreamScript& script);
    // As the registers say: WrongState when closed or paused, NotFound, NotAvailable.
    StatusCode Start(unsigned channel);
    void StopAll();
    // Nothing starts while paused.
    void SetPaused(bool paused);
    void Resend(const Gvcp::ResendRequest& request, const NET_ENDPOINT& sender, Resender::TimePoint now);
    // True while requests wait for their time.
    bool ServeLateResends(Resender::TimePoint now);
    // Null when there is none.
    std::shared_ptr<StreamChannel> At(unsigned channel) const;

private:
    using Channels = std::array<std::shared_ptr<StreamChannel>, MaxChannels>;

    Channels All() const;
    std::uint32_t Register(std::uint32_t channel0Address, unsigned channel) const;
    StreamSetting Setting(unsigned channel, const StreamScript& script) const;
    void FireTestPacket(unsigned channel, std::uint32_t value);

    RegisterFile& registers_;
    const bool sendsTestPackets_;
    const std::uint32_t largestTestPacket_;
    mutable Mutex mutex_;
    Channels channels_ VX3_GUARDED_BY(mutex_);
    std::array<StreamScript, MaxChannels> scripts_ VX3_GUARDED_BY(mutex_);
    bool acquiring_ VX3_GUARDED_BY(mutex_) = false;
    bool paused_ VX3_GUARDED_BY(mutex_) = false;
};

} // namespace Simulated
} // namespace VX3
