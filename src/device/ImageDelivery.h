// The delivery side of a stream: the queue that transports fill, the client's callback and the history of
// recent frames. Shared by the stream and its delivery thread, so that the thread never needs the stream.
#pragma once

#include "device/ParentLink.h"
#include "device/SyncQueue.h"
#include "vx3/core/Mutex.h"
#include "vx3/device/IStream.h"

#include <atomic>
#include <deque>
#include <memory>

namespace VX3 {

class ImageDelivery {
public:
    ImageDelivery(std::shared_ptr<ParentLink> parent, unsigned int streamIndex);

    // The body of the delivery thread: hands images to the callback until `running` is cleared (then Wake).
    void Consume(const std::atomic<bool>& running);
    // False when 63 images wait already.
    bool Push(std::shared_ptr<IImage>&& image) { return queue_.Push(std::move(image)); }
    void Wake() { queue_.Wake(); }

    // Before a stream is opened again: nobody is called, not even for what is left of an earlier run, until
    // the next SetCallback.
    void Prepare() VX3_EXCLUDES(mutex_);
    // Also forgets the history.
    void SetCallback(ImageCallback callback, void* userData) VX3_EXCLUDES(mutex_);
    void SetHistory(unsigned int count, FrameType type) VX3_EXCLUDES(mutex_);
    std::shared_ptr<IImage> HistoryFrame(unsigned int index) const VX3_EXCLUDES(mutex_);

private:
    struct Client {
        ImageCallback callback;
        void* userData = nullptr;
    };

    void Deliver(const std::shared_ptr<IImage>& image) VX3_EXCLUDES(mutex_);
    void Remember(const std::shared_ptr<IImage>& image) VX3_REQUIRES(mutex_);

    const std::shared_ptr<ParentLink> parent_;
    const unsigned int streamIndex_;
    SyncQueue<std::shared_ptr<IImage>, 64> queue_;
    mutable Mutex mutex_;
    std::shared_ptr<const Client> client_ VX3_GUARDED_BY(mutex_);
    unsigned int historyCount_ VX3_GUARDED_BY(mutex_) = 0;
    FrameType historyType_ VX3_GUARDED_BY(mutex_) = static_cast<FrameType>(0);
    std::deque<std::shared_ptr<IImage>> history_ VX3_GUARDED_BY(mutex_);
};

} // namespace VX3
