// The half of a logger that knows no back end: the queue of items and the client's callback.
#pragma once

#include "core/SpinLock.h"
#include "vx3/core/Logger.h"
#include "vx3/core/Mutex.h"

#include <chrono>

namespace VX3 {

class LoggerAbs : public ILogger {
public:
    // Older items are dropped, so that a process can log for years.
    static constexpr std::size_t MaxItems = 4096;

    int RegisterCallBack(std::function<void(ILogItem*)> callback) override;
    std::deque<std::unique_ptr<ILogItem>>& GetLogItems() override;

    bool HasCallback() { return CurrentCallback() != nullptr; }

    // Local time as "%Y-%m-%d %H:%M:%S.mmm".
    static std::string TimeText(std::chrono::system_clock::time_point time);

protected:
    // Formats, calls the callback on this thread (no lock held), then queues.
    int WriteLogItem(LogLevel level, const char* source, const char* device, const char* fmt, va_list args)
        __attribute__((format(printf, 5, 0)));

private:
    using Callback = std::function<void(ILogItem*)>;

    std::shared_ptr<const Callback> CurrentCallback();

    SpinLock itemsLock_;
    std::deque<std::unique_ptr<ILogItem>> items_ VX3_GUARDED_BY(itemsLock_);
    Mutex callbackMutex_;
    std::shared_ptr<const Callback> callback_ VX3_GUARDED_BY(callbackMutex_);
};

} // namespace VX3
