#include "core/SingletonLogger.h"

#include "core/LoggerLog4CPP.h"

#include <log4cpp/Category.hh>

namespace VX3 {

// All constant-initialised: static initialisers of other units may log before this unit's own ones run.
Mutex SingletonLogger::m_mutex;
std::atomic<ILogger*> SingletonLogger::fastInstance_{nullptr};
std::atomic<ILogger*> SingletonLogger::fastInstanceDebug_{nullptr};
bool SingletonLogger::closed_ = false;

namespace {
// log4cpp's own statics must exist before ours register their destruction, so that they outlive ours.
const log4cpp::Category& g_log4cppRoot = log4cpp::Category::getRoot();
} // namespace

std::unique_ptr<ILogger> SingletonLogger::m_instance;
std::unique_ptr<ILogger> SingletonLogger::m_instanceDebug;

// Destroyed before the loggers: what logs later in the exit sequence finds none instead of a dead one.
struct SingletonLoggerCloser {
    SingletonLoggerCloser() = default;
    ~SingletonLoggerCloser() {
        MutexLock lock(SingletonLogger::m_mutex);
        SingletonLogger::closed_ = true;
        SingletonLogger::fastInstance_.store(nullptr, std::memory_order_release);
        SingletonLogger::fastInstanceDebug_.store(nullptr, std::memory_order_release);
    }
};

namespace {
const SingletonLoggerCloser g_closer;
} // namespace

ILogger* SingletonLogger::Get(std::atomic<ILogger*>& fast, std::unique_ptr<ILogger>& owner,
                              const char* category) {
    if (ILogger* logger = fast.load(std::memory_order_acquire))
        return logger;
    MutexLock lock(m_mutex);
    if (closed_)
        return nullptr;
    if (owner == nullptr) {
        owner = std::make_unique<LoggerLog4CPP>(category, "std::cerr");
        fast.store(owner.get(), std::memory_order_release);
    }
    return owner.get();
}

ILogger* SingletonLogger::GetInstance() {
    return Get(fastInstance_, m_instance, "log");
}

ILogger* SingletonLogger::GetInstanceDebug() {
    return Get(fastInstanceDebug_, m_instanceDebug, "record");
}

} // namespace VX3
