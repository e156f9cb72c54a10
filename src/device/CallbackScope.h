// Marks a thread that is inside a client's image callback. Such a thread never waits for a delivery thread,
// its own or another's, nor for a thread that may be waiting for one.
#pragma once

namespace VX3 {

class CallbackScope {
public:
    CallbackScope() { ++depth_; }
    ~CallbackScope() { --depth_; }
    CallbackScope(const CallbackScope&) = delete;
    CallbackScope& operator=(const CallbackScope&) = delete;

    static bool Active() { return depth_ > 0; }

private:
    static inline thread_local int depth_ = 0;
};

} // namespace VX3
