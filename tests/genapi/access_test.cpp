// What decides whether a node can be read and written.
#include "platform/genapi/base/AccessModes.h"
#include "support/TestNodeMap.h"

#include <gtest/gtest.h>

using namespace GenApi_3_2;
using namespace GenICam_3_2;
using namespace TestSupport;

TEST(Access, CombinationIsSymmetricAndNotImplementedWins) {
    using Engine::CombineAccess;
    EXPECT_EQ(NI, CombineAccess(NI, NA));
    EXPECT_EQ(NA, CombineAccess(NA, RW));
    EXPECT_EQ(NA, CombineAccess(RO, WO));
    EXPECT_EQ(RO, CombineAccess(RO, RW));
    EXPECT_EQ(WO, CombineAccess(RW, WO));
    EXPECT_EQ(RW, CombineAccess(RW, RW));
    for (const EAccessMode left : {NI, NA, WO, RO, RW})
        for (const EAccessMode right : {NI, NA, WO, RO, RW})
            EXPECT_EQ(CombineAccess(left, right), CombineAccess(right, left));
}

TEST(Access, ConditionsImposedModesAndInnerNodes) {
    TestNodeMap nodes(
        WordRegister("Implemented", 0) + WordRegister("Available", 4) + WordRegister("Locked", 8) +
        WordRegister("Reg", 12) +
        "<Integer Name=\"Feature\"><pIsImplemented>Implemented</pIsImplemented>"
        "<pIsAvailable>Available</pIsAvailable><pIsLocked>Locked</pIsLocked><pValue>Reg</pValue></Integer>"
        "<Integer Name=\"Imposed\"><ImposedAccessMode>RO</ImposedAccessMode><pValue>Reg</pValue></Integer>"
        "<IntReg Name=\"ReadOnly\"><ImposedAccessMode>WO</ImposedAccessMode><Address>16</Address>"
        "<Length>4</Length><AccessMode>RO</AccessMode><pPort>Device</pPort></IntReg>"
        "<Integer Name=\"Outer\"><pValue>Feature</pValue></Integer>"
        "<Float Name=\"OverReadOnly\"><pValue>ReadOnly</pValue></Float>");
    EXPECT_EQ(NI, nodes.Mode("Feature"));
    EXPECT_EQ(NI, nodes.Mode("Outer"));
    nodes.Integer("Implemented").SetValue(2);
    EXPECT_EQ(NA, nodes.Mode("Feature"));
    nodes.Integer("Available").SetValue(7);
    EXPECT_EQ(RW, nodes.Mode("Outer"));
    nodes.Integer("Locked").SetValue(1);
    EXPECT_EQ(RO, nodes.Mode("Outer"));
    EXPECT_THROW(nodes.Integer("Outer").SetValue(1), AccessException);
    EXPECT_EQ(0, nodes.Integer("Outer").GetValue(true));
    EXPECT_EQ(RO, nodes.Mode("Imposed"));
    EXPECT_EQ(NA, nodes.Mode("ReadOnly"));
    EXPECT_EQ(NA, nodes.Mode("OverReadOnly"));
    nodes.Node("Reg").ImposeAccessMode(RO);
    nodes.Integer("Locked").SetValue(0);
    EXPECT_EQ(RO, nodes.Mode("Outer"));
    EXPECT_EQ(RO, nodes.Mode("Reg"));
}

TEST(Access, ConditionsMayBeBooleansEnumerationsAndFormulas) {
    TestNodeMap nodes(
        WordRegister("Reg", 0) + WordRegister("Reg2", 4) +
        "<Boolean Name=\"Flag\"><pValue>Reg</pValue><OnValue>5</OnValue><OffValue>9</OffValue></Boolean>"
        "<Enumeration Name=\"Choice\"><EnumEntry Name=\"Off\"><Value>0</Value></EnumEntry>"
        "<EnumEntry Name=\"On\"><Value>7</Value></EnumEntry><pValue>Reg2</pValue></Enumeration>"
        "<IntSwissKnife Name=\"Both\"><pVariable Name=\"F\">Flag</pVariable>"
        "<pVariable Name=\"C\">Choice</pVariable><Formula>(F = 1) &amp;&amp; (C = "
        "7)</Formula></IntSwissKnife>"
        "<Integer Name=\"ByFlag\"><pIsAvailable>Flag</pIsAvailable><Value>1</Value></Integer>"
        "<Integer Name=\"ByChoice\"><pIsAvailable>Choice</pIsAvailable><Value>1</Value></Integer>"
        "<Integer Name=\"ByBoth\"><pIsImplemented>Both</pIsImplemented><Value>1</Value></Integer>");
    nodes.As<IBoolean>("Flag").SetValue(false);
    EXPECT_EQ(9u, nodes.port.Word(0));
    EXPECT_EQ(NA, nodes.Mode("ByFlag")) << "a Boolean counts by its truth, not by its register";
    EXPECT_EQ(NA, nodes.Mode("ByChoice"));
    EXPECT_EQ(NI, nodes.Mode("ByBoth"));
    nodes.As<IBoolean>("Flag").SetValue(true);
    nodes.Enumeration("Choice") = "On";
    EXPECT_EQ(RW, nodes.Mode("ByFlag"));
    EXPECT_EQ(RW, nodes.Mode("ByChoice"));
    EXPECT_EQ(RW, nodes.Mode("ByBoth"));
}

TEST(Access, PortDecidesToo) {
    TestNodeMap nodes(WordRegister("Reg", 0) + "<Integer Name=\"Constant\"><Value>3</Value></Integer>",
                      false);
    EXPECT_EQ(NA, nodes.Mode("Reg"));
    EXPECT_EQ(RW, nodes.Mode("Constant"));
    EXPECT_THROW(nodes.Integer("Reg").GetValue(), AccessException);
    EXPECT_FALSE(nodes.map->Connect(&nodes.port, "Elsewhere"));
    nodes.port.mode = RO;
    EXPECT_TRUE(nodes.map->Connect(&nodes.port));
    EXPECT_EQ(RO, nodes.Mode("Reg"));
    EXPECT_THROW(nodes.Integer("Reg").SetValue(1), AccessException);
    EXPECT_EQ(0, nodes.port.writes);
    nodes.map->Connect(nullptr);
    EXPECT_EQ(NA, nodes.Mode("Reg"));
}

TEST(Access, ModeIsCachedOnlyWhereWhatItDependsOnIs) {
    TestNodeMap nodes(WordRegister("Steady", 0) +
                      WordRegister("Volatile", 4, "<Cachable>NoCache</Cachable>") +
                      "<Integer Name=\"A\"><pIsAvailable>Steady</pIsAvailable><Value>1</Value></Integer>"
                      "<Integer Name=\"B\"><pIsAvailable>Volatile</pIsAvailable><Value>1</Value></Integer>");
    EXPECT_EQ(Yes, nodes.Node("A").IsAccessModeCacheable());
    EXPECT_EQ(No, nodes.Node("B").IsAccessModeCacheable());
    EXPECT_EQ(NA, nodes.Mode("A"));
    EXPECT_EQ(NA, nodes.Mode("B"));
    nodes.port.Put(0, 1); // behind the map's back
    nodes.port.Put(4, 1);
    EXPECT_EQ(NA, nodes.Mode("A"));
    EXPECT_EQ(RW, nodes.Mode("B"));
    nodes.Node("Steady").InvalidateNode();
    EXPECT_EQ(RW, nodes.Mode("A"));
}

TEST(Access, FailingConditionIsNotAvailableAndAskedAgain) {
    TestNodeMap nodes(WordRegister("Condition", 0) +
                      "<Integer Name=\"A\"><pIsAvailable>Condition</pIsAvailable><Value>1</Value></Integer>");
    nodes.port.Put(0, 1);
    nodes.port.onRead = [](std::int64_t) { throw "no answer"; };
    EXPECT_EQ(NA, nodes.Mode("A"));
    nodes.port.onRead = nullptr;
    EXPECT_EQ(RW, nodes.Mode("A"));
}
