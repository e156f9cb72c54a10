#include "core/LogItemAbs.h"
#include "core/LoggerLog4CPP.h"
#include "core/LoggerProperties.h"
#include "core/SingletonLogger.h"
#include "support/TempDir.h"
#include "support/Threads.h"
#include "vx3/core/Utilities.h"

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <regex>
#include <unistd.h>

namespace VX3::Test {
namespace {

std::string TextOf(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

TEST(LogItem, LevelsHaveNames) {
    EXPECT_EQ(LogItemAbs::LogLevel2String(LogLevel::Fatal), "Fatal");
    EXPECT_EQ(LogItemAbs::LogLevel2String(LogLevel::Debug), "Debug");
    EXPECT_EQ(LogItemAbs::LogLevel2String(static_cast<LogLevel>(500)), "Invalid");
    const LogItemAbs item("Info", "now", "SDK", "cam", "text");
    const LogItemAbs copy(static_cast<const ILogItem*>(&item));
    EXPECT_EQ(copy.Level() + copy.TimePoint() + copy.Source() + copy.Device() + copy.Info(),
              "InfonowSDKcamtext");
    EXPECT_EQ(copy.ToString(), "");
}

TEST(LogItem, MillisecondsAlwaysHaveThreeDigits) {
    using namespace std::chrono;
    const auto noon = system_clock::from_time_t(1700000000);
    EXPECT_TRUE(std::regex_match(LoggerAbs::TimeText(noon + milliseconds(7)),
                                 std::regex(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.007)")));
    EXPECT_EQ(LoggerAbs::TimeText(noon + microseconds(999999)).substr(20), "999");
}

TEST(Logger, WritesQueuesAndCallsBack) {
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    ILogger* logger = SingletonLogger::GetInstance();
    auto& items = VxLoggerGetLogItems();
    const std::size_t before = items.size();
    std::vector<std::string> first;
    std::vector<std::string> second;
    VxLoggerRegisterCb([&](ILogItem* item) {
        EXPECT_EQ(items.size(), before); // not queued yet
        first.push_back(item->Info());
    });
    VxLoggerLog(LogLevel::Warning, "SDK", "x=%d", 5);
    VxLoggerRegisterCb([&](ILogItem* item) { second.push_back(item->Info()); });
    VxLoggerLog(LogLevel::Info, "SDK", "y=%s", "z");
    VxLoggerRegisterCb({});
    VxLoggerDebug("50%s.cpp", 12, "SDK", "deep %d", 0);
    EXPECT_EQ(VxLoggerSetLevel(LogLevel::Debug), Status::Ok);
    VxLoggerDebug("50%s.cpp", 12, "SDK", "deep %d", 1);
    EXPECT_EQ(VxLoggerSetLevel(NoLogging), Status::Ok);
    VxLoggerDebug("50%s.cpp", 12, "SDK", "deep %d", 2);
    EXPECT_EQ(VxLoggerSetLevel(LogLevel::Warning), Status::Ok);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "") << "standard output is the program's";
    const std::string out = ::testing::internal::GetCapturedStderr();

    EXPECT_EQ(logger, SingletonLogger::GetInstance());
    ASSERT_EQ(items.size(), before + 2);
    const ILogItem& item = *items[before];
    EXPECT_EQ(item.Level() + "|" + item.Source() + "|" + item.Device() + "|" + item.Info(),
              "Warning|SDK||x=5");
    EXPECT_EQ(first, std::vector<std::string>{"x=5"});
    EXPECT_EQ(second, std::vector<std::string>{"y=z"});
    // Once each, though two loggers share the fallback.
    EXPECT_TRUE(std::regex_search(out, std::regex(R"((^|\n)[^\n]*\(\d+\)\[WARN\]-x=5\n)"))) << out;
    EXPECT_TRUE(std::regex_search(out, std::regex(R"(\[DEBUG\]-50%s\.cpp-12,deep 1\n)"))) << out;
    EXPECT_EQ(out.find("deep 1"), out.rfind("deep 1"));
    for (const char* quiet : {"y=z", "deep 0", "deep 2"})
        EXPECT_EQ(out.find(quiet), std::string::npos) << out;
}

TEST(Logger, MissingOrMalformedConfigurationFallsBackAndSaysSo) {
    const TempDir dir;
    LoggerLog4CPP logger("log", (dir / "fallback.log").c_str());
    EXPECT_NE(logger.StatusText(), "OK!");
    EXPECT_NE(logger.StatusText().find("log4cpp.cfg"), std::string::npos);
    EXPECT_EQ(logger.WriteLogData(true, LogLevel::Error, "SDK", "", "to %s", "file"), 0);
    EXPECT_TRUE(logger.GetLogItems().empty());
    EXPECT_NE(TextOf(dir / "fallback.log").find("[ERROR]-to file\n"), std::string::npos);
    std::ofstream(dir / "malformed.cfg") << "log4cpp.rootCategory=DEBUG, missing\n";
    EXPECT_NE(LoggerLog4CPP("log", "StringQueueAppender", dir / "malformed.cfg").StatusText(), "OK!");
}

TEST(Logger, ConfiguredFilesLieBesideTheLibrary) {
    const TempDir elsewhere;
    const TempDir directory;
    const std::string configuration = directory / "log4cpp.cfg";
    const std::string own = "vx3-test-" + std::to_string(::getpid());
    std::ofstream(configuration) << "log4cpp.rootCategory=DEBUG, R\nlog4cpp.category.log=INFO, F\n"
                                    "log4cpp.additivity.log=false\nlog4cpp.appender.F=FileAppender\n"
                                    "log4cpp.appender.F.fileName="
                                 << own
                                 << ".log\n"
                                    "log4cpp.appender.F.layout=PatternLayout\n"
                                    "log4cpp.appender.F.layout.ConversionPattern=%p %m%n\n"
                                    "log4cpp.appender.R=FileAppender\nlog4cpp.appender.R.fileName="
                                 << own
                                 << "-root.log\n"
                                    "log4cpp.appender.R.layout=SimpleLayout\n";
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(elsewhere.Path());
    LoggerLog4CPP named("log", "std::cout", configuration);
    EXPECT_EQ(named.StatusText(), "OK!");
    named.WriteLogData(false, LogLevel::Warning, "SDK", "", "n=%d", 1);
    named.WriteLogData(false, LogLevel::Debug, "SDK", "", "below the threshold");
    EXPECT_EQ(named.GetLogItems().size(), 2U);
    LoggerLog4CPP unknown("nosuch", "std::cout", configuration);
    EXPECT_EQ(unknown.StatusText(), "No category named (nosuch)found! Using root category!");
    unknown.WriteLogData(true, LogLevel::Warning, "SDK", "", "to root");
    EXPECT_EQ(LoggerLog4CPP("root", "std::cout", configuration).StatusText(), "OK!");
    std::filesystem::current_path(before);

    EXPECT_EQ(TextOf(GetLibraryDirectory() + own + ".log"), "WARN n=1\n");
    EXPECT_NE(TextOf(GetLibraryDirectory() + own + "-root.log").find("to root"), std::string::npos);
    EXPECT_TRUE(std::filesystem::is_empty(elsewhere.Path()));
    std::filesystem::remove(GetLibraryDirectory() + own + ".log");
    std::filesystem::remove(GetLibraryDirectory() + own + "-root.log");
}

TEST(Logger, OnlyRelativeAppenderFilesAreRewritten) {
    const std::string text = "log4cpp.appender.A.fileName = a.log\n"
                             "log4cpp.appender.B.fileName=/var/b.log\n"
                             "log4cpp.appender.C.fileName=${HOME}/c.log\n"
                             "other.fileName=d.log\n# fileName=e\n";
    EXPECT_EQ(ResolveAppenderFiles(text), "log4cpp.appender.A.fileName =" + GetLibraryDirectory() +
                                              "a.log\n" + text.substr(text.find('\n') + 1));
}

TEST(Logger, ThreadsLogWhileTheCallbackChanges) {
    constexpr int Threads = 4;
    constexpr int Messages = 2000;
    ::testing::internal::CaptureStdout(); // earlier tests may have left the fallback printing
    const TempDir dir;
    LoggerLog4CPP logger("log", (dir / "threads.log").c_str());
    std::atomic<int> seen{0};
    std::atomic<bool> done{false};
    std::thread changer([&] {
        while (!done)
            logger.RegisterCallBack([&seen](ILogItem*) { ++seen; });
    });
    logger.RegisterCallBack([&seen](ILogItem*) { ++seen; });
    OnThreads(Threads, [&](unsigned int writer) {
        for (int i = 0; i < Messages; ++i)
            logger.WriteLogData(false, LogLevel::Info, "SDK", "", "%u.%d", writer, i);
    });
    done = true;
    changer.join();
    ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(seen, Threads * Messages);
    // The newest are kept, in order for each writer.
    const auto& items = logger.GetLogItems();
    EXPECT_EQ(items.size(), LoggerAbs::MaxItems);
    std::vector<int> last(Threads, -1);
    for (const auto& item : items) {
        const auto parts = SplitString(item->Info(), '.');
        int& previous = last[static_cast<std::size_t>(std::stoi(parts[0]))];
        EXPECT_LT(previous, std::stoi(parts[1]));
        previous = std::stoi(parts[1]);
    }
    EXPECT_NE(std::find(last.begin(), last.end(), Messages - 1), last.end());
}

} // namespace
} // namespace VX3::Test
