// A module's handle that calls on several threads use and one closes: closing waits, for a bounded time,
// until nobody is inside a call with it.
#pragma once

#include "vx3/core/Mutex.h"

#include <chrono>
#include <functional>
#include <memory>
#include <utility>

namespace VX3 {

class GenTLHandle {
    struct State {
        Mutex mutex;
        CondVar released;
        void* handle VX3_GUARDED_BY(mutex) = nullptr;
        int users VX3_GUARDED_BY(mutex) = 0;
        std::function<void()> late VX3_GUARDED_BY(mutex); // closes what was still in use
    };

    static void Release(State& state) {
        std::function<void()> late;
        {
            MutexLock lock(state.mutex);
            if (--state.users == 0)
                late.swap(state.late);
            state.released.NotifyAll();
        }
        if (late)
            late();
    }

public:
    // Held while a call runs. False when the handle is closed.
    class Use {
    public:
        Use() = default;
        void* Get() const { return handle_.get(); }
        explicit operator bool() const { return handle_ != nullptr; }

    private:
        friend class GenTLHandle;
        explicit Use(std::shared_ptr<void> handle) : handle_(std::move(handle)) {}
        std::shared_ptr<void> handle_;
    };

    void Set(void* handle) {
        MutexLock lock(state_->mutex);
        state_->handle = handle;
    }
    bool IsOpen() const {
        MutexLock lock(state_->mutex);
        return state_->handle != nullptr;
    }
    Use Borrow() const {
        MutexLock lock(state_->mutex);
        if (state_->handle == nullptr)
            return Use();
        ++state_->users;
        return Use(std::shared_ptr<void>(state_->handle, [state = state_](void*) { Release(*state); }));
    }
    // Nobody gets it any more. What is to be closed, or null when it was closed already or is still in use
    // after `bound`: then `late` is called with it on the thread that lets it go.
    void* Take(std::chrono::milliseconds bound, std::function<void(void*)> late = {}) {
        const auto deadline = std::chrono::steady_clock::now() + bound;
        MutexLock lock(state_->mutex);
        void* handle = std::exchange(state_->handle, nullptr);
        while (state_->users > 0 && std::chrono::steady_clock::now() < deadline)
            state_->released.WaitUntil(state_->mutex, deadline);
        if (state_->users == 0)
            return handle;
        if (handle != nullptr && late)
            state_->late = [late = std::move(late), handle] { late(handle); };
        return nullptr;
    }

private:
    std::shared_ptr<State> state_ = std::make_shared<State>();
};

} // namespace VX3
