// Keeps a message that a lossy or hostile network can provoke at packet rate from drowning the log and the
// receive thread: ten a second pass. Owned by whoever logs; one thread.
#pragma once

#include <chrono>

namespace VX3 {

class LogLimiter {
public:
    using TimePoint = std::chrono::steady_clock::time_point;
    static constexpr unsigned PerSecond = 10;

    bool Allow(TimePoint now) {
        if (used_ >= PerSecond && now - since_ < std::chrono::seconds(1))
            return false;
        if (used_ == 0 || now - since_ >= std::chrono::seconds(1)) {
            since_ = now;
            used_ = 0;
        }
        ++used_;
        return true;
    }

private:
    TimePoint since_{};
    unsigned used_ = 0;
};

} // namespace VX3
