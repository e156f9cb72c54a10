#include "core/ClientCall.h"

#include "vx3/core/Logger.h"
#include "vx3/core/Mutex.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace VX3 {

namespace {

// A callback that hangs must not keep the process from ending.
constexpr std::chrono::seconds LongestWait{2};

struct Passage {
    Mutex mutex;
    CondVar left;
    unsigned int inside VX3_GUARDED_BY(mutex) = 0;
    std::uint64_t calls VX3_GUARDED_BY(mutex) = 0; // that ended
    bool closed VX3_GUARDED_BY(mutex) = false;
};

// Never destroyed: threads may still knock when everything else is gone.
Passage& ThePassage() {
    static Passage& passage = *std::make_unique<Passage>().release();
    return passage;
}

thread_local unsigned int t_inside = 0; // calls on this thread, one inside the other

// True when only this thread's own calls are left: exit() may have been called by a callback.
bool WaitUntilLeft(Passage& passage, std::chrono::steady_clock::time_point deadline) {
    MutexLock lock(passage.mutex);
    passage.closed = true;
    while (passage.inside > t_inside)
        if (!passage.left.WaitUntil(passage.mutex, deadline))
            return passage.inside <= t_inside;
    return true;
}

void Close() {
    if (!WaitUntilLeft(ThePassage(), std::chrono::steady_clock::now() + LongestWait))
        VxLoggerLog(LogLevel::Warning, "SDK",
                    "The process ends while a callback runs: it did not return within two seconds");
}

// Exit handlers and the destructors of statics run in the reverse order of their making, so the handler that
// closes the passage has to be the last one made. The thread-local objects of the thread that calls exit() go
// before the first handler runs: one of them makes it. Where a thread ends without the process a spare
// handler is made.
struct LastHandler {
    ~LastHandler() {
        static std::atomic<int> spare{1000}; // of threads that come and go
        if (spare.fetch_sub(1) > 0)
            static_cast<void>(std::atexit(Close));
    }
};

} // namespace

ClientCall::ClientCall() : open_(false) {
    Passage& passage = ThePassage();
    MutexLock lock(passage.mutex);
    if (passage.closed)
        return;
    open_ = true;
    ++passage.inside;
    ++t_inside;
}

ClientCall::~ClientCall() {
    if (!open_)
        return;
    --t_inside;
    Passage& passage = ThePassage();
    bool another = false;
    {
        MutexLock lock(passage.mutex);
        --passage.inside;
        passage.left.NotifyAll();
        ++passage.calls;
        another = (passage.calls & (passage.calls - 1)) == 0; // the first, second, fourth, ...
    }
    // For a process that is ended by a thread that never called the library: what the first callbacks made on
    // their way (codecs, say) goes after this handler has run.
    if (another)
        static_cast<void>(std::atexit(Close));
}

void ClientCall::CloseAtExit() {
    static const int early = std::atexit(Close);
    static_cast<void>(early);
    thread_local const LastHandler last;
    static_cast<void>(&last);
}

} // namespace VX3
