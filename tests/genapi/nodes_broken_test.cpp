// Descriptions that contradict themselves: the bad nodes are switched off, the others work.
#include "support/GeneratedDescription.h"
#include "support/TestNodeMap.h"

#include <gtest/gtest.h>

using namespace GenApi_3_2;
using namespace GenICam_3_2;
using namespace TestSupport;

TEST(Broken, CirclesAreNamedWithLineAndNodeAndHarmNobodyElse) {
    TestNodeMap nodes(
        "<Integer Name=\"A\"><pValue>B</pValue></Integer>\n"
        "<Integer Name=\"B\"><pValue>A</pValue></Integer>\n"
        "<Integer Name=\"Self\"><pValue>Self</pValue></Integer>\n"
        "<IntSwissKnife Name=\"K1\"><pVariable Name=\"V\">K2</pVariable><Formula>V</Formula>"
        "</IntSwissKnife><IntSwissKnife Name=\"K2\"><pVariable Name=\"V.Max\">I</pVariable>"
        "<Formula>V.Max</Formula></IntSwissKnife><Integer Name=\"I\"><Value>1</Value><pMax>K1</pMax>"
        "</Integer><Integer Name=\"Copy\"><Value>1</Value><pValueCopy>Copier</pValueCopy></Integer>"
        "<Integer Name=\"Copier\"><Value>1</Value><pValueCopy>Copy</pValueCopy></Integer>"
        "<Integer Name=\"User\"><pValue>A</pValue></Integer>"
        "<Integer Name=\"W\"><Value>3</Value><pMax>WMax</pMax></Integer>"
        "<IntSwissKnife Name=\"WMax\"><pVariable Name=\"O\">O</pVariable><Formula>10 - O</Formula>"
        "</IntSwissKnife><Integer Name=\"O\"><Value>2</Value><pMax>OMax</pMax></Integer>"
        "<IntSwissKnife Name=\"OMax\"><pVariable Name=\"W\">W</pVariable><Formula>10 - W</Formula>"
        "</IntSwissKnife>");
    for (const char* name : {"A", "B", "Self", "K1", "K2", "I", "Copy", "Copier"}) {
        EXPECT_EQ(NA, nodes.Mode(name)) << name;
        EXPECT_NE(std::string::npos, nodes.ProblemOf(name).find("circle")) << name;
    }
    EXPECT_EQ(NA, nodes.Mode("User"));
    const std::string text = FailureOf([&] { nodes.Integer("User").GetValue(); });
    EXPECT_NE(std::string::npos, text.find("description:3: node 'A'")) << text;
    EXPECT_NE(std::string::npos, text.find("'B'")) << text;
    EXPECT_EQ("3: ", nodes.ProblemOf("A").substr(0, 3));
    EXPECT_THROW(nodes.Integer("Copy").SetValue(2), AccessException);
    EXPECT_THROW(nodes.Integer("I").GetMax(), AccessException);
    // Bounds that depend on each other's values are no circle.
    EXPECT_EQ(8, nodes.Integer("W").GetMax());
    EXPECT_EQ(7, nodes.Integer("O").GetMax());
    nodes.Integer("O").SetValue(7);
    EXPECT_EQ(3, nodes.Integer("W").GetMax());
}

TEST(Broken, EndlessChainsEndAndGoodOnesOfSaneLengthWork) {
    std::string xml = "<Integer Name=\"N0\"><Value>42</Value></Integer>";
    for (int i = 1; i <= 20000; ++i)
        xml += "<Integer Name=\"N" + std::to_string(i) + "\"><pValue>N" + std::to_string(i - 1) +
               "</pValue></Integer>";
    TestNodeMap nodes(xml);
    EXPECT_EQ(42, nodes.Integer("N100").GetValue());
    nodes.Integer("N100").SetValue(43);
    EXPECT_EQ(43, nodes.Integer("N50").GetValue());
    EXPECT_NE("", FailureOf([&] { nodes.Integer("N20000").GetValue(); }));
    EXPECT_EQ(NA, nodes.Mode("N20000"));
}

TEST(Broken, ReferencesThatMultiplyAreCutOff) {
    std::string xml = WordRegister("K0", 0, "<Cachable>NoCache</Cachable>");
    for (int i = 1; i <= 60; ++i) {
        const std::string below = "K" + std::to_string(i - 1);
        xml += "<IntSwissKnife Name=\"K" + std::to_string(i) + "\"><pVariable Name=\"A\">" + below +
               "</pVariable><pVariable Name=\"B\">" + below +
               "</pVariable><Formula>A + B</Formula>"
               "</IntSwissKnife>";
    }
    xml += "<Integer Name=\"Locked\"><pIsLocked>K60</pIsLocked><Value>1</Value></Integer>";
    TestNodeMap nodes(xml);
    EXPECT_EQ(0, nodes.Integer("K10").GetValue());
    EXPECT_THROW(nodes.Integer("K60").GetValue(), RuntimeException);
    EXPECT_EQ(NA, nodes.Mode("Locked"));
    EXPECT_EQ(0, nodes.Integer("K10").GetValue()) << "the next operation starts afresh";
}

TEST(Broken, FaultyElementsSwitchOffTheirNodeOnly) {
    TestNodeMap nodes(
        "<Integer Name=\"NoValue\"><Min>1</Min></Integer>"
        "<Integer Name=\"Missing\"><pValue>Nobody</pValue></Integer>"
        "<Integer Name=\"BadMin\"><Value>4</Value><Min>low</Min></Integer>"
        "<IntSwissKnife Name=\"BadFormula\"><Formula>1 + * 2</Formula></IntSwissKnife>"
        "<IntSwissKnife Name=\"Zero\"><Formula>1 / 0</Formula></IntSwissKnife>"
        "<IntSwissKnife Name=\"BadVariable\"><pVariable Name=\"A\">Nobody</pVariable><Formula>A</Formula>"
        "</IntSwissKnife>" +
        WordRegister("TooLong", 0, "<Length>9</Length>") + WordRegister("Huge", 0, "<Length>-5</Length>") +
        "<IntReg Name=\"NoPort\"><Address>0</Address><Length>4</Length></IntReg>"
        "<IntReg Name=\"OddPort\"><Address>0</Address><Length>4</Length><pPort>Good</pPort></IntReg>"
        "<MaskedIntReg Name=\"OffBits\"><Address>0</Address><Length>2</Length><LSB>0</LSB><MSB>16</MSB>"
        "<pPort>Device</pPort></MaskedIntReg>" +
        WordRegister("Good", 0));
    for (const char* name : {"NoValue", "Missing", "BadFormula", "BadVariable", "TooLong", "Huge", "NoPort",
                             "OddPort", "OffBits"}) {
        EXPECT_EQ(NA, nodes.Mode(name)) << name;
        EXPECT_NE("", nodes.ProblemOf(name)) << name;
        EXPECT_THROW(nodes.Integer(name).GetValue(), AccessException) << name;
        EXPECT_THROW(nodes.Integer(name).SetValue(1), AccessException) << name;
    }
    EXPECT_EQ(4, nodes.Integer("BadMin").GetValue());
    EXPECT_NE("", nodes.ProblemOf("BadMin"));
    EXPECT_THROW(nodes.Integer("Zero").GetValue(), RuntimeException);
    nodes.Integer("Good").SetValue(1);
    EXPECT_EQ(1, nodes.Integer("Good").GetValue(false, true));
}

TEST(Broken, PortFailuresNameTheNodeAndKeepTheirKind) {
    TestNodeMap nodes(WordRegister("Reg", 0x20) + "<Integer Name=\"F\"><pValue>Reg</pValue></Integer>");
    nodes.port.onRead = [](std::int64_t) { throw "no answer from the device"; };
    std::string text;
    try {
        nodes.Integer("F").GetValue();
    } catch (const AccessException& failure) {
        text = failure.GetDescription();
    }
    EXPECT_NE(std::string::npos, text.find("node 'Reg'")) << text;
    EXPECT_NE(std::string::npos, text.find("4 bytes at 0x20")) << text;
    EXPECT_NE(std::string::npos, text.find("no answer from the device")) << text;
    nodes.port.onRead = [](std::int64_t) { throw TimeoutException("late", "", 0); };
    EXPECT_THROW(nodes.Integer("F").GetValue(), TimeoutException);
    nodes.port.onRead = [](std::int64_t) { throw std::runtime_error("odd"); };
    EXPECT_THROW(nodes.Integer("F").GetValue(), AccessException);
    nodes.port.onRead = nullptr;
    EXPECT_EQ(0, nodes.Integer("F").GetValue());
}

TEST(Broken, EveryNodeOfALargeDescriptionCanBeUsed) {
    const std::string xml = GeneratedDescription(3000 / NodesPerGeneratedGroup);
    CNodeMapFactory factory(ContentType_Xml, xml.data(), xml.size());
    INodeMap* map = factory.CreateNodeMap();
    MemoryPort port(1 << 20);
    ASSERT_TRUE(map->Connect(&port));
    EXPECT_TRUE(vx3::GetProblems(*map).empty());
    NodeList_t list;
    map->GetNodes(list);
    EXPECT_GE(list.size(), 2900u);
    int usable = 0;
    for (INode* node : list) {
        usable += IsReadable(node->GetAccessMode());
        FailureOf([&] { dynamic_cast<IValue&>(*node).ToString(true); });
        FailureOf([&] {
            auto& value = dynamic_cast<IValue&>(*node);
            value.FromString(value.ToString(true));
        });
    }
    EXPECT_GT(usable, 1500);
    map->Poll(10000);
    dynamic_cast<IDestroy*>(map)->Destroy();
}
