// One run of a camera's stream: counts frames as they arrive, hands them to the writer, shows progress, and
// sums up. Owned by the verb.
#pragma once

#include "base/Console.h"
#include "grab/ImageWriter.h"
#include "grab/SoftwareTrigger.h"
#include "vx3/core/Mutex.h"
#include "vx3/device/IDevice.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

namespace VX3::Tool {

struct GrabLimits {
    std::uint64_t frames = 1; // 0: any number
    double duration = 0.0;    // seconds after which the run ends; 0: none
    double timeout = 5.0;     // seconds without a frame after which the run ends
};

struct GrabSummary {
    std::uint64_t frames = 0;
    std::uint64_t incomplete = 0;
    std::uint64_t lostPackets = 0;
    std::uint64_t resentPackets = 0;
    std::uint64_t lostFrames = 0;    // nothing of them arrived
    std::uint64_t droppedFrames = 0; // the delivery queue was full
    std::uint64_t bytes = 0;
    std::uint64_t firstBlock = 0;
    std::uint64_t lastBlock = 0;
    std::uint64_t outOfOrder = 0; // block ids that did not grow
    double seconds = 0.0;    // from the first to the last frame, or of the run when there are fewer than two
    double cpuSeconds = 0.0; // of this process while streaming
    std::string format;      // of the last frame
    unsigned int width = 0;
    unsigned int height = 0;
    std::uint64_t triggers = 0; // sent by software
    double triggersPerSecond = 0.0;
    // Why the run ended: "done" (all frames, or the duration where no number was asked for), "duration"
    // before all frames came, "interrupted", "timeout", "lost" or "trigger" (the camera refused one).
    std::string end;
};

class GrabSession {
public:
    // `writer` may be null: frames are only counted. `trigger` may be null: the camera frees its own frames.
    GrabSession(IDevice& camera, ImageWriter* writer, SoftwareTrigger* trigger, const GrabLimits& limits);
    ~GrabSession();
    GrabSession(const GrabSession&) = delete;
    GrabSession& operator=(const GrabSession&) = delete;

    // Opens, streams until a limit is reached, stops. Throws ToolError when the stream does not start.
    GrabSummary Run();

private:
    void OnImage(const std::shared_ptr<IImage>& image) VX3_EXCLUDES(mutex_);
    void Start();
    std::string WaitForEnd(std::chrono::steady_clock::time_point started) VX3_EXCLUDES(mutex_);
    // Empty while the run goes on.
    std::string EndByFrames(std::chrono::steady_clock::time_point started) VX3_EXCLUDES(mutex_);
    std::string EndByOthers() const;
    bool IsSilent() const;
    void ShowProgress(std::chrono::steady_clock::time_point started) VX3_EXCLUDES(mutex_);
    GrabSummary Snapshot() VX3_EXCLUDES(mutex_);
    void StopStream();

    IDevice& camera_;
    ImageWriter* writer_;
    SoftwareTrigger* trigger_;
    const GrabLimits limits_;
    // The time-out; where frames are triggered more seldom, they are waited for as long.
    const double patience_;
    IStream* stream_ = nullptr;
    bool open_ = false;
    Mutex mutex_;
    CondVar arrived_;
    GrabSummary counted_ VX3_GUARDED_BY(mutex_);
    std::chrono::steady_clock::time_point first_ VX3_GUARDED_BY(mutex_);
    std::chrono::steady_clock::time_point last_ VX3_GUARDED_BY(mutex_);
};

Json ToJson(const GrabSummary& summary);
void PrintSummary(std::ostream& out, const GrabSummary& summary);

} // namespace VX3::Tool
