// Logger over log4cpp, configured by a properties file in the library's directory.
#pragma once

#include "core/LoggerAbs.h"

namespace log4cpp {
class Category;
}

namespace VX3 {

class LoggerLog4CPP : public LoggerAbs {
public:
    // Without a usable configuration file warnings and errors go to `fallbackTarget`: "std::cerr",
    // "std::cout", "StringQueueAppender", or the name of a file to append to (relative to the library's
    // directory).
    LoggerLog4CPP(const char* categoryName, const char* fallbackTarget,
                  const std::string& configuration = "log/log4cpp.cfg");

    int WriteLogData(bool debugOnly, LogLevel level, const char* source, const char* device, const char* fmt,
                     ...) override __attribute__((format(printf, 6, 7)));
    int WriteLogDataVa(bool debugOnly, LogLevel level, const char* source, const char* device,
                       const char* fmt, va_list args) override __attribute__((format(printf, 6, 0)));

    // The back end takes messages of this level, or a callback is registered.
    bool HasListener(LogLevel level);
    // What goes to the fallback target from now on, of this logger and of all others that share it.
    // NotAvailable where a configuration file decides.
    StatusCode SetFallbackLevel(LogLevel level);
    // "OK!", or what was wrong with the configuration.
    const std::string& StatusText() const { return status_; }

private:
    void UseFallback(const std::string& target);

    bool usesFallback_ = false;
    log4cpp::Category* category_ = nullptr; // log4cpp owns categories and their appenders
    std::string status_ = "OK!";
};

} // namespace VX3
