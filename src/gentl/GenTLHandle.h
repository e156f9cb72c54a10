// A module's handle that calls on several threads use and one closes: closing waits, for a bounded time,
// until nobody is inside a call with it. Copies are the same handle.
#pragma once

#include "vx3/core/Mutex.h"

#include <chrono>
#include <functional>
#include <memory>
#include <utility>

namespace VX3 {

class GenTLHandle {
    // From one Set to the next Take.
    struct Opening {
        void* handle = nullptr;
        int users = 0;
        std::function<void(void*)> late; // closes what was still in use
    };
    struct State {
        Mutex mutex;
        CondVar released;
        std::shared_ptr<Opening> opening VX3_GUARDED_BY(mutex) = std::make_shared<Opening>();
    };

    static void Release(State& state, Opening& opening) {
        std::function<void(void*)> late;
        {
            MutexLock lock(state.mutex);
            if (--opening.users == 0)
                late.swap(opening.late);
            state.released.NotifyAll();
        }
        if (late)
            late(opening.handle);
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
        state_->opening->handle = handle;
    }
    bool IsOpen() const {
        MutexLock lock(state_->mutex);
        return state_->opening->handle != nullptr;
    }
    Use Borrow() const {
        MutexLock lock(state_->mutex);
        const auto opening = state_->opening;
        if (opening->handle == nullptr)
            return Use();
        ++opening->users;
        return Use(std::shared_ptr<void>(opening->handle,
                                         [state = state_, opening](void*) { Release(*state, *opening); }));
    }
    // Nobody gets it any more. What is to be closed, or null when it was closed already or is still in use
    // after `bound`: then `late` is called with it on the thread that lets it go.
    void* Take(std::chrono::milliseconds bound, std::function<void(void*)> late = {}) {
        const auto deadline = std::chrono::steady_clock::now() + bound;
        MutexLock lock(state_->mutex);
        const auto opening = std::exchange(state_->opening, std::make_shared<Opening>());
        while (opening->users > 0 && std::chrono::steady_clock::now() < deadline)
            state_->released.WaitUntil(state_->mutex, deadline);
        if (opening->users == 0)
            return opening->handle;
        opening->late = std::move(late);
        return nullptr;
    }

private:
    std::shared_ptr<State> state_ = std::make_shared<State>();
};

} // namespace VX3
