// Settings as text: selectors, order, and what a person may type.
#include "base/Console.h"
#include "base/NearMiss.h"
#include "base/ToolError.h"
#include "features/Feature.h"
#include "features/FeatureLoader.h"
#include "features/FeatureSaver.h"
#include "features/FeatureText.h"
#include "features/FindFeature.h"
#include "features/ValueParser.h"
#include "support/MemoryOwner.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <sstream>

using namespace VX3;
using namespace VX3::Tool;
using namespace VX3::Test;

namespace {

// Gain has a value for each of three taps; Level may not exceed Limit, which stands behind it in the file.
const std::string Description = DescriptionOf(
    R"(<Category Name="Root"><pFeature>Tap</pFeature><pFeature>Gain</pFeature><pFeature>Level</pFeature>
  <pFeature>Limit</pFeature><pFeature>Label</pFeature><pFeature>Stuck</pFeature></Category>
<Enumeration Name="Tap"><Streamable>Yes</Streamable><EnumEntry Name="Left"><Value>0</Value></EnumEntry>
  <EnumEntry Name="Middle"><Value>1</Value></EnumEntry><EnumEntry Name="Right"><Value>2</Value></EnumEntry>
  <pValue>TapReg</pValue><pSelected>Gain</pSelected></Enumeration>
<Integer Name="Gain"><Streamable>Yes</Streamable><pValue>GainReg</pValue></Integer>
<Integer Name="Level"><Streamable>Yes</Streamable><pValue>LevelReg</pValue><Min>0</Min><pMax>Limit</pMax></Integer>
<Integer Name="Limit"><Streamable>Yes</Streamable><pValue>LimitReg</pValue><Min>0</Min><Max>1000</Max></Integer>)" +
    RegisterNode("IntReg", "TapReg", 0x10, 4, "RW", LittleEndian) +
    RegisterNode("IntReg", "GainReg", 0x20, 4, "RW",
                 LittleEndian + "<pIndex Offset=\"4\">TapReg</pIndex><Cachable>NoCache</Cachable>") +
    RegisterNode("IntReg", "LevelReg", 0x40, 4, "RW", LittleEndian) +
    RegisterNode("IntReg", "LimitReg", 0x44, 4, "RW", LittleEndian) +
    RegisterNode("StringReg", "Label", 0x50, 16, "RW", Streamable) +
    RegisterNode("IntReg", "Stuck", 0x900000, 4, "RW", LittleEndian));

struct Tapped {
    std::shared_ptr<MemoryOwner> owner = std::make_shared<MemoryOwner>();
    GenApiRI genApi{Xml("tapped.xml", Description), owner, nullptr};
    std::shared_ptr<GenICam::INodeMap> nodes = genApi.GetNodeMap();

    unsigned char& At(std::size_t address) const { return owner->memory[address]; }
    std::string Save() const {
        std::ostringstream text;
        const FeatureSaver::Result result = FeatureSaver(*nodes, text, false).Save();
        EXPECT_TRUE(result.problems.empty()) << result.problems.front();
        return text.str();
    }
    FeatureLoader::Result Load(const std::string& text) const {
        std::istringstream lines(text);
        return FeatureLoader(*nodes).Load(ReadLines(lines));
    }
};

} // namespace

TEST(Settings, SaveEverySettingOfASelectorAndLeaveItAsItWas) {
    const Tapped camera;
    camera.At(0x10) = 1;
    camera.At(0x20) = 7;
    camera.At(0x24) = 8;
    camera.At(0x28) = 9;
    camera.At(0x44) = 100;
    std::memcpy(&camera.At(0x50), "a \"b\" ", 6);
    EXPECT_EQ(camera.Save(), "Level = 0\nLimit = 100\nLabel = \"a \\\"b\\\" \"\n"
                             "Gain[Tap=Left] = 7\nGain[Tap=Middle] = 8\nGain[Tap=Right] = 9\nTap = Middle\n");
    EXPECT_EQ(camera.At(0x10), 1);
}

TEST(Settings, LoadWhatWasSavedInWhateverOrderTheCameraNeeds) {
    const Tapped source;
    source.At(0x10) = 2;
    source.At(0x20) = 7;
    source.At(0x24) = 8;
    source.At(0x40) = 90;
    source.At(0x44) = 100;
    std::memcpy(&source.At(0x50), " x", 2);
    const std::string text = source.Save();
    const Tapped target; // its Limit of 0 refuses the Level until Limit is loaded
    const FeatureLoader::Result result = target.Load(text);
    EXPECT_TRUE(result.failures.empty()) << result.failures.front().reason;
    EXPECT_EQ(target.Save(), text);
    EXPECT_EQ(target.At(0x10), 2) << "the selector's own line comes last";
}

TEST(Settings, ReportWhatCannotBeSetAndGoOn) {
    const Tapped camera;
    const FeatureLoader::Result result =
        camera.Load("Absent = 1\n# comment\n\nGain[Tap=Nowhere] = 1\nGain[Absent=1] = 1\nLimit = many\n"
                    "Limit = 5000\nStuck = 3\nLabel = \"ok\"\nGain[Tap=Right] = 6\n");
    std::vector<unsigned int> lines;
    for (const FeatureLoader::Failure& failure : result.failures) {
        EXPECT_FALSE(failure.reason.empty());
        lines.push_back(failure.line.number);
    }
    EXPECT_EQ(lines, (std::vector<unsigned int>{1, 4, 5, 6, 7, 8}));
    EXPECT_EQ(result.set, 2U);
    EXPECT_EQ(camera.At(0x28), 6);
    EXPECT_TRUE(result.failures[4].adjusted);
    EXPECT_FALSE(result.failures[5].adjusted);
    EXPECT_NE(result.failures[4].reason.find("1000 instead of 5000"), std::string::npos);
}

// Four selectors of 200 values each in front of one feature: 1.6 billion settings.
TEST(Settings, AreBoundedOverProductsOfSelectors) {
    std::string nodes = R"(<Category Name="Root"><pFeature>Cell</pFeature></Category>)";
    for (int i = 0; i < 4; ++i) {
        const std::string name = "Axis" + std::to_string(i);
        nodes += "<Integer Name=\"" + name + "\"><pValue>" + name + "Reg</pValue><Min>0</Min><Max>199</Max>" +
                 "<pSelected>Cell</pSelected></Integer>" +
                 RegisterNode("IntReg", name + "Reg", 0x10 + 4 * i, 4, "RW", LittleEndian);
    }
    nodes += RegisterNode("IntReg", "Cell", 0x40, 4, "RW", Streamable + LittleEndian);
    const auto owner = std::make_shared<MemoryOwner>();
    GenApiRI genApi(Xml("axes.xml", DescriptionOf(nodes)), owner, nullptr);
    owner->memory[0x14] = 7;
    std::ostringstream text;
    const FeatureSaver::Result result = FeatureSaver(*genApi.GetNodeMap(), text, false).Save();
    EXPECT_EQ(text.str(), "Cell[Axis0=0,Axis1=7,Axis2=0,Axis3=0] = 0\n");
    ASSERT_EQ(result.omitted.size(), 1U);
    EXPECT_NE(result.omitted.front().find("Axis0, Axis1"), std::string::npos);
    EXPECT_LT(owner->reads + owner->writes, 100);
}

TEST(Settings, EndWithinTheirLimitsAndWithTheCamera) {
    const Tapped camera;
    std::ostringstream text;
    const FeatureSaver::Limits three{2, 16384, 3, 1U << 20};
    const FeatureSaver::Result full = FeatureSaver(*camera.nodes, text, true, {}, three).Save();
    EXPECT_EQ(full.saved, 3U);
    EXPECT_EQ(full.omitted.size(), 1U);

    FeatureWatch dead;
    dead.gone = [](const std::string&) { return true; };
    camera.owner->result = Status::TimeOut;
    const int before = camera.owner->reads;
    const FeatureSaver::Result result = FeatureSaver(*camera.nodes, text, false, dead, {}).Save();
    EXPECT_TRUE(result.gone);
    EXPECT_LE(camera.owner->reads - before, 2) << "nobody goes on asking a camera that is gone";
    std::istringstream lines("Limit = 3\nLabel = \"x\"\n");
    const FeatureLoader::Result loaded = FeatureLoader(*camera.nodes, dead).Load(ReadLines(lines));
    ASSERT_EQ(loaded.failures.size(), 2U);
    EXPECT_TRUE(loaded.gone);
    EXPECT_EQ(loaded.failures[1].reason, "not tried");
}

TEST(Settings, SayWhenTheCameraHoldsAnotherValue) {
    const Tapped camera;
    using Kind = SetResult::Kind;
    GenICam::INode& limit = FindFeature(*camera.nodes, "limit"); // in any case
    EXPECT_EQ(WriteText(limit, "640.0").kind, Kind::Taken);
    EXPECT_EQ(WriteText(limit, "5000").kind, Kind::Adjusted);
    EXPECT_EQ(WriteText(limit, "5000").kind, Kind::Adjusted) << "the bound was reached before";
    EXPECT_EQ(WriteText(FindFeature(*camera.nodes, "Tap"), "right").held, "Right");
    try {
        FindFeature(*camera.nodes, "Levle");
        ADD_FAILURE() << "no such feature";
    } catch (const ToolError& error) {
        EXPECT_NE(std::string(error.what()).find("did you mean Level?"), std::string::npos) << error.what();
    }
}

TEST(Settings, RefuseLinesThatAreNone) {
    for (const char* text :
         {"Width", "= 3", "A[B=1 = 2", "A[B] = 2", "A[ =1] = 2", "A[B=1]x = 2", "A = \"open"}) {
        std::istringstream lines(text);
        EXPECT_THROW(ReadLines(lines), ToolError) << text;
    }
}

TEST(ValueParser, TakesWhatPeopleType) {
    const std::pair<const char*, long> integers[] = {{"010", 10},
                                                     {"-5", -5},
                                                     {"0x1F", 31},
                                                     {"0xFFFFFFFFFFFFFFFF", -1},
                                                     {"-9223372036854775808", INT64_MIN},
                                                     {"10.0.0.2", 0x0A000002},
                                                     {"00:11:22:33:44:55", 0x001122334455}};
    for (const auto& [text, value] : integers)
        EXPECT_EQ(ParseInteger(text), value) << text;
    for (const char* text :
         {"", "-", "0x", "1.5", "1e3", "9223372036854775808", "10.0.0.256", "12 ", "1.2.3"})
        EXPECT_THROW(ParseInteger(text), ToolError) << text;
    EXPECT_TRUE(ParseBoolean("On"));
    EXPECT_THROW(ParseBoolean("2"), ToolError);
    EXPECT_DOUBLE_EQ(ParseFloat("1e-3"), 0.001);
    EXPECT_THROW(ParseFloat("nan"), ToolError);
    EXPECT_EQ(ParseBytes("0x01aB"), (std::vector<unsigned char>{0x01, 0xAB}));
    EXPECT_THROW(ParseBytes("0x1"), ToolError);
    for (const double value : {0.1, 1000.0, 1.0 / 3.0, 1e300, -2.5, 0.0})
        EXPECT_EQ(ParseFloat(NumberText(value)), value);
    EXPECT_EQ(NumberText(1000.0), "1000");
}

TEST(ValueParser, ConvertsUnits) {
    struct Case {
        const char* text;
        const char* unit;
        double value;
    };
    for (const Case& c : {Case{"5000", "us", 5000}, Case{"5000us", "us", 5000}, Case{"5 ms", "us", 5000},
                          Case{"0.3ms", "us", 300}, Case{"1.5kHz", "Hz", 1500}, Case{"8Mbps", "Bps", 1e6},
                          Case{"3 DB", "dB", 3}, Case{"2min", "s", 120}, Case{"-1e3", "", -1000}})
        EXPECT_DOUBLE_EQ(ParseFloatIn(c.text, c.unit), c.value) << c.text;
    for (const auto& [text, unit] : {std::pair{"5ms", "Hz"}, {"5ms", ""}, {"5 apples", "us"}, {"5msx", "us"}})
        EXPECT_THROW(ParseFloatIn(text, unit), ToolError) << text;
    EXPECT_EQ(ParseIntegerIn("5ms", "us"), 5000);
    EXPECT_THROW(ParseIntegerIn("1.5us", "us"), ToolError);
    EXPECT_THROW(ParseIntegerIn("1e300", ""), ToolError);
}

TEST(NearMiss, FindsWhatWasMeant) {
    const std::vector<std::string> names{"ExposureTime", "ExposureAuto", "Width", "WIDTH", "Gain"};
    EXPECT_EQ(*FindName(names, "Width"), "Width");
    EXPECT_EQ(*FindName(names, "gain"), "Gain");
    EXPECT_EQ(FindName(names, "width"), nullptr) << "two differ in case alone";
    EXPECT_EQ(DidYouMean("exposuretmie", names), "; did you mean ExposureTime?");
    EXPECT_EQ(DidYouMean("exposure", names), "; did you mean ExposureTime or ExposureAuto?");
    EXPECT_EQ(DidYouMean("zoom", names), "");
}

TEST(Console, MasksWhatATerminalWouldObey) {
    const std::pair<const char*, const char*> texts[] = {{"Gr\xC3\xBC\xC3\x9F", "Gr\xC3\xBC\xC3\x9F"},
                                                         {"\x1B[31m", "?[31m"},
                                                         {"\xC2\x9B"
                                                          "31m",
                                                          "?31m"}, // C1: CSI
                                                         {"\x9B"
                                                          "31m",
                                                          "?31m"},
                                                         {"\xE2\x80\xAE"
                                                          "x",
                                                          "?x"}, // right to left
                                                         {"\xC0\x9B\xF4", "???"}};
    for (const auto& [text, masked] : texts)
        EXPECT_EQ(Printable(text), masked);
    EXPECT_EQ(JsonText("\xC2\x9B", -1), "\"\\u009b\"");
}
