// A bounded first-in first-out hand-over between threads: a ring of N slots that holds at most N - 1 items.
#pragma once

#include "vx3/core/Mutex.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <utility>

namespace VX3 {

template <typename T, std::size_t N>
class SyncQueue {
public:
    static_assert(N >= 2, "a ring of N slots holds N - 1 items");

    // False, and `item` untouched, when the queue is full.
    bool Push(T&& item) VX3_EXCLUDES(mutex_) {
        MutexLock lock(mutex_);
        const std::size_t next = (write_ + 1) % N;
        if (next == read_)
            return false;
        slots_[write_] = std::move(item);
        write_ = next;
        notEmpty_.NotifyOne();
        return true;
    }

    // Takes the oldest item; false when none came within `timeout`, or when `abandon()` turned true and Wake
    // was called. `abandon` runs with the queue locked.
    template <typename Abandon>
    bool Pop(T& item, std::chrono::milliseconds timeout, Abandon abandon) VX3_EXCLUDES(mutex_) {
        const auto deadline = std::chrono::steady_clock::now() + timeout;
        MutexLock lock(mutex_);
        while (read_ == write_) {
            if (abandon() || std::chrono::steady_clock::now() >= deadline)
                return false;
            notEmpty_.WaitUntil(mutex_, deadline);
        }
        item = std::exchange(slots_[read_], T());
        read_ = (read_ + 1) % N;
        return true;
    }
    bool Pop(T& item, std::chrono::milliseconds timeout) {
        return Pop(item, timeout, [] { return false; });
    }

    // Makes waiting consumers look at their `abandon` again. Set what it reads first.
    void Wake() VX3_EXCLUDES(mutex_) {
        MutexLock lock(mutex_);
        notEmpty_.NotifyAll();
    }

    bool IsFull() const VX3_EXCLUDES(mutex_) {
        MutexLock lock(mutex_);
        return (write_ + 1) % N == read_;
    }
    bool IsEmpty() const { return Size() == 0; }
    std::size_t Size() const VX3_EXCLUDES(mutex_) {
        MutexLock lock(mutex_);
        return (write_ + N - read_) % N;
    }
    // Drops every item, outside the lock: an item's destructor may be anything.
    void Clear() {
        T item;
        while (Pop(item, std::chrono::milliseconds(0)))
            item = T();
    }

private:
    mutable Mutex mutex_;
    CondVar notEmpty_;
    std::array<T, N> slots_ VX3_GUARDED_BY(mutex_){};
    std::size_t read_ VX3_GUARDED_BY(mutex_) = 0;
    std::size_t write_ VX3_GUARDED_BY(mutex_) = 0;
};

} // namespace VX3
