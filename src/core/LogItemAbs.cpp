#include "core/LogItemAbs.h"

#include <utility>

namespace VX3 {

LogItemAbs::LogItemAbs(std::string level, std::string timePoint, std::string source, std::string device,
                       std::string info)
    : level_(std::move(level)),
      timePoint_(std::move(timePoint)),
      source_(std::move(source)),
      device_(std::move(device)),
      info_(std::move(info)) {}

LogItemAbs::LogItemAbs(const ILogItem* other)
    : LogItemAbs(other->Level(), other->TimePoint(), other->Source(), other->Device(), other->Info()) {}

std::string LogItemAbs::LogLevel2String(LogLevel level) {
    switch (level) {
    case LogLevel::Fatal:
        return "Fatal";
    case LogLevel::Error:
        return "Error";
    case LogLevel::Warning:
        return "Warning";
    case LogLevel::Info:
        return "Info";
    case LogLevel::Debug:
        return "Debug";
    }
    return "Invalid";
}

} // namespace VX3
