#include "core/DefaultConfig.h"
#include "core/IniFile.h"
#include "core/SystemConfigINI.h"
#include "support/TempDir.h"
#include "vx3/core/Logger.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

namespace VX3 {
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
    EXPECT_EQ(Value(file, "Cam", "Exposure"), "100");
    EXPECT_EQ(Value(file, "Cam", "a"), "b:c");
    EXPECT_EQ(Value(file, "Cam", "u"), "v=w");
    EXPECT_EQ(Value(file, "Cam", "\tTab\t"), "x");
    EXPECT_EQ(Value(file, "Cam", "Gain"), "2");
    EXPECT_EQ(file.Find("Cam")->size(), 5U);
    EXPECT_EQ(Value(file, "Other] rest", "q"), "");
    EXPECT_EQ(file.Find("Nothing"), nullptr);
}

TEST(IniFile, SaysWhatIsWrong) {
    EXPECT_EQ(ReadError("a=1"), "file is missing a section header");
    EXPECT_EQ(ReadError("[]\n"), "section headers cannot be empty");
    EXPECT_EQ(ReadError("[s]\n = 1\n"), "keys cannot be empty");
    EXPECT_EQ(ReadError("[s]\nx=1\nx=2\n"), "key already exists");
    EXPECT_EQ(ReadError("[s]\nx=1\n[t]\n[s]\nx=2\n"), "key already exists");
    EXPECT_EQ(ReadError("[s]\nx=1\n[t]\nx=2\n"), "");
    std::ifstream closed;
    EXPECT_THROW(ini::File().read(closed), std::invalid_argument);
    EXPECT_THROW(ini::File().write("/nowhere/file.ini"), std::invalid_argument);
}

TEST(IniFile, SurvivesItsOwnWriter) {
    const Testing::TempDir dir;
    const ini::File file = Read("[a]\nx = 1\ny : two words\n[b]\nz=\n");
    file.write(dir / "out.ini");
    std::ifstream stream(dir / "out.ini");
    ini::File again;
    again.read(stream);
    EXPECT_EQ(again.size(), 2U);
    EXPECT_EQ(Value(again, "a", "x"), "1");
    EXPECT_EQ(Value(again, "a", "y"), "two words");
    EXPECT_EQ(Value(again, "b", "z"), "");
}

class ConfigFile : public ::testing::Test {
protected:
    std::string Path() const { return dir_ / "test.ini"; }
    void Write(const std::string& text) const { std::ofstream(Path()) << text; }
    SystemConfigINI Load() const { return {Path().c_str(), "VxSDK3"}; }
    Testing::TempDir dir_;
};

TEST_F(ConfigFile, ConvertsOnReading) {
    Write("[VxSDK3]\nt=TRUE\nf=False\nyes=yes\nn=12abc\nw=abc\nbig=99999999999999999999\nd=2.5e3\n[Cam]\ns=x "
          "y\n");
    const SystemConfigINI config = Load();
    bool flag = false;
    EXPECT_EQ(config.GetValue("t", flag, nullptr), Status::Ok);
    EXPECT_TRUE(flag);
    EXPECT_EQ(config.GetValue("yes", flag, nullptr), Status::NotAvailable);
    EXPECT_TRUE(flag);
    EXPECT_EQ(config.GetValue("f", flag, nullptr), Status::Ok);
    EXPECT_FALSE(flag);
    long long integer = -1;
    EXPECT_EQ(config.GetValue("n", integer, nullptr), Status::Ok);
    EXPECT_EQ(integer, 12);
    EXPECT_EQ(config.GetValue("w", integer, nullptr), Status::NotFound);
    EXPECT_EQ(integer, 0);
    integer = 5;
    EXPECT_EQ(config.GetValue("big", integer, nullptr), Status::NotFound);
    EXPECT_EQ(integer, 0);
    double real = 0;
    EXPECT_EQ(config.GetValue("d", real, nullptr), Status::Ok);
    EXPECT_EQ(real, 2500.0);
    std::string text = "kept";
    EXPECT_EQ(config.GetValue("s", text, nullptr), Status::NotFound);
    EXPECT_EQ(text, "kept");
    EXPECT_EQ(config.GetValue("s", text, "Cam"), Status::Ok);
    EXPECT_EQ(text, "x y");
    EXPECT_THROW(config.GetValue("", text, nullptr), std::invalid_argument);
}

TEST_F(ConfigFile, EverySetIsOnDisk) {
    Write("[VxSDK3]\nold=1\n");
    SystemConfigINI config = Load();
    EXPECT_EQ(config.SetValue("i", -5LL, nullptr), Status::Ok);
    EXPECT_EQ(config.SetValue("d", 0.5, nullptr), Status::Ok);
    EXPECT_EQ(config.SetValue("b", true, "New"), Status::Ok);
    EXPECT_EQ(config.SetValue("old", std::string("two"), nullptr), Status::Ok);
    EXPECT_THROW(config.SetValue("", true, nullptr), std::invalid_argument);
    const SystemConfigINI again = Load();
    std::string text;
    EXPECT_EQ(again.GetValue("i", text, nullptr), Status::Ok);
    EXPECT_EQ(text, "-5");
    EXPECT_EQ(again.GetValue("d", text, nullptr), Status::Ok);
    EXPECT_EQ(text, "0.500000");
    EXPECT_EQ(again.GetValue("b", text, "New"), Status::Ok);
    EXPECT_EQ(text, "true");
    EXPECT_EQ(again.GetValue("old", text, nullptr), Status::Ok);
    EXPECT_EQ(text, "two");
}

TEST_F(ConfigFile, WithoutAFileNothingIsThereAndNothingIsMade) {
    SystemConfigINI config = Load();
    std::string text = "kept";
    EXPECT_EQ(config.GetValue("a", text, nullptr), Status::NotAvailable);
    EXPECT_EQ(config.GetValue("", text, nullptr), Status::NotAvailable);
    EXPECT_EQ(config.SetValue("a", true, nullptr), Status::NotAvailable);
    EXPECT_FALSE(std::filesystem::exists(Path()));
    EXPECT_EQ(SystemConfigINI(nullptr, nullptr).GetValue("a", text, nullptr), Status::NotAvailable);
    EXPECT_EQ(text, "kept");
}

TEST_F(ConfigFile, MalformedIsLoggedOnceAndThenAbsent) {
    Write("[VxSDK3]\nx=1\nx=2\n");
    const std::size_t before = VxLoggerGetLogItems().size();
    SystemConfigINI config = Load();
    long long value = 0;
    EXPECT_EQ(config.GetValue("x", value, nullptr), Status::NotAvailable);
    EXPECT_EQ(config.SetValue("x", 3LL, nullptr), Status::NotAvailable);
    const auto& items = VxLoggerGetLogItems();
    ASSERT_EQ(items.size(), before + 1);
    EXPECT_NE(items.back()->Info().find("key already exists"), std::string::npos);
    EXPECT_NE(items.back()->Info().find(Path()), std::string::npos);
}

TEST_F(ConfigFile, AbsentDefaultsAreZero) {
    ASSERT_NE(DefaultSystemConfig(), nullptr);
    EXPECT_FALSE(ConfigBool("NoSuchKey"));
    EXPECT_EQ(ConfigInteger("NoSuchKey"), 0);
    EXPECT_EQ(ConfigFloat("NoSuchKey"), 0.0);
    EXPECT_EQ(ConfigString(ConfigKeys::RemoteStreamXml), "");
}

} // namespace
} // namespace VX3
