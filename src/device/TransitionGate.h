// Lets one thread at a time through a device's connect or disconnect. Unlike a mutex it refuses a caller
// whose waiting could never end: the thread inside (re-entry), and a thread inside an image callback, which
// the thread inside may be joining.
#pragma once

#include "vx3/core/Mutex.h"

#include <thread>

namespace VX3 {

class TransitionGate {
public:
    // Holds the gate for a scope when it converts to true.
    class Pass {
    public:
        explicit Pass(TransitionGate& gate) : gate_(gate), entered_(gate.Enter()) {}
        ~Pass() {
            if (entered_)
                gate_.Leave();
        }
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;
        explicit operator bool() const { return entered_; }

    private:
        TransitionGate& gate_;
        bool entered_;
    };

private:
    bool Enter() VX3_EXCLUDES(mutex_);
    void Leave() VX3_EXCLUDES(mutex_);

    Mutex mutex_;
    CondVar left_;
    bool busy_ VX3_GUARDED_BY(mutex_) = false;
    std::thread::id owner_ VX3_GUARDED_BY(mutex_);
};

} // namespace VX3
