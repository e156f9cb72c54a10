// What every stream has: the open/start/stop/close sequence, delivery to the client, snap, history and frame
// rate. A transport derives from it, receives images on threads of its own and gives each to InsertImage.
//
// Open, Start, Stop and Close are serialised by one lock that is never held while a delivery thread is
// joined, so all four may be called from any thread, the image callback included. Inside a callback Close
// does not wait for the delivery thread, which ends when the callback returns; Open then says AlreadyOpen
// until it has ended.
//
// Destruction: the destructor of each concrete class calls Shutdown() first, while its own parts still exist.
// StopStreamP must join the transport's threads, so that none inserts images afterwards.
#pragma once

#include "core/ObjectAbs.h"
#include "device/FpsCalculator.h"
#include "device/ImageDelivery.h"
#include "device/SnapPoint.h"
#include "device/ThreadEx.h"
#include "vx3/core/Mutex.h"
#include "vx3/device/IStream.h"

#include <atomic>
#include <memory>
#include <string>

namespace VX3 {

class StreamAbs : public IStream {
public:
    StreamAbs(const char* name, IDevice* parent, unsigned int streamIndex);
    ~StreamAbs() override;
    StreamAbs(const StreamAbs&) = delete;
    StreamAbs& operator=(const StreamAbs&) = delete;

    std::string Name() const override { return object_->Name(); }
    std::uint64_t ObjID() const override { return object_->ObjID(); }
    bool IsConfigurable() const override { return object_->IsConfigurable(); }
    IConfigurer* GetConfigurer() override { return object_->GetConfigurer(); }
    unsigned int ObjType() const override { return object_->ObjType(); }
    std::list<std::pair<std::string, std::string>> GetInfo() const override { return object_->GetInfo(); }
    unsigned int TypeId() const override { return object_->TypeId(); }

    StatusCode Open(unsigned int bufferCount, std::shared_ptr<IImagePool> pool) override
        VX3_EXCLUDES(streamMutex_);
    StatusCode Start(ImageCallback callback, void* userData, unsigned int count,
                     std::shared_ptr<IImagePool> pool) override VX3_EXCLUDES(streamMutex_);
    StatusCode Stop() override VX3_EXCLUDES(streamMutex_);
    StatusCode Close() override VX3_EXCLUDES(streamMutex_);
    // Stops whoever started it; the same as Stop where a stream has one user.
    virtual StatusCode StopA() { return StreamAbs::Stop(); }
    StatusCode Pause() override { return Status::NotSupported; }
    StatusCode Restart() override { return Status::NotSupported; }
    // A Stop ends the wait early.
    std::shared_ptr<IImage> Snap(unsigned int timeoutMs, SnapMode mode) override;
    Statistics GetStatistics() const override;
    using IStream::GetStatistics; // the transport's live counters
    // Null once the device has been destroyed.
    IDevice* Parent() override { return parent_->Get(); }
    bool IsStreamingLocally() const override { return IsStreaming(); }
    bool IsStreaming() const override { return IsStreamingP(); }
    unsigned int StreamIndex() const override { return streamIndex_; }
    double Fps() const override { return fps_.Get(); }
    std::chrono::steady_clock::time_point StartTimePoint() override;
    StatusCode SetHistoryFrames(unsigned int count, FrameType type) override;
    std::shared_ptr<IImage> GetHistoryFrame(unsigned int index) override;
    unsigned int PayloadSize() const override;

    bool IsOpened() const { return opened_; }
    // Its device has dropped it: it can neither be opened nor started any more.
    void Retire() { retired_ = true; }

protected:
    unsigned int PayloadSizeP() const override { return 0; }
    [[nodiscard]] StatusCode OpenP(std::shared_ptr<IImagePool> pool, unsigned int bufferCount) override;
    StatusCode CloseP() override { return Status::Ok; }

    // A finished image from the transport's receive thread, one at a time. Never blocks: an image that finds
    // the delivery queue full is dropped and counted.
    void InsertImage(std::unique_ptr<IImage>&& image, unsigned int unused);
    // Stops and closes. Idempotent.
    void Shutdown();

private:
    StatusCode OpenWhenFree(unsigned int bufferCount, std::shared_ptr<IImagePool> pool)
        VX3_EXCLUDES(streamMutex_);
    StatusCode StartWhenOpen(ImageCallback callback, void* userData, unsigned int count,
                             std::shared_ptr<IImagePool> pool) VX3_EXCLUDES(streamMutex_);
    [[nodiscard]] StatusCode OpenLocked(unsigned int bufferCount, std::shared_ptr<IImagePool> pool)
        VX3_REQUIRES(streamMutex_);
    std::shared_ptr<IImagePool> PoolOrDefault(std::shared_ptr<IImagePool> pool) VX3_REQUIRES(streamMutex_);

    std::unique_ptr<ObjectAbs> object_;
    FpsCalculator<128> fps_;
    std::shared_ptr<ParentLink> parent_;
    const unsigned int streamIndex_;
    Mutex streamMutex_;
    SnapPoint snap_;
    std::shared_ptr<IImagePool> defaultPool_ VX3_GUARDED_BY(streamMutex_); // made when first needed
    std::shared_ptr<ImageDelivery> delivery_;
    std::atomic<bool> opened_{false};
    std::atomic<bool> retired_{false};
    // The delivery thread, and one that was told to end and may still be in a callback.
    std::shared_ptr<ThreadEx<>> worker_ VX3_GUARDED_BY(streamMutex_);
    std::shared_ptr<ThreadEx<>> leaving_ VX3_GUARDED_BY(streamMutex_);
    std::atomic<std::chrono::steady_clock::rep> startTime_{0};
};

} // namespace VX3
