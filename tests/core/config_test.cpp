#include "core/DefaultConfig.h"
#include "core/IniFile.h"
#include "core/SystemConfigINI.h"
#include "support/LogCapture.h"
#include "support/TempDir.h"
#include "vx3/core/LastFailure.h"
#include "vx3/core/Logger.h"

#include <clocale>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace VX3::Test {
namespace {

ini::File Read(const std::string& text) {
    std::istringstream stream(text);
    ini::File file;
    file.read(stream);
    return file;
}

std::string ReadError(const std::string& text) {
    try {
        Read(text);
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return "";
}

std::string Value(const ini::File& file, const std::string& section, const std::string& key) {
    const ini::Section* found = file.Find(section);
    const std::string* value = found != nullptr ? found->Find(key) : nullptr;
    return value != nullptr ? *value : "(none)";
}

TEST(IniFile, ReadsLinesAsPeopleWriteThem) {
    const ini::File file = Read("; comment\n# comment\n\n  [Cam]  \n  Exposure : 100  \na=b:c\nu:v=w\nnoise\n"
                                "\tTab\t= x \n[Other] rest]\nq=\n[Cam]\nGain=2\n");
    const std::tuple<const char*, const char*, const char*> values[] = {
        {"Cam", "Exposure", "100"}, {"Cam", "a", "b:c"},  {"Cam", "u", "v=w"},
        {"Cam", "\tTab\t", "x"},    {"Cam", "Gain", "2"}, {"Other] rest", "q", ""},
        {"Nothing", "q", "(none)"}};
    for (const auto& [section, key, value] : values)
        EXPECT_EQ(Value(file, section, key), value) << key;
    EXPECT_EQ(file.Find("Cam")->size(), 5U);
    const ini::File other = Read("[Cam]\r\nGain = 2\r \r\n\r\n; comment\r\nName=a b\r\n");
    EXPECT_EQ(Value(other, "Cam", "Gain") + Value(other, "Cam", "Name"), "2a b") << "lines end with CRLF";
}

TEST(IniFile, SaysWhatIsWrong) {
    const std::pair<const char*, const char*> texts[] = {{"a=1", "file is missing a section header"},
                                                         {"[]\n", "section headers cannot be empty"},
                                                         {"[s]\n = 1\n", "keys cannot be empty"},
                                                         {"[s]\nx=1\nx=2\n", "key already exists"},
                                                         {"[s]\nx=1\n[t]\n[s]\nx=2\n", "key already exists"},
                                                         {"[s]\nx=1\n[t]\nx=2\n", ""}};
    for (const auto& [text, error] : texts)
        EXPECT_EQ(ReadError(text), error) << text;
    std::ifstream closed;
    EXPECT_THROW(ini::File().read(closed), std::invalid_argument);
    EXPECT_THROW(ini::File().write("/nowhere/file.ini"), std::invalid_argument);
}

// What was asked for by a key: the code, and what the output holds then, which held `kept` before.
template <typename T>
std::pair<StatusCode, T> Get(const SystemConfigINI& config, const char* key, T kept,
                             const char* section = nullptr) {
    const StatusCode status = config.GetValue(key, kept, section);
    return {status, kept};
}

class ConfigFile : public ::testing::Test {
protected:
    std::string Path() const { return dir_ / "test.ini"; }
    void Write(const std::string& text) const { std::ofstream(Path()) << text; }
    SystemConfigINI Load() const { return {Path().c_str(), "VxSDK3"}; }

    TempDir dir_;
};

TEST_F(ConfigFile, ConvertsOnReading) {
    Write("[VxSDK3]\nt=TRUE\nf=False\nyes=yes\nn=12abc\nw=abc\nbig=99999999999999999999\nd=2.5e3\n[Cam]\ns=x "
          "y\n");
    const SystemConfigINI config = Load();
    EXPECT_EQ(Get(config, "t", false), std::pair(Status::Ok, true));
    EXPECT_EQ(Get(config, "f", true), std::pair(Status::Ok, false));
    EXPECT_EQ(Get(config, "yes", true), std::pair(Status::NotAvailable, true));
    EXPECT_EQ(Get(config, "n", -1LL), std::pair(Status::Ok, 12LL));
    EXPECT_EQ(Get(config, "w", -1LL), std::pair(Status::NotFound, 0LL));
    EXPECT_EQ(Get(config, "big", -1LL), std::pair(Status::NotFound, 0LL));
    EXPECT_EQ(Get(config, "d", 0.0), std::pair(Status::Ok, 2500.0));
    EXPECT_EQ(Get<std::string>(config, "s", "kept"), std::pair(Status::NotFound, std::string("kept")));
    EXPECT_EQ(Get<std::string>(config, "s", "kept", "Cam"), std::pair(Status::Ok, std::string("x y")));
    EXPECT_THROW(Get<std::string>(config, "", ""), std::invalid_argument);
}

TEST_F(ConfigFile, EverySetIsOnDisk) {
    Write("[VxSDK3]\nold=1\n[a]\ny : two words\nz=\n");
    SystemConfigINI config = Load();
    EXPECT_EQ(config.SetValue("i", -5LL, nullptr), Status::Ok);
    EXPECT_EQ(config.SetValue("d", 0.5, nullptr), Status::Ok);
    EXPECT_EQ(config.SetValue("b", true, "New"), Status::Ok);
    EXPECT_EQ(config.SetValue("old", std::string("two"), nullptr), Status::Ok);
    EXPECT_THROW(config.SetValue("", true, nullptr), std::invalid_argument);
    const std::tuple<const char*, const char*, const char*> values[] = {
        {nullptr, "i", "-5"},    {nullptr, "d", "0.500000"}, {"New", "b", "true"},
        {nullptr, "old", "two"}, {"a", "y", "two words"},    {"a", "z", ""}};
    for (const auto& [section, key, value] : values)
        EXPECT_EQ(Get<std::string>(Load(), key, "none", section), std::pair(Status::Ok, std::string(value)))
            << key;
}

// As a program that speaks German: numbers in files stay as they are.
TEST_F(ConfigFile, NumbersHaveAPointWhateverTheLocale) {
    const std::string make = "localedef -i de_DE -f UTF-8 " + (dir_ / "de_DE.UTF-8") + " >/dev/null 2>&1";
    ASSERT_EQ(std::system(make.c_str()), 0)
        << "localedef and the sources of locales are needed (scripts/setup.sh)";
    ::setenv("LOCPATH", dir_.Path().c_str(), 1);
    const bool german = std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr;
    ::unsetenv("LOCPATH");
    ASSERT_TRUE(german && std::stod("2,5") == 2.5);
    Write("[VxSDK3]\nd=2.25\n");
    SystemConfigINI config = Load();
    const auto read = Get(config, "d", 0.0);
    const StatusCode written = config.SetValue("e", 2.5, nullptr);
    std::setlocale(LC_ALL, "C");
    EXPECT_EQ(read, std::pair(Status::Ok, 2.25));
    EXPECT_EQ(written, Status::Ok);
    EXPECT_EQ(Get<std::string>(Load(), "e", ""), std::pair(Status::Ok, std::string("2.500000")));
}

TEST_F(ConfigFile, NaturalSetsKeepTheirKind) {
    Write("[VxSDK3]\n");
    SystemConfigINI config = Load();
    ISystemConfig& interface = config;
    EXPECT_EQ(interface.SetValue("text", "text", nullptr), Status::Ok);
    EXPECT_EQ(interface.SetValue("int", 5, nullptr), Status::Ok);
    EXPECT_EQ(interface.SetValue("size", std::size_t(6), nullptr), Status::Ok);
    EXPECT_EQ(interface.SetValue("large", UINT64_MAX, nullptr), Status::NotFound);
    EXPECT_EQ(interface.SetValue("float", 0.5F, nullptr), Status::Ok);
    EXPECT_EQ(interface.SetValue("bool", false, nullptr), Status::Ok);
    std::string all;
    for (const char* key : {"text", "int", "size", "float", "bool"})
        all += Get<std::string>(Load(), key, "none").second + " ";
    EXPECT_EQ(all, "text 5 6 0.500000 false ");
}

TEST_F(ConfigFile, WhatWouldNotBeReadBackIsRefused) {
    Write("[VxSDK3]\nkept=1\n");
    SystemConfigINI config = Load();
    const std::tuple<const char*, const char*, const char*> refused[] = {
        {nullptr, "k", "a\nx=2"}, {nullptr, "k", "a\rb"}, {nullptr, "a\nb", "v"}, {"s\nt", "k", "v"},
        {nullptr, "a=b", "v"},    {nullptr, "[k]", "v"},  {nullptr, "#k", "v"},   {"", "k", "v"}};
    for (const auto& [section, key, value] : refused) {
        EXPECT_EQ(config.SetValue(key, value, section), Status::NotFound) << key;
        EXPECT_NE(LastFailure().text, "") << key;
    }
    EXPECT_EQ(config.SetValue("more", "1", nullptr), Status::Ok);
    EXPECT_EQ(Get<std::string>(Load(), "kept", "none").second, "1");
}

TEST_F(ConfigFile, IsReplacedAsAWhole) {
    Write("[VxSDK3]\nold=1\n");
    ASSERT_EQ(::chmod(Path().c_str(), 0640), 0);
    const std::string link = dir_ / "link.ini";
    std::filesystem::create_symlink("test.ini", link);
    SystemConfigINI config(link.c_str(), "VxSDK3");
    std::ifstream reader(Path()); // holds the file that is replaced
    EXPECT_EQ(config.SetValue("new", "2", nullptr), Status::Ok);
    std::stringstream before;
    before << reader.rdbuf();
    EXPECT_EQ(before.str(), "[VxSDK3]\nold=1\n") << "never half written";
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(Get<std::string>(Load(), "new", "none").second, "2") << "the link is followed";
    struct stat status {};
    EXPECT_EQ(::stat(Path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0640U);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir_.Path()), {}), 2)
        << "nothing is left beside it";
}

TEST_F(ConfigFile, AFullDiskLeavesTheOldOne) {
    Write("[VxSDK3]\nold=1\n");
    SystemConfigINI config = Load();
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit tight{10, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &tight), 0);
    const StatusCode status = config.SetValue("new", "2", nullptr);
    const std::string why = LastFailure().text;
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, oldHandler);
    EXPECT_EQ(status, Status::WrongState);
    EXPECT_NE(why.find("File too large"), std::string::npos) << why;
    EXPECT_EQ(Get<std::string>(Load(), "old", "none").second, "1");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir_.Path()), {}), 1)
        << "nothing is left beside it";
}

TEST_F(ConfigFile, WithoutRoomBesideItIsOverwrittenInPlace) {
    Write("[VxSDK3]\nold=1\n");
    SystemConfigINI config = Load();
    const LogCapture log;
    const bool root = ::geteuid() == 0; // who may write everywhere
    if (root)
        for (const std::string& path : {Path(), std::string(dir_.Path())})
            ASSERT_EQ(::chown(path.c_str(), 65534, 65534), 0);
    ASSERT_EQ(::chmod(dir_.Path().c_str(), 0500), 0);
    ASSERT_TRUE(!root || ::seteuid(65534) == 0);
    const StatusCode status = config.SetValue("new", "2", nullptr);
    ASSERT_TRUE(!root || ::seteuid(0) == 0);
    ::chmod(dir_.Path().c_str(), 0700);
    EXPECT_EQ(status, Status::Ok);
    EXPECT_TRUE(log.Has("in place"));
    EXPECT_EQ(Get<std::string>(Load(), "new", "none").second, "2");
}

TEST_F(ConfigFile, WithoutAFileNothingIsThereAndNothingIsMade) {
    SystemConfigINI config = Load();
    const std::pair<StatusCode, std::string> absent(Status::NotAvailable, "kept");
    EXPECT_EQ(Get<std::string>(config, "a", "kept"), absent);
    EXPECT_EQ(Get<std::string>(config, "", "kept"), absent);
    EXPECT_EQ(Get<std::string>(SystemConfigINI(nullptr, nullptr), "a", "kept"), absent);
    EXPECT_EQ(config.SetValue("a", true, nullptr), Status::NotAvailable);
    EXPECT_FALSE(std::filesystem::exists(Path()));
}

TEST_F(ConfigFile, MalformedIsLoggedOnceAndThenAbsent) {
    Write("[VxSDK3]\nx=1\nx=2\n");
    const LogCapture log;
    SystemConfigINI config = Load();
    EXPECT_EQ(Get(config, "x", 0LL), std::pair(Status::NotAvailable, 0LL));
    EXPECT_EQ(config.SetValue("x", 3LL, nullptr), Status::NotAvailable);
    EXPECT_EQ(log.Count("key already exists"), 1U);
    EXPECT_TRUE(log.Has(Path()));
}

TEST_F(ConfigFile, AbsentDefaultsAreZero) {
    ASSERT_NE(DefaultSystemConfig(), nullptr);
    EXPECT_EQ(std::tuple(ConfigBool("NoSuchKey"), ConfigInteger("NoSuchKey"), ConfigFloat("NoSuchKey"),
                         ConfigString(ConfigKeys::RemoteStreamXml)),
              std::tuple(false, 0LL, 0.0, std::string()));
}

} // namespace
} // namespace VX3::Test
