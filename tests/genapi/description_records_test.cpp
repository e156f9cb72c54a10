// What descriptions become: nodes, elements, references, expanded structures and enumerations, with their
// lines.
#include "platform/genapi/description/Description.h"

#include "support/GeneratedDescription.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace GenApi_3_2 {
namespace Engine {
namespace {

using DescriptionPointer = std::shared_ptr<const Description>;

DescriptionPointer Read(const std::string& nodes) {
    return Description::FromXml("<RegisterDescription>\n" + nodes + "</RegisterDescription>", "test.xml");
}

const NodeRecord& NodeOf(const Description& description, std::string_view name) {
    return description.Nodes().at(static_cast<std::size_t>(description.IndexOf(name)));
}

std::string NameOf(const Description& description, std::int32_t index) {
    return index == NoNode ? "" : std::string(description.Nodes().at(static_cast<std::size_t>(index)).name);
}

// "line node: text" of every problem.
std::vector<std::string> ProblemsOf(const Description& description) {
    std::vector<std::string> problems;
    for (const Problem& problem : description.Problems())
        problems.push_back(std::to_string(problem.line) + " " + problem.node + ": " + problem.text);
    return problems;
}

TEST(DescriptionRecords, HeaderTellsTheFile) {
    const DescriptionPointer description = Description::FromXml(
        "\xEF\xBB\xBF<?xml version='1.0' encoding='utf-8'?>\n<g:RegisterDescription xmlns:g='urn:x' "
        "ModelName=' M '\n"
        "VendorName='V' ToolTip='T' StandardNameSpace='GEV' SchemaMajorVersion='1' SchemaMinorVersion='1'\n"
        "SchemaSubMinorVersion=' 0 ' MajorVersion='2' MinorVersion='99999999999' SubMinorVersion='x'\n"
        "ProductGuid='P' VersionGuid='G'><g:Port Name='Device'/></g:RegisterDescription>\n",
        "test.xml");
    const DescriptionHeader& header = description->Header();
    EXPECT_EQ(header.modelName, "M");
    EXPECT_EQ(header.standardNameSpace, "GEV");
    EXPECT_EQ(header.schemaMinorVersion, 1);
    EXPECT_EQ(header.majorVersion, 2);
    EXPECT_EQ(header.minorVersion, 2147483647);
    EXPECT_EQ(header.subMinorVersion, 0);
    EXPECT_EQ(header.versionGuid, "G");
    ASSERT_EQ(description->Nodes().size(), 1u);
    EXPECT_EQ(description->Nodes()[0].kind, NodeKind::Port);
    EXPECT_EQ(description->Nodes()[0].line, 5u);
}

TEST(DescriptionRecords, TextsAreStrippedAndPutTogether) {
    const DescriptionPointer description =
        Read("<Integer Name=' W ' NameSpace='Standard' MergePriority='-1'>\n"
             "<Min>\r\n  \t0x10 \n</Min><!-- between --><Max>1<!-- in -->2</Max>\n"
             "<ToolTip><![CDATA[ a < b ]]></ToolTip>\n"
             "<Description>a &amp; <![CDATA[b]]> c</Description><Unit/>\n"
             "</Integer>\n");
    const NodeRecord& node = NodeOf(*description, "W");
    EXPECT_TRUE(node.isStandardNameSpace);
    EXPECT_EQ(node.mergePriority, -1);
    EXPECT_EQ(node.line, 2u);
    EXPECT_EQ(description->Text(node, ElementId::Min), "0x10");
    EXPECT_EQ(description->Text(node, ElementId::Max), "12");
    EXPECT_EQ(description->Text(node, ElementId::ToolTip), "a < b");
    EXPECT_EQ(description->Text(node, ElementId::Description), "a & b c");
    EXPECT_EQ(description->Text(node, ElementId::Inc, "1"), "1");
    EXPECT_EQ(description->Find(node, ElementId::Max)->line, 5u);
    EXPECT_EQ(description->Find(node, ElementId::Description)->line, 7u);
    EXPECT_TRUE(description->Problems().empty());
}

TEST(DescriptionRecords, QualifiersAndReferences) {
    const DescriptionPointer description =
        Read("<SwissKnife Name='K'><pVariable Name='A.Max'>W</pVariable><Constant Name='C'>3</Constant>\n"
             "<Expression Name='X'>A + C</Expression><Formula>X</Formula></SwissKnife>\n"
             "<Integer Name='W'><pIndex>S</pIndex><ValueIndexed Index='0x1'>7</ValueIndexed>\n"
             "<pValueIndexed Index='2'>S</pValueIndexed><pValueDefault>S</pValueDefault></Integer>\n"
             "<Group><Group><IntReg Name='S'><pIndex Offset='4'>W</pIndex><pIndex "
             "pOffset='K'>W</pIndex></IntReg>\n"
             "</Group></Group><Extension><Integer Name='hidden'/></Extension>\n");
    const ElementList knife = description->Elements(NodeOf(*description, "K"));
    ASSERT_EQ(knife.size(), 4u);
    EXPECT_EQ(knife.begin()[0].qualifierText, "A.Max");
    EXPECT_EQ(NameOf(*description, knife.begin()[0].target), "W");
    EXPECT_EQ(knife.begin()[1].qualifierText, "C");
    EXPECT_EQ(knife.begin()[1].target, NoNode);
    const ElementList width = description->Elements(NodeOf(*description, "W"));
    EXPECT_EQ(width.begin()[1].qualifier, Qualifier::Index);
    EXPECT_EQ(width.begin()[1].qualifierText, "0x1");
    EXPECT_EQ(NameOf(*description, width.begin()[2].target), "S");
    const ElementList address = description->Elements(NodeOf(*description, "S"));
    EXPECT_EQ(address.begin()[0].qualifier, Qualifier::Offset);
    EXPECT_EQ(address.begin()[1].qualifier, Qualifier::pOffset);
    EXPECT_EQ(NameOf(*description, address.begin()[1].qualifierTarget), "K");
    EXPECT_EQ(description->IndexOf("hidden"), NoNode);
    EXPECT_TRUE(description->Problems().empty());
}

TEST(DescriptionRecords, StructEntriesInheritWhatTheyDoNotGive) {
    const DescriptionPointer description =
        Read("<StructReg Comment='c' NameSpace='Standard'><Address>0x100</Address>\n"
             "<IntSwissKnife><pVariable Name='P'>Device</pVariable><Formula>P</Formula></IntSwissKnife>\n"
             "<Length>4</Length><AccessMode>RO</AccessMode><pPort>Device</pPort><pIsLocked>Low</pIsLocked>\n"
             "<LSB>31</LSB><MSB>0</MSB>\n"
             "<StructEntry Name='Low'><Bit>3</Bit><AccessMode>RW</AccessMode></StructEntry>\n"
             "<StructEntry Name='High' NameSpace='Custom'><pIsLocked>Device</pIsLocked></StructEntry>\n"
             "</StructReg><Port Name='Device'/>\n");
    ASSERT_EQ(description->Nodes().size(), 4u); // the embedded formula, two entries, the port
    const NodeRecord& low = NodeOf(*description, "Low");
    EXPECT_EQ(low.kind, NodeKind::MaskedIntReg);
    EXPECT_EQ(low.line, 6u);
    EXPECT_TRUE(low.isStandardNameSpace);
    EXPECT_EQ(description->Text(low, ElementId::Address), "0x100");
    EXPECT_EQ(description->Text(low, ElementId::AccessMode), "RW");
    EXPECT_EQ(description->Text(low, ElementId::Bit), "3");
    EXPECT_EQ(description->Find(low, ElementId::LSB), nullptr);
    EXPECT_EQ(description->Text(low, ElementId::pIsLocked), "Low");
    const NodeRecord& high = NodeOf(*description, "High");
    EXPECT_FALSE(high.isStandardNameSpace);
    EXPECT_EQ(description->Text(high, ElementId::AccessMode), "RO");
    EXPECT_EQ(description->Text(high, ElementId::LSB), "31");
    EXPECT_EQ(description->Text(high, ElementId::pIsLocked), "Device");
    const Element* const knife = description->Find(high, ElementId::IntSwissKnife);
    ASSERT_NE(knife, nullptr);
    EXPECT_EQ(knife->target, description->Find(low, ElementId::IntSwissKnife)->target);
    const NodeRecord& embedded = description->Nodes().at(static_cast<std::size_t>(knife->target));
    EXPECT_TRUE(embedded.isEmbedded);
    EXPECT_EQ(embedded.owner, NoNode);
    EXPECT_EQ(description->Text(embedded, ElementId::Formula), "P");
}

TEST(DescriptionRecords, EntriesAndEmbeddedFormulasFollowTheirOwner) {
    const DescriptionPointer description = Read(
        "<Enumeration Name='Mode'><EnumEntry Name='On'><Value>1</Value></EnumEntry>\n"
        "<EnumEntry "
        "Name='Off'><Value>0</Value><Symbolic>Dark</Symbolic></EnumEntry><Value>1</Value></Enumeration>\n"
        "<Enumeration Name='Other'><EnumEntry Name='On'><Value>5</Value></EnumEntry></Enumeration>\n"
        "<IntReg Name='R'><IntSwissKnife><Formula>1</Formula></IntSwissKnife>\n"
        "<IntSwissKnife Name='Named'><Formula>2</Formula></IntSwissKnife></IntReg>\n");
    std::vector<std::string> names;
    for (const NodeRecord& node : description->Nodes())
        names.emplace_back(node.name);
    ASSERT_EQ(names.size(), 8u);
    EXPECT_EQ(names[1], "EnumEntry_Mode_On");
    EXPECT_EQ(names[2], "EnumEntry_Mode_Off");
    EXPECT_EQ(names[4], "EnumEntry_Other_On");
    EXPECT_EQ(names[7], "Named");
    EXPECT_EQ(description->Nodes()[1].symbolicName, "On");
    EXPECT_EQ(description->Nodes()[2].symbolicName, "Dark");
    EXPECT_EQ(description->Nodes()[2].line, 3u);
    EXPECT_EQ(NameOf(*description, description->Nodes()[2].owner), "Mode");
    EXPECT_EQ(NameOf(*description, description->Nodes()[6].owner), "R");
    EXPECT_EQ(description->Elements(description->Nodes()[0]).begin()[1].target, 2);
    EXPECT_EQ(description->Text(description->Nodes()[7], ElementId::Formula), "2");
}

TEST(DescriptionRecords, BadNodesDoNotCostTheGoodOnes) {
    const DescriptionPointer description = Read(
        "<Integer Name='A'><Value>1</Value><Sparkle>2</Sparkle><Min/></Integer>\n"
        "<Gadget Name='G'><Value>1</Value></Gadget>\n"
        "<Integer Name='A'><Value>2</Value></Integer>\n"
        "<Integer><Value>3</Value></Integer>\n"
        "<Enumeration Name='E'><EnumEntry Name='X'/><EnumEntry><Value>1</Value></EnumEntry>\n"
        "<EnumEntry Name='Y'><Value>2</Value></EnumEntry><EnumEntry "
        "Name='Y'><Value>3</Value></EnumEntry></Enumeration>\n"
        "<Category Name='Root'><pFeature>A</pFeature><pFeature>Ghost</pFeature></Category>\n"
        "<StructReg><pPort>Nowhere</pPort><StructEntry Name='S1'><Bit>1</Bit></StructEntry>\n"
        "<StructEntry Name='S2'><Bit>2</Bit></StructEntry></StructReg>\n"
        "<SwissKnife Name='K'><pVariable>A</pVariable><IntSwissKnife/><Formula>1</Formula></SwissKnife>\n"
        "<StringReg Name='T'><Address/></StringReg><String Name='U'><Value/></String>\n");
    const std::vector<std::string> expected = {
        "2 A: unknown element 'Sparkle' is skipped",
        "2 A: Min without a value is skipped",
        "3 G: unknown node type 'Gadget' is skipped",
        "4 A: another node has this name already; this one is skipped",
        "5 : Integer without a name is skipped",
        "6 E: EnumEntry 'X' without a value is skipped",
        "6 E: EnumEntry '' without a name is skipped",
        "7 EnumEntry_E_Y: another node has this name already; this one is skipped",
        "11 K: pVariable without Name is skipped",
        "11 K: IntSwissKnife outside a register is skipped",
        "12 T: Address without a value is skipped",
        "8 Root: pFeature names 'Ghost', which does not exist",
        "9 S1: pPort names 'Nowhere', which does not exist",
    };
    EXPECT_EQ(ProblemsOf(*description), expected);
    EXPECT_EQ(description->Text(NodeOf(*description, "A"), ElementId::Value), "1");
    EXPECT_EQ(description->Elements(NodeOf(*description, "E")).size(), 1u);
    EXPECT_EQ(description->Elements(NodeOf(*description, "Root")).begin()[1].target, NoNode);
    EXPECT_EQ(description->Elements(NodeOf(*description, "U")).size(), 1u);
}

TEST(DescriptionRecords, LargeDescriptionsAreReadWhole) {
    constexpr std::size_t groups = 3000 / TestSupport::NodesPerGeneratedGroup + 1;
    const std::string xml = TestSupport::GeneratedDescription(groups);
    const DescriptionPointer description = Description::FromXml(xml, "generated.xml");
    EXPECT_TRUE(description->Problems().empty());
    EXPECT_GT(description->Nodes().size(), groups * TestSupport::NodesPerGeneratedGroup);
    std::size_t lines = 1;
    std::size_t offset = xml.find("<Command Name=\"Run" + std::to_string(groups - 1) + "\"");
    for (std::size_t i = 0; i < offset; ++i)
        lines += xml[i] == '\n';
    EXPECT_EQ(NodeOf(*description, "Run" + std::to_string(groups - 1)).line, lines);
}

} // namespace
} // namespace Engine
} // namespace GenApi_3_2
