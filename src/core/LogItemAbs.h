// One logged message; owned by the logger's queue.
#pragma once

#include "vx3/core/Logger.h"

namespace VX3 {

class LogItemAbs : public ILogItem {
public:
    LogItemAbs(std::string level, std::string timePoint, std::string source, std::string device,
               std::string info);
    explicit LogItemAbs(const ILogItem* other);

    std::string Level() const override { return level_; }
    std::string TimePoint() const override { return timePoint_; }
    std::string Source() const override { return source_; }
    std::string Device() const override { return device_; }
    std::string Info() const override { return info_; }
    std::string ToString() const override { return {}; }

    // "Fatal", "Error", "Warning", "Info", "Debug"; "Invalid" for every other value.
    static std::string LogLevel2String(LogLevel level);

private:
    std::string level_;
    std::string timePoint_;
    std::string source_;
    std::string device_;
    std::string info_;
};

} // namespace VX3
