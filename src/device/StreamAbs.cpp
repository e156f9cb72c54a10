#include "device/StreamAbs.h"

#include "core/ExplainFailure.h"
#include "device/CallbackScope.h"
#include "vx3/core/Logger.h"
#include "vx3/core/Utilities.h"
#include "vx3/genicam/IConfigurer.h"

#include <utility>

namespace VX3 {

namespace {

constexpr unsigned int StreamTypeId = 0; // streams have no category of their own
constexpr unsigned long long DefaultPoolSize = 4294967296ULL;

using std::chrono::milliseconds;
using std::chrono::steady_clock;

} // namespace

StreamAbs::StreamAbs(const char* name, IDevice* parent, unsigned int streamIndex)
    : object_(std::make_unique<ObjectAbs>(StreamTypeId, name)),
      parent_(ParentLink::To(parent)),
      streamIndex_(streamIndex),
      delivery_(std::make_shared<ImageDelivery>(parent_, streamIndex)) {}

StreamAbs::~StreamAbs() {
    for (const auto& thread : {worker_, leaving_}) {
        if (!thread)
            continue;
        thread->RequestStop();
        delivery_->Wake();
        if (CallbackScope::Active())
            thread->Detach();
    }
}

// ---- open and close ----

StatusCode StreamAbs::Open(unsigned int bufferCount, std::shared_ptr<IImagePool> pool) {
    const ExplainFailure explain(Name());
    return explain(OpenWhenFree(bufferCount, std::move(pool)));
}

StatusCode StreamAbs::OpenWhenFree(unsigned int bufferCount, std::shared_ptr<IImagePool> pool) {
    for (;;) {
        std::shared_ptr<ThreadEx<>> leaving;
        {
            MutexLock lock(streamMutex_);
            if (opened_)
                return Status::AlreadyOpen;
            if (retired_)
                return Status::NotConnected;
            if (!leaving_ || leaving_->IsFinished())
                return OpenLocked(bufferCount, std::move(pool));
            leaving = leaving_;
        }
        if (CallbackScope::Active())
            return Status::AlreadyOpen;
        leaving->Stop();
    }
}

StatusCode StreamAbs::OpenLocked(unsigned int bufferCount, std::shared_ptr<IImagePool> pool) {
    leaving_.reset();
    delivery_->Prepare();
    worker_ = std::make_shared<ThreadEx<>>(
        [delivery = delivery_](const std::atomic<bool>& running) { delivery->Consume(running); });
    worker_->Start();
    opened_ = true;
    return OpenP(PoolOrDefault(std::move(pool)), bufferCount);
}

StatusCode StreamAbs::OpenP(std::shared_ptr<IImagePool>, unsigned int) {
    return Status::Ok;
}

StatusCode StreamAbs::Close() {
    std::shared_ptr<ThreadEx<>> worker;
    {
        MutexLock lock(streamMutex_);
        if (!opened_)
            return Status::NotOpen;
        if (IsStreamingP())
            return Status::StillStreaming;
        CloseP();
        opened_ = false;
        worker_->RequestStop();
        delivery_->Wake();
        worker = leaving_ = std::move(worker_);
        worker_.reset();
        defaultPool_.reset(); // a closed stream holds no memory in reserve
    }
    if (!CallbackScope::Active())
        worker->Stop();
    return Status::Ok;
}

void StreamAbs::Shutdown() {
    StreamAbs::Stop();
    StreamAbs::Close();
}

// ---- start and stop ----

std::shared_ptr<IImagePool> StreamAbs::PoolOrDefault(std::shared_ptr<IImagePool> pool) {
    if (pool)
        return pool;
    if (!defaultPool_)
        defaultPool_ = ImagePoolFactory::CreateRecycleImagePool(DefaultPoolSize, nullptr);
    return defaultPool_;
}

StatusCode StreamAbs::Start(ImageCallback callback, void* userData, unsigned int count,
                            std::shared_ptr<IImagePool> pool) {
    const ExplainFailure explain(Name());
    return explain(StartWhenOpen(std::move(callback), userData, count, std::move(pool)));
}

StatusCode StreamAbs::StartWhenOpen(ImageCallback callback, void* userData, unsigned int count,
                                    std::shared_ptr<IImagePool> pool) {
    MutexLock lock(streamMutex_);
    if (IsStreamingP())
        return Status::AlreadyStreaming;
    if (retired_)
        return Status::NotConnected;
    if (!opened_)
        return Status::NotOpen;
    startTime_ = steady_clock::now().time_since_epoch().count();
    fps_.Reset();
    delivery_->SetCallback(std::move(callback), userData);
    StatusCode status = StartStreamP(PoolOrDefault(std::move(pool)), count);
    if (Failed(status)) {
        StopStreamP();
        return status;
    }
    if (IDevice* parent = Parent()) {
        status = parent->StartAcquisition(streamIndex_);
        if (Failed(status)) // nothing will come: a stream that looked started would only be waited for
            StopStreamP();
        VxLoggerLog(LogLevel::Info, "SDK", "Ready to exit from StreamAbs::Start...");
    }
    return status;
}

StatusCode StreamAbs::Stop() {
    MutexLock lock(streamMutex_);
    if (!IsStreamingP())
        return Status::Ok;
    if (IDevice* parent = Parent()) {
        VxLoggerLog(LogLevel::Info, "SDK", "Ready to stop Acquisition...");
        parent->StopAcquisition(streamIndex_);
        VxLoggerLog(LogLevel::Info, "SDK", "Stop Acquisition OK");
    }
    StopStreamP();
    snap_.Wake();
    return Status::Ok;
}

std::chrono::steady_clock::time_point StreamAbs::StartTimePoint() {
    return steady_clock::time_point(steady_clock::duration(startTime_.load()));
}

// ---- images ----

void StreamAbs::InsertImage(std::unique_ptr<IImage>&& image, unsigned int) {
    std::shared_ptr<IImage> shared(std::move(image));
    if (!shared)
        return;
    snap_.Offer(shared);
    if (!delivery_->Push(std::move(shared)))
        if (LiveStatistics* statistics = GetStatistics())
            LiveStatistics::Add(statistics->droppedImages);
    fps_.Update(GetTimeStampLinux());
}

std::shared_ptr<IImage> StreamAbs::Snap(unsigned int timeoutMs, SnapMode) {
    if (!IsStreamingP())
        return nullptr;
    return snap_.Next(milliseconds(timeoutMs), [this] { return !IsStreamingP(); });
}

Statistics StreamAbs::GetStatistics() const {
    const LiveStatistics* live = const_cast<StreamAbs*>(this)->GetStatistics();
    return live != nullptr ? live->Snapshot() : Statistics();
}

StatusCode StreamAbs::SetHistoryFrames(unsigned int count, FrameType type) {
    if (IsStreamingP())
        return Status::WrongState;
    delivery_->SetHistory(count, type);
    return Status::Ok;
}

std::shared_ptr<IImage> StreamAbs::GetHistoryFrame(unsigned int index) {
    return IsStreamingP() ? nullptr : delivery_->HistoryFrame(index);
}

unsigned int StreamAbs::PayloadSize() const {
    if (const unsigned int size = PayloadSizeP())
        return size;
    IDevice* parent = parent_->Get();
    const auto configurer = parent != nullptr ? parent->ShareConfigurer() : nullptr;
    return configurer ? static_cast<unsigned int>(configurer->GetNodeValue("PayloadSize").AsInteger()) : 0;
}

} // namespace VX3
