#include "core/LogListener.h"

#include "core/LoggerLog4CPP.h"
#include "core/SingletonLogger.h"

namespace VX3 {

bool HasLogListener(LogLevel level) {
    auto* logger = dynamic_cast<LoggerLog4CPP*>(SingletonLogger::GetInstance());
    return logger != nullptr && logger->HasListener(level);
}

} // namespace VX3
