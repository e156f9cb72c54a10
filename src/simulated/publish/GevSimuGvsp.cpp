#include "simulated/publish/GevSimuGvsp.h"

#include "core/DefaultConfig.h"
#include "vx3/core/Logger.h"
#include "vx3/core/Utilities.h"

#include <utility>

namespace VX3 {

namespace {

Simulated::StreamScript ScriptOf(const GevSimuGvsp::Options& options) {
    Simulated::StreamScript script;
    static_cast<Simulated::StreamFaults&>(script) = options.faults;
    if (script.resendNotHeldStatus == 0)
        script.resendNotHeldStatus = Gvcp::AckStatus::PacketUnavailable;
    script.extendedIds = options.extendedIds;
    script.resendMemory = options.resendFrames;
    script.segmentation = options.segmentation;
    script.rememberRequests = false;
    return script;
}

} // namespace

GevSimuGvsp::~GevSimuGvsp() {
    Stop();
}

void GevSimuGvsp::SetOptions(const Options& options) {
    MutexLock lock(mutex_);
    options_ = options;
}

GevSimuGvsp::Running GevSimuGvsp::Current() const {
    MutexLock lock(mutex_);
    return running_;
}

StatusCode GevSimuGvsp::Start(const NET_ENDPOINT& source, const NET_ENDPOINT& destination,
                              std::uint32_t packetSize) {
    Stop();
    if (destination.ip == 0 || destination.port == 0 || destination.port > 0xFFFF)
        return Status::NotFound;
    Options options;
    {
        MutexLock lock(mutex_);
        options = options_;
    }
    std::shared_ptr<Simulated::StreamChannel> channel =
        Simulated::StreamChannel::Open(source.ip, static_cast<std::uint16_t>(source.port));
    if (channel == nullptr) // the port is somebody else's: the host is told the one that it is
        channel = Simulated::StreamChannel::Open(source.ip);
    if (channel == nullptr)
        return Status::OpenFailed;
    Simulated::StreamSetting setting;
    setting.destination = destination;
    setting.form = {packetSize, options.extendedIds};
    setting.packetDelay = options.packetDelay;
    auto blocks = std::make_shared<PushedBlocks>(setting.form);
    if (const char* objection = channel->Start(setting, ScriptOf(options), blocks)) {
        VxLoggerLog(LogLevel::Error, "SDK", "a published camera's stream does not start: %s", objection);
        return Status::NotFound;
    }
    rate_.Reset();
    limit_ = options.bandwidthLimit;
    MutexLock lock(mutex_);
    running_ = {std::move(channel), std::move(blocks), destination, options.extendedIds};
    return Status::Ok;
}

void GevSimuGvsp::Stop() {
    Running stopped;
    {
        MutexLock lock(mutex_);
        std::swap(stopped, running_);
    }
    if (stopped.channel == nullptr)
        return;
    stopped.blocks->Close();
    stopped.channel->Stop();
    const Simulated::StreamCounts counts = stopped.channel->Counts();
    MutexLock lock(mutex_);
    last_ = counts;
}

bool GevSimuGvsp::IsSending() const {
    MutexLock lock(mutex_);
    return running_.channel != nullptr;
}

std::uint16_t GevSimuGvsp::SourcePort() const {
    MutexLock lock(mutex_);
    return running_.channel != nullptr ? running_.channel->SourcePort() : std::uint16_t{0};
}

bool GevSimuGvsp::IsOverLimit(const IImage& image, std::uint64_t now) {
    const std::uint64_t limit = limit_;
    const double bits = 8.0 * image.GetImageInfo()->ImageDataSize();
    if (limit == 0 || bits * rate_.Measure(now) <= static_cast<double>(limit))
        return false;
    if (overLimit_++ == 0)
        VxLoggerLog(
            LogLevel::Warning, "SDK",
            "images of a published camera are dropped: its stream exceeds %llu bit/s; the configuration "
            "key \"%s\" sets another limit",
            static_cast<unsigned long long>(limit), ConfigKeys::SimuBandwidthLimit);
    return true;
}

StatusCode GevSimuGvsp::PushImage(std::shared_ptr<IImage> image) {
    const Running running = Current();
    if (running.blocks == nullptr || image == nullptr)
        return Status::Ok;
    if (PushedBlocks::Objection(*image) != nullptr)
        return Status::NotFound;
    const std::uint64_t now = GetTimeStampLinux();
    if (IsOverLimit(*image, now))
        return Status::Ok;
    rate_.Update(now);
    const StatusCode status = running.blocks->Push(std::move(image));
    if (Failed(status))
        ++overrun_;
    return status;
}

void GevSimuGvsp::ResendPacket(std::uint64_t blockId, std::uint32_t first, std::uint32_t last) {
    const Running running = Current();
    if (running.channel != nullptr)
        running.channel->Resend({running.extendedIds, blockId, first, last, 0}, running.destination,
                                std::chrono::steady_clock::now());
}

void GevSimuGvsp::Resend(const Gvcp::ResendRequest& request, const NET_ENDPOINT& sender,
                         Simulated::Resender::TimePoint now) {
    const Running running = Current();
    if (running.channel != nullptr)
        running.channel->Resend(request, sender, now);
}

bool GevSimuGvsp::ServeLateResends(Simulated::Resender::TimePoint now) {
    const Running running = Current();
    return running.channel != nullptr && running.channel->ServeLateResends(now);
}

GevSimuGvsp::Counts GevSimuGvsp::GetCounts() const {
    const Running running = Current();
    Counts counts;
    {
        MutexLock lock(mutex_);
        counts.stream = last_;
    }
    if (running.channel != nullptr)
        counts.stream = running.channel->Counts();
    counts.overLimit = overLimit_;
    counts.overrun = overrun_;
    return counts;
}

} // namespace VX3
