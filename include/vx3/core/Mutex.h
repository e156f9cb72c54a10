// std::mutex and std::condition_variable with the annotations that let clang check who holds what.
#pragma once

#include "vx3/core/ThreadAnnotations.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace VX3 {

class VX3_CAPABILITY("mutex") Mutex {
public:
    void lock() VX3_ACQUIRE() { mutex_.lock(); }
    void unlock() VX3_RELEASE() { mutex_.unlock(); }
    bool try_lock() VX3_TRY_ACQUIRE(true) { return mutex_.try_lock(); }
    std::mutex& Native() { return mutex_; }

private:
    std::mutex mutex_;
};

// Holds a Mutex for a scope.
class VX3_SCOPED_CAPABILITY MutexLock {
public:
    explicit MutexLock(Mutex& mutex) VX3_ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
    ~MutexLock() VX3_RELEASE() { mutex_.unlock(); }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

private:
    Mutex& mutex_;
};

class CondVar {
public:
    void NotifyOne() { condition_.notify_one(); }
    void NotifyAll() { condition_.notify_all(); }

    // Waits with `mutex` held; it is held again on return. False on time-out. May wake spuriously.
    bool WaitUntil(Mutex& mutex, std::chrono::steady_clock::time_point deadline) VX3_REQUIRES(mutex) {
        std::unique_lock<std::mutex> lock(mutex.Native(), std::adopt_lock);
        const bool inTime = condition_.wait_until(lock, deadline) == std::cv_status::no_timeout;
        lock.release();
        return inTime;
    }
    bool WaitFor(Mutex& mutex, std::chrono::milliseconds duration) VX3_REQUIRES(mutex) {
        return WaitUntil(mutex, std::chrono::steady_clock::now() + duration);
    }

private:
    std::condition_variable condition_;
};

} // namespace VX3
