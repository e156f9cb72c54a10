// The two users of one stream: who has it open, who has started it, and whom its images go to. Shared by the
// stream and the callback that its delivery thread runs, so that the thread never needs the stream.
#pragma once

#include "vx3/core/Mutex.h"
#include "vx3/device/IStream.h"

#include <array>
#include <memory>

namespace VX3 {

class StreamUsers {
public:
    static constexpr unsigned int Local = 0;
    static constexpr unsigned int Remote = 1;
    static constexpr unsigned int Every = 2; // both, where an operation says so

    // What a user starts the stream with.
    struct Request {
        ImageCallback callback;
        void* userData = nullptr;
        unsigned int frames = 0;
        std::shared_ptr<IImagePool> pool;
    };

    // The callback of the delivery thread: hands each image to the local user, then to the remote one. What
    // one of them throws does not keep it from the other.
    static ImageCallback Dispatcher(std::shared_ptr<StreamUsers> users);

    // False when that user has started the stream already.
    bool Enter(unsigned int user, Request request) VX3_EXCLUDES(mutex_);
    // False when that user had not started it. Images that wait for delivery still reach a user who leaves as
    // the last one; from one whom the other survives they are kept.
    bool Leave(unsigned int user) VX3_EXCLUDES(mutex_);
    // Nobody has started it, nobody has it open, nobody is called any more.
    void Clear() VX3_EXCLUDES(mutex_);
    // Every: any of them.
    bool HasStarted(unsigned int user) const VX3_EXCLUDES(mutex_);
    // What the stream goes on with: of the local user where he has started it.
    Request Remaining() const VX3_EXCLUDES(mutex_);

    void SetOpen(unsigned int user, bool open) VX3_EXCLUDES(mutex_);
    bool HasOpen(unsigned int user) const VX3_EXCLUDES(mutex_);

    // After it the user is not called any more; waits for a call that runs, except inside an image callback.
    void Dismiss(unsigned int user) VX3_EXCLUDES(mutex_);

private:
    struct Slot {
        bool open = false;
        bool started = false;
        std::shared_ptr<const Request> request; // also of a user who left as the last
    };

    void Dispatch(const std::shared_ptr<IImage>& image, IDevice* device, unsigned int streamIndex,
                  unsigned int miscValue) VX3_EXCLUDES(mutex_);
    std::shared_ptr<const Request> BeginCall(unsigned int user) VX3_EXCLUDES(mutex_);
    void EndCall() VX3_EXCLUDES(mutex_);

    mutable Mutex mutex_;
    CondVar callEnded_;
    std::array<Slot, Every> slots_ VX3_GUARDED_BY(mutex_);
    unsigned int called_ VX3_GUARDED_BY(mutex_) = Every; // the user whose callback runs, or nobody
};

} // namespace VX3
