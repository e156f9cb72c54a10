// The two process-wide loggers, created on first use and destroyed at process exit.
#pragma once

#include "vx3/core/Logger.h"
#include "vx3/core/Mutex.h"

#include <atomic>
#include <memory>

namespace VX3 {

class SingletonLogger {
public:
    // Category "log". Null once the process's exit handlers have destroyed it.
    static ILogger* GetInstance();
    // Category "record"; makes no items. Null as above.
    static ILogger* GetInstanceDebug();

private:
    friend struct SingletonLoggerCloser;
    static ILogger* Get(std::atomic<ILogger*>& fast, std::unique_ptr<ILogger>& owner, const char* category);

    static Mutex m_mutex;
    static std::unique_ptr<ILogger> m_instance;
    static std::unique_ptr<ILogger> m_instanceDebug;
    static std::atomic<ILogger*> fastInstance_;
    static std::atomic<ILogger*> fastInstanceDebug_;
    static bool closed_ VX3_GUARDED_BY(m_mutex);
};

} // namespace VX3
