// Collects the library's log, "Level: text" each, for as long as it lives.
#pragma once

#include "vx3/core/Logger.h"
#include "vx3/core/Mutex.h"

#include <algorithm>
#include <string>
#include <vector>

namespace VX3::Test {

class LogCapture {
public:
    LogCapture() {
        VxLoggerRegisterCb([this](ILogItem* item) {
            MutexLock lock(mutex_);
            texts_.push_back(item->Level() + ": " + item->Info());
        });
    }
    ~LogCapture() { VxLoggerRegisterCb({}); }

    bool Has(const std::string& part) const { return Count(part) != 0; }
    std::size_t Count(const std::string& part) const {
        MutexLock lock(mutex_);
        return static_cast<std::size_t>(
            std::count_if(texts_.begin(), texts_.end(),
                          [&](const std::string& text) { return text.find(part) != std::string::npos; }));
    }

private:
    mutable Mutex mutex_;
    std::vector<std::string> texts_ VX3_GUARDED_BY(mutex_);
};

} // namespace VX3::Test
