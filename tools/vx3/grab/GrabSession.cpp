#include "grab/GrabSession.h"

#include "base/Interrupt.h"
#include "base/ToolError.h"
#include "vx3/core/LastFailure.h"
#include "vx3/core/Utilities.h"

#include <cstdio>
#include <sys/resource.h>

namespace VX3::Tool {

namespace {

using Clock = std::chrono::steady_clock;

// Frames that wait for the writer live outside the stream's own pool.
constexpr unsigned long long PoolReserveBytes = 256ULL * 1024 * 1024;
constexpr unsigned int StreamBuffers = 16; // for transports that announce buffers to their driver
constexpr std::chrono::milliseconds ProgressPeriod(200);

double CpuSeconds() {
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

double Seconds(Clock::duration duration) {
    return std::chrono::duration<double>(duration).count();
}

// The frame rate over the time between frames: n frames span n - 1 periods.
double FramesPerSecond(const GrabSummary& summary) {
    return summary.frames > 1 && summary.seconds > 0.0
               ? static_cast<double>(summary.frames - 1) / summary.seconds
               : 0.0;
}

double MegabitsPerSecond(const GrabSummary& summary) {
    return summary.frames == 0 ? 0.0
                               : FramesPerSecond(summary) * static_cast<double>(summary.bytes) * 8e-6 /
                                     static_cast<double>(summary.frames);
}

} // namespace

GrabSession::GrabSession(IDevice& camera, ImageWriter* writer, SoftwareTrigger* trigger,
                         const GrabLimits& limits)
    : camera_(camera),
      writer_(writer),
      trigger_(trigger),
      limits_(limits),
      patience_(limits.timeout + (trigger != nullptr ? 1.0 / trigger->Rate() : 0.0)) {}

GrabSession::~GrabSession() {
    StopStream();
}

void GrabSession::StopStream() {
    if (trigger_ != nullptr)
        trigger_->End();
    if (!open_)
        return;
    stream_->Stop();
    stream_->Close();
    open_ = false;
}

// On the delivery thread.
void GrabSession::OnImage(const std::shared_ptr<IImage>& image) {
    const ImageInfo& info = *image->GetImageInfo();
    std::uint64_t index = 0;
    {
        MutexLock lock(mutex_);
        if (limits_.frames != 0 && counted_.frames >= limits_.frames)
            return;
        last_ = Clock::now();
        if (counted_.frames == 0) {
            first_ = last_;
            counted_.firstBlock = info.blockId;
        } else if (info.blockId <= counted_.lastBlock && info.blockId != 1) { // 16-bit ids wrap to 1
            ++counted_.outOfOrder;
        }
        counted_.lastBlock = info.blockId;
        index = ++counted_.frames;
        counted_.bytes += info.ImageDataSize();
        if (info.lostPackets != 0)
            ++counted_.incomplete;
        counted_.format = PixelFormat(info.pixelFormat).ToString();
        counted_.width = info.width;
        counted_.height = info.height;
        arrived_.NotifyOne();
    }
    if (writer_ != nullptr)
        writer_->Push(image, index);
}

GrabSummary GrabSession::Snapshot() {
    const Statistics statistics = static_cast<const IStream*>(stream_)->GetStatistics();
    MutexLock lock(mutex_);
    GrabSummary summary = counted_;
    summary.lostPackets = statistics.missingPackets;
    summary.resentPackets = statistics.resentPackets;
    summary.lostFrames = statistics.lostBlocks;
    summary.droppedFrames = statistics.droppedImages;
    summary.seconds = summary.frames > 1 ? Seconds(last_ - first_) : 0.0;
    if (trigger_ != nullptr) {
        summary.triggers = trigger_->Count();
        summary.triggersPerSecond = trigger_->Attained();
    }
    return summary;
}

// The most telling first: a narrow terminal shows no more.
void GrabSession::ShowProgress(Clock::time_point started) {
    const GrabSummary now = Snapshot();
    const auto count = [](std::uint64_t number) { return std::to_string(number); };
    Console::Instance().Progress(
        {count(now.frames) + (limits_.frames == 0 ? "" : "/" + count(limits_.frames)) + " frames",
         StringFormat("%.1f/s", FramesPerSecond(now)), StringFormat("%.0f Mbit/s", MegabitsPerSecond(now)),
         count(now.incomplete) + " incomplete", StringFormat("%.0f s", Seconds(Clock::now() - started)),
         count(now.resentPackets) + " resent"});
}

std::string GrabSession::EndByFrames(Clock::time_point started) {
    MutexLock lock(mutex_);
    if (limits_.frames == 0 || counted_.frames < limits_.frames)
        arrived_.WaitUntil(mutex_, Clock::now() + ProgressPeriod / 4);
    if (limits_.frames != 0 && counted_.frames >= limits_.frames)
        return "done";
    if (limits_.duration > 0.0 && Seconds(Clock::now() - started) >= limits_.duration)
        return limits_.frames == 0 ? "done" : "duration";
    const Clock::time_point heard = counted_.frames == 0 ? started : last_;
    return Seconds(Clock::now() - heard) > patience_ ? "timeout" : "";
}

std::string GrabSession::EndByOthers() const {
    if (Interrupted())
        return "interrupted";
    if (camera_.DeviceState() == DEVICE_STATE::Lost)
        return "lost";
    return trigger_ != nullptr && !trigger_->FailureText().empty() ? "trigger" : "";
}

std::string GrabSession::WaitForEnd(Clock::time_point started) {
    Clock::time_point shown;
    while (true) {
        std::string end = EndByFrames(started);
        if (end.empty())
            end = EndByOthers();
        if (!end.empty())
            return end;
        if (Clock::now() - shown >= ProgressPeriod) {
            shown = Clock::now();
            ShowProgress(started);
        }
    }
}

// No frame came for long: a camera that does not even take the order to stop is gone, although its heartbeat
// may not have noticed yet.
bool GrabSession::IsSilent() const {
    IConfigurer* configurer = camera_.GetConfigurer();
    if (configurer == nullptr || camera_.DeviceState() == DEVICE_STATE::Lost)
        return camera_.DeviceState() == DEVICE_STATE::Lost;
    if (!Failed(configurer->SetNodeValue("AcquisitionStop", GenICam::CommandValue())))
        return false;
    const StatusCode cause = LastFailure().code; // of the register behind the command
    return cause == Status::TimeOut || cause == Status::DeviceLost || cause == Status::NotConnected;
}

void GrabSession::Start() {
    stream_ = camera_.GetStream(0);
    if (stream_ == nullptr)
        throw ToolError(camera_.Name() + " has no stream");
    const auto pool = ImagePoolFactory::CreateRecycleImagePool(PoolReserveBytes, "vx3 grab");
    StatusCode code = stream_->Open(StreamBuffers, pool);
    open_ = code != Status::AlreadyOpen;
    if (Failed(code))
        throw ToolError("the stream of " + camera_.Name() + " could not be opened", code);
    code = stream_->Start(
        [this](std::shared_ptr<IImage> image, IDevice*, unsigned int, unsigned int, void*) {
            if (image)
                OnImage(image);
        },
        nullptr, 0, pool);
    if (Failed(code))
        throw ToolError("the stream of " + camera_.Name() + " could not be started", code);
    if (trigger_ != nullptr)
        trigger_->Begin();
}

GrabSummary GrabSession::Run() {
    const double cpuBefore = CpuSeconds();
    Start();
    const Clock::time_point started = Clock::now();
    std::string end = WaitForEnd(started);
    ShowProgress(started);
    const double cpuSeconds = CpuSeconds() - cpuBefore;
    GrabSummary summary = Snapshot();
    if (end == "timeout" && IsSilent()) {
        end = "lost";
        camera_.Interrupt(); // the rest of its orders would only be waited for
    }
    StopStream();
    Console::Instance().EndProgress();
    summary.end = end;
    summary.cpuSeconds = cpuSeconds;
    if (summary.frames < 2)
        summary.seconds = Seconds(Clock::now() - started);
    return summary;
}

Json ToJson(const GrabSummary& summary) {
    Json json = {{"frames", summary.frames},
                 {"incomplete", summary.incomplete},
                 {"lost_packets", summary.lostPackets},
                 {"resent_packets", summary.resentPackets},
                 {"lost_frames", summary.lostFrames},
                 {"dropped_frames", summary.droppedFrames},
                 {"out_of_order", summary.outOfOrder},
                 {"seconds", summary.seconds},
                 {"bytes", summary.bytes},
                 {"cpu_seconds", summary.cpuSeconds},
                 {"frames_per_second", FramesPerSecond(summary)},
                 {"megabits_per_second", MegabitsPerSecond(summary)},
                 {"first_block", summary.firstBlock},
                 {"last_block", summary.lastBlock},
                 {"width", summary.width},
                 {"height", summary.height},
                 {"pixel_format", summary.format},
                 {"end", summary.end}};
    if (summary.triggers != 0)
        json.update({{"triggers", summary.triggers}, {"triggers_per_second", summary.triggersPerSecond}});
    return json;
}

void PrintSummary(std::ostream& out, const GrabSummary& summary) {
    char text[400];
    std::snprintf(text, sizeof(text),
                  "%llu frames of %u x %u %s in %.3f s: %.2f frames/s, %.1f Mbit/s, %.3f s of CPU\n"
                  "%llu incomplete, %llu packets lost, %llu asked for again, %llu frames lost whole, "
                  "%llu dropped, %llu out of order\n",
                  static_cast<unsigned long long>(summary.frames), summary.width, summary.height,
                  summary.format.c_str(), summary.seconds, FramesPerSecond(summary),
                  MegabitsPerSecond(summary), summary.cpuSeconds,
                  static_cast<unsigned long long>(summary.incomplete),
                  static_cast<unsigned long long>(summary.lostPackets),
                  static_cast<unsigned long long>(summary.resentPackets),
                  static_cast<unsigned long long>(summary.lostFrames),
                  static_cast<unsigned long long>(summary.droppedFrames),
                  static_cast<unsigned long long>(summary.outOfOrder));
    out << text;
}

} // namespace VX3::Tool
