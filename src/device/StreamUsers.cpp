#include "device/StreamUsers.h"

#include "device/CallbackScope.h"
#include "vx3/core/Logger.h"

#include <exception>
#include <utility>

namespace VX3 {

namespace {

void Call(const StreamUsers::Request& request, const std::shared_ptr<IImage>& image, IDevice* device,
          unsigned int streamIndex, unsigned int miscValue) {
    try {
        request.callback(image, device, streamIndex, miscValue, request.userData);
    } catch (const std::exception& error) {
        VxLoggerLog(LogLevel::Error, "SDK", "Image callback: %s", error.what());
    } catch (...) {
        VxLoggerLog(LogLevel::Error, "SDK", "Image callback: unknown exception");
    }
}

} // namespace

ImageCallback StreamUsers::Dispatcher(std::shared_ptr<StreamUsers> users) {
    return [users = std::move(users)](const std::shared_ptr<IImage>& image, IDevice* device,
                                      unsigned int streamIndex, unsigned int miscValue,
                                      void*) { users->Dispatch(image, device, streamIndex, miscValue); };
}

void StreamUsers::Dispatch(const std::shared_ptr<IImage>& image, IDevice* device, unsigned int streamIndex,
                           unsigned int miscValue) {
    for (const unsigned int user : {Local, Remote})
        if (const auto request = BeginCall(user)) {
            Call(*request, image, device, streamIndex, miscValue);
            EndCall();
        }
}

std::shared_ptr<const StreamUsers::Request> StreamUsers::BeginCall(unsigned int user) {
    MutexLock lock(mutex_);
    const auto& request = slots_[user].request;
    if (!request || !request->callback)
        return nullptr;
    called_ = user;
    return request;
}

void StreamUsers::EndCall() {
    MutexLock lock(mutex_);
    called_ = Every;
    callEnded_.NotifyAll();
}

// ---- who is there ----

bool StreamUsers::Enter(unsigned int user, Request request) {
    auto entering = std::make_shared<const Request>(std::move(request));
    std::shared_ptr<const Request> left; // released after the lock is gone
    MutexLock lock(mutex_);
    if (slots_[user].started)
        return false;
    slots_[user].started = true;
    slots_[user].request.swap(entering);
    Slot& other = slots_[Remote - user];
    if (!other.started)
        left.swap(other.request);
    return true;
}

bool StreamUsers::Leave(unsigned int user) {
    std::shared_ptr<const Request> left;
    MutexLock lock(mutex_);
    if (!slots_[user].started)
        return false;
    slots_[user].started = false;
    if (slots_[Remote - user].started)
        left.swap(slots_[user].request);
    return true;
}

void StreamUsers::Clear() {
    std::array<Slot, Every> left;
    MutexLock lock(mutex_);
    left.swap(slots_);
}

bool StreamUsers::HasStarted(unsigned int user) const {
    MutexLock lock(mutex_);
    return user == Every ? slots_[Local].started || slots_[Remote].started : slots_[user].started;
}

StreamUsers::Request StreamUsers::Remaining() const {
    MutexLock lock(mutex_);
    const auto& request = slots_[slots_[Local].started ? Local : Remote].request;
    return request ? *request : Request();
}

void StreamUsers::SetOpen(unsigned int user, bool open) {
    MutexLock lock(mutex_);
    slots_[user].open = open;
}

bool StreamUsers::HasOpen(unsigned int user) const {
    MutexLock lock(mutex_);
    return slots_[user].open;
}

void StreamUsers::Dismiss(unsigned int user) {
    std::shared_ptr<const Request> left;
    MutexLock lock(mutex_);
    slots_[user].started = false;
    left.swap(slots_[user].request);
    while (called_ == user && !CallbackScope::Active())
        callEnded_.WaitFor(mutex_, std::chrono::milliseconds(500));
}

} // namespace VX3
