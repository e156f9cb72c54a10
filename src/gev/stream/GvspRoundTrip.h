// How long a camera takes to answer a resend request, learnt from its first answers, and how long to wait
// before asking again. Owned by the resend bookkeeping; its thread only.
#pragma once

#include <algorithm>
#include <chrono>

namespace VX3 {

class GvspRoundTrip {
public:
    static constexpr std::chrono::microseconds ShortestRetry{500};
    static constexpr std::chrono::microseconds LongestRetry{40000};

    void Learn(std::chrono::nanoseconds took) {
        average_ += (std::chrono::duration_cast<std::chrono::microseconds>(took) - average_) / 8;
    }
    std::chrono::microseconds Average() const { return average_; }
    // After that many requests in vain; each wait is twice the one before.
    std::chrono::microseconds RetryDelay(unsigned attempts) const {
        const auto base = std::clamp(average_ * 3, ShortestRetry, LongestRetry);
        const unsigned doublings = attempts == 0 ? 0U : std::min(attempts - 1U, 5U);
        return std::min(base * (1 << doublings), LongestRetry);
    }

private:
    std::chrono::microseconds average_{1000};
};

} // namespace VX3
