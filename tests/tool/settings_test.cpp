// Settings as text: selectors, order, and what a person may type.
#include "base/ToolError.h"
#include "features/Feature.h"
#include "features/FeatureLoader.h"
#include "features/FeatureSaver.h"
#include "features/FeatureText.h"
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
const char* const Description = R"(<?xml version="1.0"?>
<RegisterDescription ModelName="M" VendorName="V" StandardNameSpace="None" SchemaMajorVersion="1"
  SchemaMinorVersion="1" SchemaSubMinorVersion="0" MajorVersion="1" MinorVersion="0" SubMinorVersion="0"
  ProductGuid="1" VersionGuid="2" ToolTip="t" xmlns="http://www.genicam.org/GenApi/Version_1_1">
<Category Name="Root"><pFeature>Tap</pFeature><pFeature>Gain</pFeature><pFeature>Level</pFeature>
  <pFeature>Limit</pFeature><pFeature>Label</pFeature><pFeature>Stuck</pFeature></Category>
<Enumeration Name="Tap"><Streamable>Yes</Streamable><EnumEntry Name="Left"><Value>0</Value></EnumEntry>
  <EnumEntry Name="Middle"><Value>1</Value></EnumEntry><EnumEntry Name="Right"><Value>2</Value></EnumEntry>
  <pValue>TapReg</pValue><pSelected>Gain</pSelected></Enumeration>
<IntReg Name="TapReg"><Address>0x10</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
  <Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>
<Integer Name="Gain"><Streamable>Yes</Streamable><pValue>GainReg</pValue></Integer>
<IntReg Name="GainReg"><Address>0x20</Address><pIndex Offset="4">TapReg</pIndex><Length>4</Length>
  <AccessMode>RW</AccessMode><pPort>Device</pPort><Cachable>NoCache</Cachable><Sign>Unsigned</Sign>
  <Endianess>LittleEndian</Endianess></IntReg>
<Integer Name="Level"><Streamable>Yes</Streamable><pValue>LevelReg</pValue><Min>0</Min><pMax>Limit</pMax></Integer>
<IntReg Name="LevelReg"><Address>0x40</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
  <Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>
<Integer Name="Limit"><Streamable>Yes</Streamable><pValue>LimitReg</pValue><Min>0</Min><Max>1000</Max></Integer>
<IntReg Name="LimitReg"><Address>0x44</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
  <Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>
<StringReg Name="Label"><Streamable>Yes</Streamable><Address>0x50</Address><Length>16</Length>
  <AccessMode>RW</AccessMode><pPort>Device</pPort></StringReg>
<IntReg Name="Stuck"><Address>0x900000</Address><Length>4</Length><AccessMode>RW</AccessMode>
  <pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>
<Port Name="Device"/>
</RegisterDescription>
)";

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
    EXPECT_NE(result.failures[4].reason.find("1000 instead of 5000"), std::string::npos);
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
