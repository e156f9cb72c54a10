#include "core/LoggerLog4CPP.h"

#include "core/LoggerProperties.h"
#include "vx3/core/Utilities.h"

#include <iostream>
#include <log4cpp/Category.hh>
#include <log4cpp/FileAppender.hh>
#include <log4cpp/OstreamAppender.hh>
#include <log4cpp/PatternLayout.hh>
#include <log4cpp/StringQueueAppender.hh>

namespace VX3 {

namespace {

constexpr const char* FallbackCategory = "SDK";
constexpr const char* FallbackPattern = "%d(%t)[%p]-%m%n";

std::unique_ptr<log4cpp::Appender> CreateAppender(const std::string& target) {
    if (target == "std::cerr")
        return std::make_unique<log4cpp::OstreamAppender>(target, &std::cerr);
    if (target == "std::cout")
        return std::make_unique<log4cpp::OstreamAppender>(target, &std::cout);
    if (target == "StringQueueAppender")
        return std::make_unique<log4cpp::StringQueueAppender>(target);
    return std::make_unique<log4cpp::FileAppender>(target, GetModuleFilePath(target), true, 0644);
}

} // namespace

LoggerLog4CPP::LoggerLog4CPP(const char* categoryName, const char* fallbackTarget,
                             const std::string& configuration) {
    const std::string name = categoryName;
    try {
        ConfigureLog4cpp(GetModuleFilePath(configuration));
    } catch (const std::exception& error) {
        status_ = error.what();
        UseFallback(fallbackTarget);
        return;
    }
    category_ = name == "root" ? &log4cpp::Category::getRoot() : log4cpp::Category::exists(name);
    if (category_ == nullptr) {
        status_ = StringFormat("No category named (%s)found! Using root category!", categoryName);
        category_ = &log4cpp::Category::getRoot();
    }
}

// All fallback loggers share one category, so a target that one of them added already is not added again:
// each line is printed once.
void LoggerLog4CPP::UseFallback(const std::string& target) {
    usesFallback_ = true;
    category_ = &log4cpp::Category::getInstance(FallbackCategory);
    if (category_->getPriority() == log4cpp::Priority::NOTSET) // the first of them
        category_->setPriority(static_cast<int>(LogLevel::Warning));
    if (category_->getAppender(target) != nullptr)
        return;
    auto layout = std::make_unique<log4cpp::PatternLayout>();
    layout->setConversionPattern(FallbackPattern);
    auto appender = CreateAppender(target);
    appender->setLayout(layout.release());
    category_->addAppender(appender.release());
}

StatusCode LoggerLog4CPP::SetFallbackLevel(LogLevel level) {
    if (!usesFallback_)
        return Status::NotAvailable;
    category_->setPriority(static_cast<int>(level));
    return Status::Ok;
}

bool LoggerLog4CPP::HasListener(LogLevel level) {
    return category_->isPriorityEnabled(static_cast<int>(level)) || HasCallback();
}

int LoggerLog4CPP::WriteLogData(bool debugOnly, LogLevel level, const char* source, const char* device,
                                const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    const int status = WriteLogDataVa(debugOnly, level, source, device, fmt, args);
    va_end(args);
    return status;
}

int LoggerLog4CPP::WriteLogDataVa(bool debugOnly, LogLevel level, const char* source, const char* device,
                                  const char* fmt, va_list args) {
    va_list copy;
    va_copy(copy, args);
    category_->logva(static_cast<int>(level), fmt, copy);
    va_end(copy);
    if (debugOnly)
        return 0;
    return WriteLogItem(level, source, device, fmt, args);
}

} // namespace VX3
