// Runs calls into foreign code on threads of their own, so that whoever asks waits a bounded time however
// long the code takes. A call that does not return in time is left alone: until it does, nothing else is
// asked. Owned by the producer whose calls these are.
#pragma once

#include "vx3/core/Mutex.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace VX3 {

class CallThreads {
public:
    struct Task;
    // What a job that is overdue does to others: until it ends nothing else is asked, or they go on. Jobs of
    // the second kind are begun whatever else is overdue.
    enum class Overdue { Blocks, Tolerated };

    explicit CallThreads(std::string owner);
    // Threads that are inside a call go their own way.
    ~CallThreads();
    CallThreads(const CallThreads&) = delete;
    CallThreads& operator=(const CallThreads&) = delete;

    // The job's result; nothing when it has not ended within `bound`, or an earlier one is overdue. What the
    // job touches must be its own. `late` gets the result of a job that ended after all. On one of these
    // threads the job simply runs.
    template <typename Result>
    std::optional<Result> Ask(const char* what, std::chrono::milliseconds bound, std::function<Result()> job,
                              std::function<void(Result&)> late = {}, Overdue overdue = Overdue::Blocks) {
        auto result = std::make_shared<std::optional<Result>>();
        const bool ended = Wait(Begin(
                                    what, [result, job = std::move(job)] { result->emplace(job()); },
                                    [result, late = std::move(late)] {
                                        if (late && *result)
                                            late(**result);
                                    },
                                    overdue),
                                std::chrono::steady_clock::now() + bound);
        return ended ? std::move(*result) : std::nullopt;
    }
    // The two halves of it, for jobs of several producers at once. Null when nothing can be asked at present.
    std::shared_ptr<Task> Begin(const char* what, std::function<void()> job, std::function<void()> late = {},
                                Overdue overdue = Overdue::Blocks);
    bool Wait(const std::shared_ptr<Task>& task, std::chrono::steady_clock::time_point deadline);
    static bool HasEnded(const Task& task);
    // Waits until it has, however long that takes: for jobs that follow another.
    static void Join(const std::shared_ptr<Task>& task);
    // A job is overdue that blocks others.
    bool IsHung() const;
    // Tells the call that this thread is about to make, for the log line of a job that is overdue. `name` is
    // a constant.
    static void NoteCall(const char* name);

private:
    static bool IsAbandoned(const Task& task);

    struct Worker;
    struct Shared;

    static void Work(const std::shared_ptr<Shared>& shared, const std::shared_ptr<Worker>& worker);

    const std::string owner_;
    const std::shared_ptr<Shared> shared_;
};

} // namespace VX3
