// Codes and failures in words, and the log.
#include "capi/Results.h"
#include "vx3/core/LastFailure.h"
#include "vx3/core/Logger.h"
#include "vx3/vx3.h"

#include <utility>

using namespace VX3;
using namespace VX3::CApi;

namespace {

int NumberOf(const std::string& level) {
    constexpr std::pair<const char*, int> Levels[] = {{"Fatal", VX3_LOG_FATAL},
                                                      {"Error", VX3_LOG_ERROR},
                                                      {"Warning", VX3_LOG_WARNING},
                                                      {"Info", VX3_LOG_INFO}};
    for (const auto& [name, number] : Levels)
        if (level == name)
            return number;
    return VX3_LOG_DEBUG;
}

bool IsLevel(int level) {
    for (const int known :
         {VX3_LOG_NONE, VX3_LOG_FATAL, VX3_LOG_ERROR, VX3_LOG_WARNING, VX3_LOG_INFO, VX3_LOG_DEBUG})
        if (level == known)
            return true;
    return false;
}

int RefuseLevel(int level) {
    return SetLastFailure(Status::NotFound, std::to_string(level) + " is no log level");
}

} // namespace

int SDKStatusText(int status, char* buf, size_t size) {
    return Guarded([&] { return CopyText(ResultText(status), buf, size, TooSmall); });
}

// Leaves what was recorded as it is, its own failures included.
int SDKLastFailure(int* status, char* buf, size_t size) {
    return Guarded<int>(BadHandle, [&] {
        const Failure failure = LastFailure();
        if (status != nullptr)
            *status = failure.code;
        return CopyText(failure.text, buf, size, TooSmall);
    });
}

int SDKSetLogLevel(int level) {
    return Guarded([&] {
        return IsLevel(level) ? static_cast<int>(VxLoggerSetLevel(static_cast<LogLevel>(level)))
                              : RefuseLevel(level);
    });
}

int SDKSetLogCallback(LogCallback callback, int level, void* userData) {
    return Guarded([&] {
        if (!IsLevel(level))
            return RefuseLevel(level);
        if (callback == nullptr) {
            VxLoggerRegisterCb({});
            return 0;
        }
        VxLoggerRegisterCb([callback, level, userData](ILogItem* item) {
            const int number = NumberOf(item->Level());
            if (number <= level)
                callback(number, item->TimePoint().c_str(), item->Info().c_str(), userData);
        });
        return 0;
    });
}
