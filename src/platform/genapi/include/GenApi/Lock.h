// The recursive lock of a node map and its holder for a scope.
#pragma once

#include <mutex>

namespace GenApi_3_2 {

class CLock {
public:
    CLock() = default;
    CLock(const CLock&) = delete;
    CLock& operator=(const CLock&) = delete;
    bool TryLock() { return mutex_.try_lock(); }
    void Lock() { mutex_.lock(); }
    void Unlock() { mutex_.unlock(); }

private:
    std::recursive_mutex mutex_;
};

class AutoLock {
public:
    explicit AutoLock(CLock& lock) : lock_(lock) { lock_.Lock(); }
    ~AutoLock() { lock_.Unlock(); }
    AutoLock(const AutoLock&) = delete;
    AutoLock& operator=(const AutoLock&) = delete;

private:
    CLock& lock_;
};

} // namespace GenApi_3_2
