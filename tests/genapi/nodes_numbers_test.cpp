// Integers and floats: bounds, increments, copies, indexes, formulas.
#include "support/TestNodeMap.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace GenApi_3_2;
using namespace GenICam_3_2;
using namespace TestSupport;

TEST(Numbers, IncrementGridStartsAtMinAndIsChecked) {
    TestNodeMap nodes(
        "<Integer Name=\"A\"><Value>5</Value><Min>5</Min><Max>50</Max><Inc>4</Inc></Integer>"
        "<Integer Name=\"List\"><Value>1</Value><ValidValueSet>1;2; 4;8</ValidValueSet></Integer>"
        "<Integer Name=\"Wide\"><Value>0</Value><Min>-9223372036854775808</Min><Inc>3</Inc>"
        "</Integer>");
    auto& a = nodes.Integer("A");
    a.SetValue(9);
    EXPECT_THROW(a.SetValue(8), OutOfRangeException);
    EXPECT_THROW(a.SetValue(1), OutOfRangeException);
    EXPECT_THROW(a.SetValue(53), OutOfRangeException);
    EXPECT_EQ(9, a.GetValue());
    a.SetValue(8, false);
    EXPECT_EQ(8, a.GetValue());
    EXPECT_EQ(fixedIncrement, a.GetIncMode());
    a.ImposeMax(20);
    EXPECT_EQ(20, a.GetMax());
    EXPECT_THROW(a.SetValue(21), OutOfRangeException);
    auto& list = nodes.Integer("List");
    EXPECT_EQ(listIncrement, list.GetIncMode());
    EXPECT_EQ((int64_autovector_t{1, 2, 4, 8}), list.GetListOfValidValues());
    list.SetValue(8);
    EXPECT_THROW(list.SetValue(3), OutOfRangeException);
    nodes.Integer("Wide").SetValue(INT64_MIN + 9);
    EXPECT_THROW(nodes.Integer("Wide").SetValue(INT64_MAX - 1), OutOfRangeException);
}

TEST(Numbers, MissingBoundsComeFromBelowAndDynamicOnesAreEvaluatedEachTime) {
    TestNodeMap nodes(
        WordRegister("Limit", 0, "<Cachable>NoCache</Cachable>") +
        "<MaskedIntReg Name=\"Reg\"><Address>4</Address><Length>2</Length><AccessMode>RW</AccessMode>"
        "<pPort>Device</pPort><LSB>0</LSB><MSB>9</MSB></MaskedIntReg>"
        "<Integer Name=\"Inner\"><pValue>Reg</pValue><Inc>2</Inc></Integer>"
        "<Integer Name=\"Outer\"><pValue>Inner</pValue><pMax>Limit</pMax></Integer>"
        "<Float Name=\"AsFloat\"><pValue>Inner</pValue></Float>");
    EXPECT_EQ(0, nodes.Integer("Outer").GetMin());
    EXPECT_EQ(1023, nodes.Integer("Inner").GetMax());
    EXPECT_EQ(2, nodes.Integer("Outer").GetInc());
    EXPECT_EQ(0, nodes.Integer("Outer").GetMax());
    EXPECT_THROW(nodes.Integer("Outer").SetValue(2), OutOfRangeException);
    nodes.port.Put(0, 100);
    EXPECT_EQ(100, nodes.Integer("Outer").GetMax());
    nodes.Integer("Outer").SetValue(100);
    EXPECT_EQ(1023, nodes.Float("AsFloat").GetMax());
    EXPECT_TRUE(nodes.Float("AsFloat").HasInc());
    nodes.Float("AsFloat").SetValue(51.6); // rounded to the nearest integer
    EXPECT_EQ(52, nodes.Integer("Reg").GetValue());
    EXPECT_THROW(nodes.Float("AsFloat").SetValue(NAN), OutOfRangeException);
}

TEST(Numbers, CopiesAreWrittenInOrderAndNarrowTheRange) {
    TestNodeMap nodes(WordRegister("A", 0) + WordRegister("B", 4) +
                      "<Integer Name=\"Narrow\"><pValue>B</pValue><Min>10</Min><Max>20</Max></Integer>"
                      "<Integer Name=\"Both\"><pValue>A</pValue><pValueCopy>Narrow</pValueCopy></Integer>");
    std::vector<std::int64_t> order;
    nodes.port.onWrite = [&](std::int64_t address) { order.push_back(address); };
    nodes.Integer("Both").SetValue(15);
    EXPECT_EQ((std::vector<std::int64_t>{0, 4}), order);
    EXPECT_EQ(15u, nodes.port.Word(4));
    EXPECT_EQ(10, nodes.Integer("Both").GetMin());
    EXPECT_EQ(20, nodes.Integer("Both").GetMax());
    EXPECT_THROW(nodes.Integer("Both").SetValue(21), OutOfRangeException);
    nodes.Node("Narrow").ImposeAccessMode(RO);
    EXPECT_EQ(RO, nodes.Mode("Both"));
}

TEST(Numbers, IndexChoosesConstantNodeOrDefault) {
    TestNodeMap nodes(
        "<Integer Name=\"Index\"><Value>1</Value></Integer>" + WordRegister("Reg", 0) +
        "<Integer Name=\"Gain\"><pIndex>Index</pIndex><ValueIndexed Index=\"1\">11</ValueIndexed>"
        "<pValueIndexed Index=\"2\">Reg</pValueIndexed><ValueDefault>99</ValueDefault></Integer>"
        "<Float Name=\"NoDefault\"><pIndex>Index</pIndex>"
        "<ValueIndexed Index=\"0x2\">0.5</ValueIndexed></Float>");
    auto& gain = nodes.Integer("Gain");
    EXPECT_EQ(11, gain.GetValue());
    EXPECT_THROW(nodes.Float("NoDefault").GetValue(), OutOfRangeException);
    EXPECT_EQ(NA, nodes.Mode("NoDefault"));
    gain.SetValue(12);
    nodes.Integer("Index").SetValue(2);
    EXPECT_EQ(0, gain.GetValue());
    EXPECT_EQ(0.5, nodes.Float("NoDefault").GetValue());
    gain.SetValue(22);
    EXPECT_EQ(22u, nodes.port.Word(0));
    nodes.Integer("Index").SetValue(3);
    EXPECT_EQ(99, gain.GetValue());
    nodes.Integer("Index").SetValue(1);
    EXPECT_EQ(12, gain.GetValue());
}

TEST(Numbers, IntegerFormulasStayInIntegersFloatOnesInDoubles) {
    TestNodeMap nodes(
        "<Integer Name=\"One\"><Value>1</Value></Integer>"
        "<Integer Name=\"Big\"><Value>9007199254740993</Value><Min>3</Min><Max>77</Max>"
        "<Inc>2</Inc></Integer>"
        "<Enumeration Name=\"E\"><EnumEntry Name=\"X\"><Value>5</Value>"
        "<NumericValue>2.5</NumericValue></EnumEntry><Value>5</Value></Enumeration>"
        "<IntSwissKnife Name=\"Half\"><pVariable Name=\"A\">One</pVariable><Formula>A / 2</Formula>"
        "</IntSwissKnife><SwissKnife Name=\"FloatHalf\"><pVariable Name=\"A\">One</pVariable>"
        "<Formula>A / 2</Formula></SwissKnife>"
        "<IntSwissKnife Name=\"Exact\"><pVariable Name=\"B\">Big</pVariable>"
        "<Constant Name=\"C\">2</Constant><Expression Name=\"X\">B * C</Expression>"
        "<Formula>X / C</Formula></IntSwissKnife>"
        "<SwissKnife Name=\"ByEnum\"><pVariable Name=\"E\">E</pVariable>"
        "<Formula>E + E.Entry.X * 10</Formula></SwissKnife>"
        "<IntSwissKnife Name=\"OfBounds\"><pVariable Name=\"B\">Big</pVariable>"
        "<pVariable Name=\"B.Max\">Big</pVariable>"
        "<Formula>B.Max * 100 + B.Min * 10 + B.Inc</Formula></IntSwissKnife>"
        "<SwissKnife Name=\"Guarded\"><pVariable Name=\"A\">One</pVariable>"
        "<Formula>(A = 1) ? 4 : 1 / (A - 1)</Formula></SwissKnife>");
    EXPECT_EQ(0, nodes.Integer("Half").GetValue());
    EXPECT_EQ(0.5, nodes.Float("FloatHalf").GetValue());
    EXPECT_EQ(9007199254740993, nodes.Integer("Exact").GetValue());
    EXPECT_EQ(55.0, nodes.Float("ByEnum").GetValue());
    EXPECT_EQ(7732, nodes.Integer("OfBounds").GetValue());
    EXPECT_EQ(4.0, nodes.Float("Guarded").GetValue());
    EXPECT_EQ(RO, nodes.Mode("Half"));
    EXPECT_THROW(nodes.Integer("Half").SetValue(1), AccessException);
}

TEST(Numbers, ConvertersThereAndBackWithTheirBounds) {
    TestNodeMap nodes(
        WordRegister("Raw", 0, "<Sign>Unsigned</Sign>") +
        "<Integer Name=\"Period\"><pValue>Raw</pValue><Min>10</Min><Max>1000</Max></Integer>"
        "<Converter Name=\"Rate\"><FormulaTo>1000000 / FROM</FormulaTo><FormulaFrom>1000000 / "
        "TO</FormulaFrom>"
        "<pValue>Period</pValue><Slope>Decreasing</Slope></Converter>"
        "<Float Name=\"FrameRate\"><pValue>Rate</pValue><Unit>Hz</Unit></Float>"
        "<IntConverter Name=\"Scaled\"><FormulaTo>FROM / 3</FormulaTo><FormulaFrom>TO * 3</FormulaFrom>"
        "<pValue>Period</pValue><IsLinear>Yes</IsLinear></IntConverter>"
        "<Converter Name=\"Any\"><FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom><pValue>Raw</pValue>"
        "<Slope>Varying</Slope></Converter>");
    auto& rate = nodes.Float("FrameRate");
    EXPECT_DOUBLE_EQ(1000, rate.GetMin());
    EXPECT_DOUBLE_EQ(100000, rate.GetMax());
    rate.SetValue(2000);
    EXPECT_EQ(500u, nodes.port.Word(0));
    EXPECT_DOUBLE_EQ(2000, rate.GetValue());
    EXPECT_THROW(rate.SetValue(999), OutOfRangeException);
    EXPECT_EQ("Hz", rate.GetUnit());
    auto& scaled = nodes.Integer("Scaled");
    EXPECT_EQ(30, scaled.GetMin());
    EXPECT_EQ(3, scaled.GetInc());
    scaled.SetValue(60);
    EXPECT_EQ(20u, nodes.port.Word(0));
    EXPECT_THROW(scaled.SetValue(61), OutOfRangeException);
    EXPECT_LT(nodes.Float("Any").GetMin(), -1e300);
}

TEST(Numbers, TextsByRepresentationAndNotation) {
    TestNodeMap nodes(
        "<Integer Name=\"Hex\"><Value>0xC0A80102</Value><Representation>HexNumber</Representation></Integer>"
        "<Integer Name=\"Ip\"><Value>0xC0A80102</Value><Representation>IPV4Address</Representation></Integer>"
        "<Integer "
        "Name=\"Mac\"><Value>0x0011223344AA</Value><Representation>MACAddress</Representation></Integer>"
        "<Float Name=\"Plain\"><Value>0.1</Value></Float>"
        "<Float Name=\"Fixed\"><Value>3.14159</Value><DisplayNotation>Fixed</DisplayNotation>"
        "<DisplayPrecision>2</DisplayPrecision></Float>");
    EXPECT_EQ("0xC0A80102", nodes.Integer("Hex").ToString());
    EXPECT_EQ("192.168.1.2", nodes.Integer("Ip").ToString());
    EXPECT_EQ("00:11:22:33:44:AA", nodes.Integer("Mac").ToString());
    EXPECT_EQ("0.1", nodes.Float("Plain").ToString());
    EXPECT_EQ("3.14", nodes.Float("Fixed").ToString());
    nodes.Integer("Ip").FromString("10.0.0.255");
    EXPECT_EQ(0x0A0000FF, nodes.Integer("Ip").GetValue());
    nodes.Integer("Mac").FromString("ff:0:1:2:3:4");
    EXPECT_EQ(0xFF0001020304, nodes.Integer("Mac").GetValue());
    nodes.Float("Plain").FromString(" 1.25e3 ");
    EXPECT_EQ(1250, nodes.Float("Plain").GetValue());
    EXPECT_THROW(nodes.Integer("Ip").FromString("10.0.0.256"), InvalidArgumentException);
    EXPECT_THROW(nodes.Integer("Hex").FromString("ten"), InvalidArgumentException);
    EXPECT_THROW(nodes.Float("Plain").FromString("1,5"), InvalidArgumentException);
}
