#include "device/TransitionGate.h"

#include "device/CallbackScope.h"

#include <chrono>

namespace VX3 {

bool TransitionGate::Enter() {
    MutexLock lock(mutex_);
    if (busy_ && (owner_ == std::this_thread::get_id() || CallbackScope::Active()))
        return false;
    while (busy_)
        left_.WaitFor(mutex_, std::chrono::milliseconds(500));
    busy_ = true;
    owner_ = std::this_thread::get_id();
    return true;
}

void TransitionGate::Leave() {
    MutexLock lock(mutex_);
    busy_ = false;
    owner_ = std::thread::id();
    left_.NotifyOne();
}

} // namespace VX3
