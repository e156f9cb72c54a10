#include "vx3/core/Logger.h"

#include "core/LoggerLog4CPP.h"
#include "core/SingletonLogger.h"

#include <utility>

namespace VX3 {

namespace {

// `text` as it must stand in a printf format to be printed as it is.
std::string EscapePercent(const std::string& text) {
    std::string out;
    for (const char c : text) {
        out += c;
        if (c == '%')
            out += c;
    }
    return out;
}

} // namespace

void VxLoggerLog(LogLevel level, const char* source, const char* fmt, ...) {
    ILogger* logger = SingletonLogger::GetInstance();
    if (logger == nullptr)
        return;
    va_list args;
    va_start(args, fmt);
    logger->WriteLogDataVa(false, level, source, "", fmt, args);
    va_end(args);
}

void VxLoggerDebug(const char* file, int line, const char* source, const char* fmt, ...) {
    ILogger* logger = SingletonLogger::GetInstanceDebug();
    if (logger == nullptr)
        return;
    const std::string format = EscapePercent(file) + "-" + std::to_string(line) + "," + fmt;
    va_list args;
    va_start(args, fmt);
    logger->WriteLogDataVa(true, LogLevel::Debug, source, "", format.c_str(), args);
    va_end(args);
}

StatusCode VxLoggerSetLevel(LogLevel level) {
    // One category serves both loggers where there is no configuration.
    auto* logger = dynamic_cast<LoggerLog4CPP*>(SingletonLogger::GetInstance());
    return logger != nullptr ? logger->SetFallbackLevel(level) : Status::NotAvailable;
}

void VxLoggerRegisterCb(std::function<void(ILogItem*)> callback) {
    if (ILogger* logger = SingletonLogger::GetInstance())
        logger->RegisterCallBack(std::move(callback));
}

std::deque<std::unique_ptr<ILogItem>>& VxLoggerGetLogItems() {
    if (ILogger* logger = SingletonLogger::GetInstance())
        return logger->GetLogItems();
    static std::deque<std::unique_ptr<ILogItem>> none;
    return none;
}

} // namespace VX3
