#include "core/LoggerAbs.h"

#include "core/ClientCall.h"
#include "core/LogItemAbs.h"
#include "vx3/core/Utilities.h"

#include <array>
#include <ctime>

namespace VX3 {

int LoggerAbs::RegisterCallBack(std::function<void(ILogItem*)> callback) {
    ClientCall::CloseAtExit();
    std::shared_ptr<const Callback> replacement;
    if (callback)
        replacement = std::make_shared<const Callback>(std::move(callback));
    // The old one goes after the lock: its destructor is the client's code.
    MutexLock lock(callbackMutex_);
    callback_.swap(replacement);
    return 0;
}

// Unlocked by contract: the caller reads while nothing logs.
std::deque<std::unique_ptr<ILogItem>>& LoggerAbs::GetLogItems() VX3_NO_THREAD_SAFETY_ANALYSIS {
    return items_;
}

std::string LoggerAbs::TimeText(std::chrono::system_clock::time_point time) {
    const auto sinceEpoch = std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch()).count();
    const auto milliseconds = static_cast<int>(((sinceEpoch % 1000) + 1000) % 1000);
    const std::time_t seconds = static_cast<std::time_t>((sinceEpoch - milliseconds) / 1000);
    std::tm local{};
    ::localtime_r(&seconds, &local);
    std::array<char, 64> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &local);
    return StringFormat("%s.%03d", text.data(), milliseconds);
}

std::shared_ptr<const LoggerAbs::Callback> LoggerAbs::CurrentCallback() {
    MutexLock lock(callbackMutex_);
    return callback_;
}

int LoggerAbs::WriteLogItem(LogLevel level, const char* source, const char* device, const char* fmt,
                            va_list args) {
    std::string info = StringFormatVa(fmt, args);
    std::unique_ptr<ILogItem> item = std::make_unique<LogItemAbs>(LogItemAbs::LogLevel2String(level),
                                                                  TimeText(std::chrono::system_clock::now()),
                                                                  source, device, std::move(info));
    if (const auto callback = CurrentCallback())
        if (const ClientCall call; call)
            (*callback)(item.get());
    // Freed after the lock.
    std::unique_ptr<ILogItem> oldest;
    SpinGuard lock(itemsLock_);
    items_.push_back(std::move(item));
    if (items_.size() > MaxItems) {
        oldest = std::move(items_.front());
        items_.pop_front();
    }
    return 0;
}

} // namespace VX3
