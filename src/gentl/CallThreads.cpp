#include "gentl/CallThreads.h"

#include "vx3/core/Logger.h"

#include <cstdlib>
#include <exception>
#include <thread>
#include <vector>

namespace VX3 {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

namespace {
// Far more than ever call at once; a client with more threads waits its turn as if the producer were slow.
constexpr std::size_t MaxThreads = 64;
} // namespace

struct CallThreads::Task {
    std::function<void()> job;
    std::function<void()> late;
    std::string owner;
    const char* what = "";
    std::atomic<const char*> call{""};
    bool blocks = true;
    const steady_clock::time_point begin = steady_clock::now();
    mutable Mutex mutex;
    CondVar changed;
    bool ended VX3_GUARDED_BY(mutex) = false;
    bool abandoned VX3_GUARDED_BY(mutex) = false;
};

struct CallThreads::Worker {
    std::thread thread;
    std::shared_ptr<Task> task; // guarded by Shared::mutex
};

struct CallThreads::Shared {
    Mutex mutex;
    CondVar work;
    std::vector<std::shared_ptr<Worker>> workers VX3_GUARDED_BY(mutex);
    std::vector<std::shared_ptr<Worker>> idle VX3_GUARDED_BY(mutex);
    bool ending VX3_GUARDED_BY(mutex) = false;
    std::atomic<int> overdue{0};
};

namespace {
// An abandoned job may come back when the process is ending, and with it all that the library has: it goes no
// further then.
std::atomic<bool> g_exiting{false};

void ParkAtExit() {
    static const bool registered = [] {
        std::atexit([] { g_exiting = true; });
        return true;
    }();
    (void)registered;
}

void ParkWhenExiting() {
    while (g_exiting)
        std::this_thread::sleep_for(std::chrono::hours(1));
}

thread_local const void* t_owner = nullptr;              // the threads this one belongs to
thread_local std::atomic<const char*>* t_call = nullptr; // of the job that runs
} // namespace

CallThreads::CallThreads(std::string owner) : owner_(std::move(owner)), shared_(std::make_shared<Shared>()) {
    ParkAtExit();
}

CallThreads::~CallThreads() {
    std::vector<std::shared_ptr<Worker>> workers;
    std::vector<bool> busy;
    {
        MutexLock lock(shared_->mutex);
        shared_->ending = true;
        workers.swap(shared_->workers);
        for (const auto& worker : workers)
            busy.push_back(worker->task != nullptr);
        shared_->work.NotifyAll();
    }
    for (std::size_t i = 0; i < workers.size(); ++i)
        if (busy[i] || workers[i]->thread.get_id() == std::this_thread::get_id())
            workers[i]->thread.detach();
        else
            workers[i]->thread.join();
}

bool CallThreads::IsHung() const {
    return shared_->overdue > 0;
}

void CallThreads::NoteCall(const char* name) {
    if (t_call != nullptr)
        *t_call = name;
}

std::shared_ptr<CallThreads::Task> CallThreads::Begin(const char* what, std::function<void()> job,
                                                      std::function<void()> late, Overdue overdue) {
    auto task = std::make_shared<Task>();
    task->job = std::move(job);
    task->late = std::move(late);
    task->owner = owner_;
    task->what = what;
    task->blocks = overdue == Overdue::Blocks;
    if (t_owner == shared_.get()) {
        task->job();
        MutexLock lock(task->mutex);
        task->ended = true;
        return task;
    }
    if (task->blocks && IsHung())
        return nullptr;
    MutexLock lock(shared_->mutex);
    if (!shared_->idle.empty()) {
        shared_->idle.back()->task = task;
        shared_->idle.pop_back();
        shared_->work.NotifyAll();
        return task;
    }
    if (shared_->workers.size() >= MaxThreads)
        return nullptr;
    const auto worker = std::make_shared<Worker>();
    worker->task = task;
    shared_->workers.push_back(worker);
    worker->thread = std::thread([shared = shared_, worker] { Work(shared, worker); });
    return task;
}

bool CallThreads::IsAbandoned(const Task& task) {
    MutexLock lock(task.mutex);
    return task.abandoned;
}

bool CallThreads::HasEnded(const Task& task) {
    MutexLock lock(task.mutex);
    return task.ended;
}

void CallThreads::Join(const std::shared_ptr<Task>& task) {
    if (!task)
        return;
    MutexLock lock(task->mutex);
    while (!task->ended)
        task->changed.WaitFor(task->mutex, milliseconds(500));
}

bool CallThreads::Wait(const std::shared_ptr<Task>& task, steady_clock::time_point deadline) {
    if (!task)
        return false;
    MutexLock lock(task->mutex);
    while (!task->ended && steady_clock::now() < deadline)
        task->changed.WaitUntil(task->mutex, deadline);
    if (task->ended || task->abandoned)
        return task->ended;
    task->abandoned = true;
    if (task->blocks)
        ++shared_->overdue;
    const auto waited = std::chrono::duration_cast<milliseconds>(steady_clock::now() - task->begin);
    VxLoggerLog(LogLevel::Error, "SDK",
                "%s: %s has not returned for %lld ms (%s); it is left alone until it does", owner_.c_str(),
                task->call.load(), static_cast<long long>(waited.count()), task->what);
    return false;
}

void CallThreads::Work(const std::shared_ptr<Shared>& shared, const std::shared_ptr<Worker>& worker) {
    t_owner = shared.get();
    for (;;) {
        std::shared_ptr<Task> task;
        {
            MutexLock lock(shared->mutex);
            while (!worker->task) {
                if (shared->ending)
                    return;
                shared->work.WaitFor(shared->mutex, milliseconds(500));
            }
            task = worker->task;
        }
        t_call = &task->call;
        try {
            task->job();
        } catch (const std::exception& error) {
            VxLoggerLog(LogLevel::Error, "SDK", "%s: %s: %s", task->owner.c_str(), task->what, error.what());
        }
        if (IsAbandoned(*task))
            ParkWhenExiting();
        t_call = nullptr;
        task->job = nullptr; // with what it holds
        // The thread is free before its job is known to have ended, so that the next job finds it.
        {
            MutexLock lock(shared->mutex);
            worker->task.reset();
            if (!shared->ending)
                shared->idle.push_back(worker);
        }
        bool abandoned = false;
        {
            MutexLock lock(task->mutex);
            task->ended = true;
            abandoned = task->abandoned;
            task->changed.NotifyAll();
        }
        if (!abandoned)
            continue;
        VxLoggerLog(LogLevel::Warning, "SDK", "%s: %s has returned after all", task->owner.c_str(),
                    task->call.load());
        if (task->late)
            task->late();
        if (task->blocks)
            --shared->overdue;
    }
}

} // namespace VX3
