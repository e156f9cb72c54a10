// The few threads that share the lines of large images with the thread that asked. One a process; threads
// start with the first large image and are joined at unload.
#pragma once

#include "vx3/core/Mutex.h"

#include <atomic>
#include <cstddef>
#include <thread>
#include <vector>

namespace VX3 {

class WorkerPool {
public:
    using Part = void (*)(const void* context, std::size_t part);

    static WorkerPool& Shared();
    WorkerPool() = default;
    ~WorkerPool();
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    void SetThreads(unsigned int threads);
    unsigned int Threads() const { return threads_; }
    // Calls part(context, 0 .. parts - 1), each once, on this thread and the pool's; returns when all are
    // done. A caller that finds the pool at work for another does everything itself. Allocates nothing once
    // the threads run.
    void Run(std::size_t parts, Part part, const void* context);

private:
    void StartThreads() VX3_REQUIRES(jobMutex_);
    void StopThreads() VX3_REQUIRES(jobMutex_);
    void Work();
    void TakeParts() VX3_REQUIRES(mutex_);
    static unsigned int DefaultThreads();

    std::atomic<unsigned int> threads_{DefaultThreads()};
    Mutex jobMutex_; // held while a job runs; taken before mutex_
    std::vector<std::thread> workers_ VX3_GUARDED_BY(jobMutex_);
    Mutex mutex_;
    CondVar wake_;
    CondVar done_;
    Part part_ VX3_GUARDED_BY(mutex_) = nullptr;
    const void* context_ VX3_GUARDED_BY(mutex_) = nullptr;
    std::size_t next_ VX3_GUARDED_BY(mutex_) = 0;
    std::size_t parts_ VX3_GUARDED_BY(mutex_) = 0;
    std::size_t unfinished_ VX3_GUARDED_BY(mutex_) = 0;
    bool stop_ VX3_GUARDED_BY(mutex_) = false;
};

// Calls work(first, last) over ranges that make up [0, lines): in one go for small images, shared between
// threads for those above one megapixel. `work` must not throw.
template <class Work>
void ForLines(std::size_t lines, std::size_t pixels, const Work& work) {
    constexpr std::size_t PaysAbove = 1000000;
    WorkerPool& pool = WorkerPool::Shared();
    const std::size_t parts = std::size_t{2} * pool.Threads();
    if (pixels <= PaysAbove || parts <= 2 || lines < parts) {
        work(std::size_t{0}, lines);
        return;
    }
    struct Job {
        const Work& work;
        std::size_t lines;
        std::size_t parts;
    };
    const Job job{work, lines, parts};
    pool.Run(
        parts,
        [](const void* context, std::size_t part) {
            const Job& shared = *static_cast<const Job*>(context);
            shared.work(shared.lines * part / shared.parts, shared.lines * (part + 1) / shared.parts);
        },
        &job);
}

} // namespace VX3
