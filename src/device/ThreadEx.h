// One worker thread with a cooperative stop flag. Owned by the object whose work it does.
//
//   idle --Start--> running --(body returns | Stop)--> finished --Start--> running ...
//
// Stop clears the flag and waits for the body to end. Called on the worker itself it only clears the flag, so
// that a client's callback may stop the thread it runs on. Start, Stop and the destructor may be called from
// any thread, also at the same time (Start and the destructor not at once, of course).
#pragma once

#include "vx3/core/Mutex.h"

#include <atomic>
#include <functional>
#include <memory>
#include <thread>
#include <tuple>
#include <utility>

namespace VX3 {

template <typename... Args>
class ThreadEx {
public:
    using Body = std::function<void(const std::atomic<bool>& running, Args...)>;
    using Completion = std::function<void()>;

    // `completion` runs on the worker when the body ended without having been told to stop.
    explicit ThreadEx(Body body, Completion completion = {}) : state_(std::make_shared<State>()) {
        state_->body = std::move(body);
        state_->completion = std::move(completion);
    }
    ThreadEx(const ThreadEx&) = delete;
    ThreadEx& operator=(const ThreadEx&) = delete;

    // Joins; on the worker itself lets the thread go, which then must not touch its owner again.
    ~ThreadEx() {
        Stop();
        Detach();
    }

    // False when the body runs already.
    bool Start(Args... args) VX3_EXCLUDES(mutex_) {
        MutexLock lock(mutex_);
        if (thread_.joinable()) {
            if (!state_->finished)
                return false;
            thread_.join();
        }
        state_->finished = false;
        state_->running = true;
        thread_ = std::thread([state = state_](auto... values) { Run(*state, std::move(values)...); },
                              std::move(args)...);
        return true;
    }

    void Stop() VX3_EXCLUDES(mutex_) {
        RequestStop();
        if (IsCurrentThread())
            return;
        MutexLock lock(mutex_);
        if (thread_.joinable())
            thread_.join();
    }

    // Clears the flag without waiting.
    void RequestStop() { state_->running = false; }

    // Lets the thread end on its own. The body must not use anything that dies before it.
    void Detach() VX3_EXCLUDES(mutex_) {
        RequestStop();
        MutexLock lock(mutex_);
        if (thread_.joinable())
            thread_.detach();
    }

    // True from Start until a stop is requested, even when the body has ended by itself.
    bool IsRunning() const { return state_->running; }
    // True before the first Start and after the body ended.
    bool IsFinished() const { return state_->finished; }
    bool IsCurrentThread() const { return state_->worker == std::this_thread::get_id(); }

private:
    struct State {
        Body body;
        Completion completion;
        std::atomic<bool> running{false};
        std::atomic<bool> finished{true};
        std::atomic<std::thread::id> worker{};
    };

    // The thread keeps the state alive by its own reference.
    static void Run(State& state, Args... args) {
        state.worker = std::this_thread::get_id();
        state.body(state.running, std::move(args)...);
        state.worker = std::thread::id();
        state.finished = true;
        if (state.running && state.completion)
            state.completion();
    }

    std::shared_ptr<State> state_;
    Mutex mutex_;
    std::thread thread_ VX3_GUARDED_BY(mutex_);
};

} // namespace VX3
