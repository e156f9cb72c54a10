// One-byte lock for sections of a few instructions.
#pragma once

#include "vx3/core/ThreadAnnotations.h"

#include <atomic>

namespace VX3 {

class VX3_CAPABILITY("spin lock") SpinLock {
public:
    void lock() VX3_ACQUIRE() {
        while (flag_.exchange(true, std::memory_order_acquire)) {
        }
    }
    void unlock() VX3_RELEASE() { flag_.store(false, std::memory_order_release); }

private:
    std::atomic<bool> flag_{false};
};

class VX3_SCOPED_CAPABILITY SpinGuard {
public:
    explicit SpinGuard(SpinLock& lock) VX3_ACQUIRE(lock) : lock_(lock) { lock_.lock(); }
    ~SpinGuard() VX3_RELEASE() { lock_.unlock(); }
    SpinGuard(const SpinGuard&) = delete;
    SpinGuard& operator=(const SpinGuard&) = delete;

private:
    SpinLock& lock_;
};

} // namespace VX3
