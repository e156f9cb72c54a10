#include "simulated/camera/StreamChannels.h"

#include "gev/protocol/Bootstrap.h"
#include "vx3/core/Logger.h"

namespace VX3 {
namespace Simulated {

StreamChannels::StreamChannels(RegisterFile& registers, const CameraConfig& config)
    : registers_(registers),
      sendsTestPackets_(config.sendsTestPackets),
      largestTestPacket_(config.largestTestPacket) {}

bool StreamChannels::Open(std::uint32_t sourceIp) {
    Channels channels;
    for (auto& channel : channels)
        if ((channel = StreamChannel::Open(sourceIp)) == nullptr)
            return false;
    MutexLock lock(mutex_);
    channels_ = std::move(channels);
    return true;
}

void StreamChannels::Close() {
    StopAll();
    MutexLock lock(mutex_);
    channels_ = {};
}

StreamChannels::Channels StreamChannels::All() const {
    MutexLock lock(mutex_);
    return channels_;
}

std::shared_ptr<StreamChannel> StreamChannels::At(unsigned channel) const {
    MutexLock lock(mutex_);
    return channel < MaxChannels ? channels_[channel] : nullptr;
}

void StreamChannels::ReportPorts() {
    for (unsigned i = 0; i < MaxChannels; ++i)
        if (const auto channel = At(i))
            (void)registers_.SetValue(Bootstrap::StreamRegister(Bootstrap::StreamSourcePort, i),
                                      channel->SourcePort());
}

bool StreamChannels::SetScript(unsigned channel, const StreamScript& script) {
    MutexLock lock(mutex_);
    if (channel >= MaxChannels)
        return false;
    scripts_[channel] = script;
    return true;
}

std::uint32_t StreamChannels::Register(std::uint32_t channel0Address, unsigned channel) const {
    return registers_.Value(Bootstrap::StreamRegister(channel0Address, channel));
}

StreamSetting StreamChannels::Setting(unsigned channel, const StreamScript& script) const {
    StreamSetting setting;
    setting.destination = {Register(Bootstrap::StreamDestination, channel),
                           Register(Bootstrap::StreamPort, channel) & 0xFFFF};
    setting.image.pixelFormat = registers_.Value(CameraRegister::PixelFormat);
    setting.image.sizeX = registers_.Value(CameraRegister::Width);
    setting.image.sizeY = registers_.Value(CameraRegister::Height);
    setting.image.offsetX = registers_.Value(CameraRegister::OffsetX);
    setting.image.offsetY = registers_.Value(CameraRegister::OffsetY);
    setting.form.packetSize = Register(Bootstrap::StreamPacketSize, channel) & Bootstrap::PacketSizeMask;
    setting.form.extendedIds = script.extendedIds || (registers_.Value(Bootstrap::GvspConfiguration) &
                                                      Bootstrap::ExtendedIdsSelected) != 0;
    setting.packetDelay = std::chrono::nanoseconds(Register(Bootstrap::StreamPacketDelay, channel));
    return setting;
}

StatusCode StreamChannels::Start(unsigned channel) {
    StreamScript script;
    {
        MutexLock lock(mutex_);
        if (channel >= MaxChannels)
            return Status::NotFound;
        if (channels_[channel] == nullptr || paused_)
            return Status::WrongState;
        script = scripts_[channel];
    }
    const StreamSetting setting = Setting(channel, script);
    const auto stream = At(channel);
    if (setting.destination.port == 0 || stream == nullptr)
        return Status::NotAvailable;
    const char* const objection = stream->Start(setting, script);
    if (objection == nullptr)
        return Status::Ok;
    VxLoggerLog(LogLevel::Error, "SDK", "simulated camera: stream channel %u does not start: %s", channel,
                objection);
    return Status::NotAvailable;
}

void StreamChannels::StopAll() {
    {
        MutexLock lock(mutex_);
        acquiring_ = false;
    }
    for (const auto& channel : All())
        if (channel != nullptr)
            channel->Stop();
}

void StreamChannels::SetPaused(bool paused) {
    {
        MutexLock lock(mutex_);
        paused_ = paused;
    }
    if (paused)
        StopAll();
}

void StreamChannels::Written(std::uint32_t address, std::uint32_t value) {
    using namespace Bootstrap;
    if (address == CameraRegister::AcquisitionStop) {
        StopAll();
    } else if (address == CameraRegister::AcquisitionStart) {
        {
            MutexLock lock(mutex_);
            acquiring_ = true;
        }
        for (unsigned channel = 0; channel < MaxChannels; ++channel)
            (void)Start(channel);
    } else if (address >= StreamPort && address < StreamRegister(StreamPort, MaxChannels)) {
        const unsigned channel = (address - StreamPort) / StreamChannelStride;
        const std::uint32_t reg = address - channel * StreamChannelStride;
        bool acquiring = false;
        {
            MutexLock lock(mutex_);
            acquiring = acquiring_;
        }
        if (reg == StreamPacketSize && (value & Bootstrap::FireTestPacket) != 0)
            FireTestPacket(channel, value);
        else if (reg == StreamPort && value == 0 && At(channel) != nullptr)
            At(channel)->Stop();
        else if (reg == StreamPort && acquiring)
            (void)Start(channel);
    }
}

void StreamChannels::FireTestPacket(unsigned channel, std::uint32_t value) {
    (void)registers_.SetValue(Bootstrap::StreamRegister(Bootstrap::StreamPacketSize, channel),
                              value & ~Bootstrap::FireTestPacket);
    const std::uint32_t size = value & Bootstrap::PacketSizeMask;
    const auto stream = At(channel);
    if (stream != nullptr && sendsTestPackets_ && size <= largestTestPacket_)
        stream->SendTestPacket({Register(Bootstrap::StreamDestination, channel),
                                Register(Bootstrap::StreamPort, channel) & 0xFFFF},
                               size);
}

void StreamChannels::Resend(const Gvcp::ResendRequest& request, const NET_ENDPOINT& sender,
                            Resender::TimePoint now) {
    if (const auto channel = At(request.channel))
        channel->Resend(request, sender, now);
}

bool StreamChannels::ServeLateResends(Resender::TimePoint now) {
    bool waiting = false;
    for (const auto& channel : All())
        waiting = (channel != nullptr && channel->ServeLateResends(now)) || waiting;
    return waiting;
}

} // namespace Simulated
} // namespace VX3
