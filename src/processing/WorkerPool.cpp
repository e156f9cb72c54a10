#include "processing/WorkerPool.h"

#include "vx3/processing/ProcessingThreads.h"

#include <algorithm>
#include <system_error>

namespace VX3 {

namespace {
constexpr unsigned int MostByDefault = 4;
constexpr unsigned int Most = 64;
constexpr std::chrono::milliseconds Long{3600000};
} // namespace

WorkerPool& WorkerPool::Shared() {
    static WorkerPool pool;
    return pool;
}

WorkerPool::~WorkerPool() {
    const MutexLock job(jobMutex_);
    StopThreads();
}

unsigned int WorkerPool::DefaultThreads() {
    return std::clamp(std::thread::hardware_concurrency(), 1U, MostByDefault);
}

void WorkerPool::SetThreads(unsigned int threads) {
    const MutexLock job(jobMutex_);
    threads_ = threads == 0 ? DefaultThreads() : std::min(threads, Most);
    if (workers_.size() + 1 > threads_)
        StopThreads(); // the next large image starts as many as it needs
}

void WorkerPool::StartThreads() {
    try {
        workers_.reserve(Most);
        while (workers_.size() + 1 < threads_)
            workers_.emplace_back([this] { Work(); });
    } catch (const std::system_error&) {
        // The machine gives no more threads: those that run, and the caller, do the work.
    }
}

void WorkerPool::StopThreads() {
    {
        const MutexLock lock(mutex_);
        stop_ = true;
        wake_.NotifyAll();
    }
    for (std::thread& worker : workers_)
        worker.join();
    workers_.clear();
    const MutexLock lock(mutex_);
    stop_ = false;
}

void WorkerPool::Run(std::size_t parts, Part part, const void* context) {
    if (!jobMutex_.try_lock()) {
        for (std::size_t i = 0; i < parts; ++i)
            part(context, i);
        return;
    }
    StartThreads();
    {
        const MutexLock lock(mutex_);
        part_ = part;
        context_ = context;
        next_ = 0;
        parts_ = parts;
        unfinished_ = parts;
        wake_.NotifyAll();
        TakeParts();
        while (unfinished_ != 0)
            done_.WaitFor(mutex_, Long);
        parts_ = 0;
    }
    jobMutex_.unlock();
}

void WorkerPool::Work() {
    const MutexLock lock(mutex_);
    while (!stop_) {
        TakeParts();
        if (!stop_)
            wake_.WaitFor(mutex_, Long);
    }
}

// The lock is released while a part is worked on.
void WorkerPool::TakeParts() {
    while (next_ < parts_) {
        const Part part = part_;
        const void* context = context_;
        const std::size_t index = next_++;
        mutex_.unlock();
        part(context, index);
        mutex_.lock();
        if (--unfinished_ == 0)
            done_.NotifyAll();
    }
}

void SetProcessingThreads(unsigned int threads) {
    WorkerPool::Shared().SetThreads(threads);
}

unsigned int ProcessingThreads() {
    return WorkerPool::Shared().Threads();
}

} // namespace VX3
