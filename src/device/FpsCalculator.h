// Frames a second over the samples of the last second, at most N of them. Constant size.
#pragma once

#include "vx3/core/Mutex.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace VX3 {

template <std::size_t N>
class FpsCalculator {
public:
    static constexpr std::uint64_t TicksPerSecond = 976563; // ticks of 1024 ns, as GetTimeStampLinux counts

    void Reset() VX3_EXCLUDES(mutex_) {
        MutexLock lock(mutex_);
        position_ = 0;
        stamps_.fill(0);
        fps_ = 0.0;
    }

    // One frame at `now`.
    void Update(std::uint64_t now) VX3_EXCLUDES(mutex_) {
        MutexLock lock(mutex_);
        stamps_[position_] = now;
        position_ = (position_ + 1) % N;
        fps_ = Estimate(now);
    }

    double Get() const { return fps_; }

    // The rate as of `now`, at which no frame need have come: 0 when none came for a second.
    double Measure(std::uint64_t now) const VX3_EXCLUDES(mutex_) {
        MutexLock lock(mutex_);
        for (std::size_t k = 0; k < N; ++k)
            if (const std::uint64_t distance = now - stamps_[(position_ + k) % N]; distance < TicksPerSecond)
                return PerTicks(N - k, distance);
        return 0.0;
    }

private:
    // `position_` is the oldest sample, the one before it the newest. A clock that was set back makes
    // distances huge, and such samples count as old.
    double Estimate(std::uint64_t now) const VX3_REQUIRES(mutex_) {
        std::size_t k = 1;
        std::uint64_t distance = now - stamps_[position_];
        while (distance >= TicksPerSecond) {
            ++k;
            distance = now - stamps_[(position_ + k - 1) % N];
        }
        if (k >= N)
            return PerTicks(1, now - stamps_[(position_ + N - 2) % N]);
        return PerTicks(N - k, distance);
    }
    static double PerTicks(std::size_t frames, std::uint64_t ticks) {
        if (ticks == 0)
            return 0.0;
        return static_cast<double>(frames) * static_cast<double>(TicksPerSecond) / static_cast<double>(ticks);
    }

    mutable Mutex mutex_;
    std::size_t position_ VX3_GUARDED_BY(mutex_) = 0;
    std::array<std::uint64_t, N> stamps_ VX3_GUARDED_BY(mutex_){};
    std::atomic<double> fps_{0.0};
};

} // namespace VX3
