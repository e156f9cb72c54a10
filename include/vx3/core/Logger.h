// Logging: every library message goes to log4cpp, to an in-memory queue of the newest items, and to the
// callback a client registered. log/log4cpp.cfg beside the library says what log4cpp does with them; without
// that file warnings and errors are printed on standard error.
#pragma once

#include "vx3/core/Export.h"
#include "vx3/core/Status.h"

#include <cstdarg>
#include <deque>
#include <functional>
#include <memory>
#include <string>

namespace VX3 {

// log4cpp priority values.
enum class LogLevel : int { Fatal = 0, Error = 300, Warning = 400, Info = 600, Debug = 700 };
// For VxLoggerSetLevel: prints nothing.
constexpr LogLevel NoLogging = static_cast<LogLevel>(-1);

// One logged message. TimePoint is local time, "%Y-%m-%d %H:%M:%S.mmm".
class VX3_API ILogItem {
public:
    virtual std::string Level() const = 0;
    virtual std::string TimePoint() const = 0;
    virtual std::string Source() const = 0;
    virtual std::string Device() const = 0;
    virtual std::string Info() const = 0;
    virtual std::string ToString() const = 0;
    virtual ~ILogItem() = default;
};

class VX3_API ILogger {
public:
    // `debugOnly` messages reach log4cpp only: no item, no callback. Texts are cut to 511 characters.
    virtual int WriteLogData(bool debugOnly, LogLevel level, const char* source, const char* device,
                             const char* fmt, ...) __attribute__((format(printf, 6, 7))) = 0;
    virtual int WriteLogDataVa(bool debugOnly, LogLevel level, const char* source, const char* device,
                               const char* fmt, va_list args) = 0;
    // Replaces any earlier callback; an empty function removes it. The callback runs on the logging thread.
    virtual int RegisterCallBack(std::function<void(ILogItem*)> callback) = 0;
    // The queue itself, unlocked: read it only while no other thread logs.
    virtual std::deque<std::unique_ptr<ILogItem>>& GetLogItems() = 0;
    virtual ~ILogger() = default;
};

VX3_API void VxLoggerLog(LogLevel level, const char* source, const char* fmt, ...)
    __attribute__((format(printf, 3, 4)));
VX3_API void VxLoggerDebug(const char* file, int line, const char* source, const char* fmt, ...)
    __attribute__((format(printf, 4, 5)));
// Prints what is as grave as `level` or graver on standard error, Warning at first. Queue and callback get
// everything. NotAvailable where log/log4cpp.cfg stands beside the library: that file decides then.
VX3_API StatusCode VxLoggerSetLevel(LogLevel level);
VX3_API void VxLoggerRegisterCb(std::function<void(ILogItem*)> callback);
VX3_API std::deque<std::unique_ptr<ILogItem>>& VxLoggerGetLogItems();

} // namespace VX3
