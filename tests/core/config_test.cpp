#include "core/DefaultConfig.h"
#include "core/IniFile.h"
#include "core/SystemConfigINI.h"
#include "support/TempDir.h"
#include "vx3/core/Logger.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

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
    const std::size_t before = VxLoggerGetLogItems().size();
    SystemConfigINI config = Load();
    EXPECT_EQ(Get(config, "x", 0LL), std::pair(Status::NotAvailable, 0LL));
    EXPECT_EQ(config.SetValue("x", 3LL, nullptr), Status::NotAvailable);
    ASSERT_EQ(VxLoggerGetLogItems().size(), before + 1);
    const std::string text = VxLoggerGetLogItems().back()->Info();
    EXPECT_NE(text.find("key already exists"), std::string::npos) << text;
    EXPECT_NE(text.find(Path()), std::string::npos) << text;
}

TEST_F(ConfigFile, AbsentDefaultsAreZero) {
    ASSERT_NE(DefaultSystemConfig(), nullptr);
    EXPECT_EQ(std::tuple(ConfigBool("NoSuchKey"), ConfigInteger("NoSuchKey"), ConfigFloat("NoSuchKey"),
                         ConfigString(ConfigKeys::RemoteStreamXml)),
              std::tuple(false, 0LL, 0.0, std::string()));
}

} // namespace
} // namespace VX3::Test
