// Enumerations, Booleans, commands, texts, and what nodes tell about themselves.
#include "support/TestNodeMap.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace GenApi_3_2;
using namespace GenICam_3_2;
using namespace TestSupport;

namespace {

std::string Modes() {
    return "<Enumeration Name=\"Mode\"><EnumEntry "
           "Name=\"Off\"><Value>0</Value><NumericValue>1.5</NumericValue>"
           "</EnumEntry><EnumEntry Name=\"Slow\"><Value>2</Value><NumericValue>10</NumericValue>"
           "<pIsAvailable>HasSlow</pIsAvailable></EnumEntry><EnumEntry Name=\"Fast\"><Value>4</Value>"
           "<NumericValue>20</NumericValue></EnumEntry><EnumEntry Name=\"Never\"><Value>6</Value>"
           "<pIsImplemented>No</pIsImplemented></EnumEntry><EnumEntry Name=\"Broken\"/>"
           "<pValue>Reg</pValue></Enumeration><Enumeration Name=\"Other\"><EnumEntry Name=\"Off\">"
           "<Value>7</Value></EnumEntry><Value>7</Value></Enumeration>"
           "<Integer Name=\"No\"><Value>0</Value></Integer><Integer "
           "Name=\"HasSlow\"><Value>0</Value></Integer>"
           "<Float Name=\"Speed\"><pValue>Mode</pValue></Float>" +
           WordRegister("Reg", 0);
}

} // namespace

TEST(Enumeration, RefusesWhatIsNotThereByNameAndByNumber) {
    TestNodeMap nodes(Modes());
    auto& mode = nodes.Enumeration("Mode");
    EXPECT_EQ("Off", *mode);
    mode = "Fast";
    EXPECT_EQ(4u, nodes.port.Word(0));
    EXPECT_THROW(mode = "Slow", AccessException);
    EXPECT_THROW(mode.SetIntValue(2), AccessException);
    EXPECT_THROW(mode.FromString("Never"), AccessException);
    EXPECT_THROW(mode.SetIntValue(6), AccessException);
    EXPECT_THROW(mode.SetIntValue(5), OutOfRangeException);
    EXPECT_THROW(mode = "Nothing", InvalidArgumentException);
    EXPECT_THROW(mode = "Broken", InvalidArgumentException);
    EXPECT_EQ("Fast", mode.ToString());
    nodes.Integer("HasSlow").SetValue(1);
    mode.SetIntValue(2);
    EXPECT_EQ("Slow", mode.GetCurrentEntry()->GetSymbolic());
    StringList_t names;
    mode.GetSymbolics(names);
    EXPECT_EQ((StringList_t{"Off", "Slow", "Fast"}), names);
    NodeList_t entries;
    mode.GetEntries(entries);
    EXPECT_EQ(4u, entries.size()) << "an entry without value is none";
    nodes.port.Put(0, 99);
    EXPECT_EQ(99, mode.GetIntValue(false, true)) << "a value without entry is still a number";
    EXPECT_EQ(nullptr, mode.GetCurrentEntry());
    EXPECT_THROW(mode.ToString(), RuntimeException);
}

TEST(Enumeration, EntriesAreNodesNamedAfterBoth) {
    TestNodeMap nodes(Modes());
    EXPECT_EQ(0, nodes.As<IEnumEntry>("EnumEntry_Mode_Off").GetValue());
    EXPECT_EQ(7, nodes.As<IEnumEntry>("EnumEntry_Other_Off").GetValue());
    EXPECT_EQ(4, nodes.Enumeration("Mode").GetEntryByName("Fast")->GetValue());
    EXPECT_EQ(nullptr, nodes.Enumeration("Mode").GetEntryByName("fast"));
    EXPECT_EQ("Fast", nodes.Enumeration("Mode").GetEntry(4)->GetSymbolic());
    EXPECT_EQ(nullptr, nodes.Enumeration("Mode").GetEntry(5));
    EXPECT_EQ(NA, nodes.Mode("EnumEntry_Mode_Slow"));
    EXPECT_EQ(NI, nodes.Mode("EnumEntry_Mode_Never"));
    EXPECT_EQ(20, nodes.As<IEnumEntry>("EnumEntry_Mode_Fast").GetNumericValue());
}

TEST(Enumeration, FloatOverItUsesTheNumericValues) {
    TestNodeMap nodes(Modes());
    auto& speed = nodes.Float("Speed");
    EXPECT_EQ(1.5, speed.GetValue());
    EXPECT_EQ(1.5, speed.GetMin());
    EXPECT_EQ(20, speed.GetMax());
    speed.SetValue(12); // "Slow" would be nearest but is not available
    EXPECT_EQ(4u, nodes.port.Word(0));
    nodes.Integer("HasSlow").SetValue(1);
    speed.SetValue(12);
    EXPECT_EQ(2u, nodes.port.Word(0));
}

TEST(Boolean, OnAndOffValues) {
    TestNodeMap nodes(WordRegister("Reg", 0) +
                      "<Boolean Name=\"Plain\"><pValue>Reg</pValue></Boolean>"
                      "<Boolean Name=\"Odd\"><pValue>Reg</pValue><OnValue>7</OnValue>"
                      "<OffValue>1</OffValue></Boolean>"
                      "<Boolean Name=\"Constant\"><Value>true</Value></Boolean>");
    auto& odd = nodes.As<IBoolean>("Odd");
    odd = true;
    EXPECT_EQ(7u, nodes.port.Word(0));
    odd.SetValue(false);
    EXPECT_EQ(1u, nodes.port.Word(0));
    EXPECT_FALSE(odd());
    EXPECT_TRUE(nodes.As<IBoolean>("Plain").GetValue());
    odd.FromString("true");
    EXPECT_EQ("1", odd.ToString());
    EXPECT_TRUE(nodes.As<IBoolean>("Constant").GetValue());
    EXPECT_THROW(odd.FromString("maybe"), InvalidArgumentException);
}

TEST(Command, IsDoneWhenTheDeviceHasReplacedTheValue) {
    TestNodeMap nodes(WordRegister("Reg", 0) +
                      "<Integer Name=\"Value\"><Value>3</Value></Integer>"
                      "<Command Name=\"Run\"><pValue>Reg</pValue>"
                      "<pCommandValue>Value</pCommandValue></Command>"
                      "<Command Name=\"Blind\"><ImposedAccessMode>WO</ImposedAccessMode>"
                      "<pValue>Reg</pValue><CommandValue>9</CommandValue></Command>");
    auto& run = nodes.As<ICommand>("Run");
    int calls = 0;
    Register(&nodes.Node("Run"), [&](INode*) { ++calls; });
    run.Execute();
    EXPECT_EQ(3u, nodes.port.Word(0));
    EXPECT_FALSE(run.IsDone());
    EXPECT_FALSE(run.IsDone());
    EXPECT_EQ(2, nodes.port.reads) << "the device is asked each time";
    nodes.port.Put(0, 0);
    EXPECT_TRUE(run.IsDone());
    EXPECT_TRUE(run.IsDone());
    EXPECT_EQ(2, calls) << "when it was executed and when it was done";
    nodes.As<ICommand>("Blind").Execute();
    EXPECT_TRUE(nodes.As<ICommand>("Blind").IsDone());
    EXPECT_EQ(9u, nodes.port.Word(0));
}

TEST(Nodes, DeviceErrorAfterAWriteIsAnException) {
    TestNodeMap nodes(
        WordRegister("Status", 0) + WordRegister("Reg", 4) +
        "<Enumeration Name=\"Error\"><EnumEntry Name=\"Fine\"><Value>0</Value></EnumEntry>"
        "<EnumEntry Name=\"TooHot\"><Value>3</Value></EnumEntry><pValue>Status</pValue>"
        "</Enumeration><Integer Name=\"Power\"><pError>Error</pError><pValue>Reg</pValue></Integer>");
    nodes.Integer("Power").SetValue(1);
    nodes.port.Put(0, 3);
    const std::string text = FailureOf([&] { nodes.Integer("Power").SetValue(2); });
    EXPECT_NE(std::string::npos, text.find("TooHot")) << text;
}

TEST(Nodes, PropertiesTextsAndLinks) {
    TestNodeMap nodes(
        "<Category Name=\"Root\"><pFeature>Width</pFeature><pFeature>Gone</pFeature></Category>"
        "<Integer Name=\"Width\" NameSpace=\"Standard\"><ToolTip>tip</ToolTip><Description>long</Description>"
        "<DisplayName>Image Width</DisplayName><Visibility>Expert</Visibility><Streamable>Yes</Streamable>"
        "<EventID>9001</EventID><pValue>Reg</pValue><pMax>Max</pMax><Unit>px</Unit></Integer>"
        "<Integer Name=\"Max\"><Value>10</Value></Integer>" +
        WordRegister("Reg", 0) +
        "<Enumeration Name=\"Selector\"><EnumEntry Name=\"A\"><Value>0</Value></EnumEntry><Value>0</Value>"
        "<pSelected>Width</pSelected><pSelected>Max</pSelected></Enumeration>"
        "<IntSwissKnife Name=\"Knife\"><pVariable Name=\"A\">Width</pVariable>"
        "<pVariable Name=\"B\">Max</pVariable><Formula>A + B</Formula></IntSwissKnife>");
    INode& width = nodes.Node("Width");
    EXPECT_EQ("Std::Width", width.GetName(true));
    EXPECT_EQ("Image Width", width.GetDisplayName());
    EXPECT_EQ("Max", nodes.Node("Max").GetDisplayName());
    EXPECT_EQ(Expert, width.GetVisibility());
    width.ImposeVisibility(Invisible);
    EXPECT_EQ(Invisible, width.GetVisibility());
    EXPECT_TRUE(width.IsStreamable());
    EXPECT_EQ("9001", width.GetEventID());
    EXPECT_EQ("Camera", width.GetDeviceName());
    EXPECT_TRUE(width.IsFeature());
    EXPECT_FALSE(nodes.Node("Reg").IsFeature());
    gcstring value, attribute;
    EXPECT_TRUE(nodes.Node("Knife").GetProperty("pVariable", value, attribute));
    EXPECT_EQ("Width\tMax", value);
    EXPECT_EQ("A\tB", attribute);
    EXPECT_FALSE(width.GetProperty("Representation", value, attribute));
    EXPECT_FALSE(width.GetProperty("NoSuchThing", value, attribute));
    EXPECT_TRUE(value.empty());
    gcstring_vector names;
    nodes.Node("Knife").GetPropertyNames(names);
    EXPECT_EQ(1, std::count(names.begin(), names.end(), gcstring("pVariable")));
    NodeList_t list;
    width.GetChildren(list);
    EXPECT_EQ((NodeList_t{&nodes.Node("Reg"), &nodes.Node("Max")}), list);
    width.GetChildren(list, ctWritingChildren);
    EXPECT_EQ((NodeList_t{&nodes.Node("Reg")}), list);
    width.GetParents(list);
    EXPECT_EQ((NodeList_t{&nodes.Node("Root"), &nodes.Node("Knife")}), list);
    FeatureList_t features;
    nodes.As<ICategory>("Root").GetFeatures(features);
    ASSERT_EQ(1u, features.size());
    EXPECT_EQ("Width", features[0]->GetNode()->GetName());
    nodes.As<ISelector>("Selector").GetSelectedFeatures(features);
    EXPECT_EQ(2u, features.size());
    nodes.As<ISelector>("Width").GetSelectingFeatures(features);
    ASSERT_EQ(1u, features.size());
    EXPECT_EQ("Selector", features[0]->GetNode()->GetName());
    EXPECT_EQ("Test", dynamic_cast<IDeviceInfo&>(*nodes.map).GetModelName());
}
