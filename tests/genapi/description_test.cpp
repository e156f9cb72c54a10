// What descriptions become: records of nodes and elements with their lines, what is said of the bad ones, and
// how those are refused that cannot be used: damaged, endless, swollen, or zipped wrongly.
#include "platform/genapi/description/Description.h"

#include "Base/GCException.h"

#include <gtest/gtest.h>
#include <zip.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace GenApi_3_2::Engine {
namespace {

// "line node: text" of every problem, a line each.
std::string ProblemsOf(const Description& description) {
    std::string problems;
    for (const Problem& problem : description.Problems())
        problems += std::to_string(problem.line) + " " + problem.node + ": " + problem.text + "\n";
    return problems;
}

std::string IndexText(std::int32_t index) {
    return index == NoNode ? "" : "#" + std::to_string(index);
}

// Every record in one line: line, kind, name, owner, and each element with its qualifier, text and target.
std::string Dump(const Description& description) {
    std::ostringstream out;
    for (const NodeRecord& node : description.Nodes()) {
        out << node.line << (node.isStandardNameSpace ? " std " : " ") << ToText(node.kind) << ' '
            << node.name << (node.isEmbedded ? " inner" : "") << IndexText(node.owner)
            << (node.symbolicName != node.name ? "=" + std::string(node.symbolicName) : "");
        for (const Element& element : description.Elements(node)) {
            out << ' ' << ToText(element.id);
            if (element.qualifier != Qualifier::None)
                out << '[' << element.qualifierText << IndexText(element.qualifierTarget) << ']';
            out << '=' << element.text << IndexText(element.target);
        }
        out << '\n';
    }
    return out.str();
}

// The message with which the bytes are refused, empty when they are not.
std::string RefusalOf(const std::string& bytes) {
    try {
        Description::FromBytes(bytes, "camera.xml");
        return {};
    } catch (const GenICam_3_2::GenericException& error) {
        return error.GetDescription();
    }
}

void ExpectRefused(const std::string& bytes, const std::string& reason) {
    const std::string message = RefusalOf(bytes);
    EXPECT_NE(message.find("camera.xml"), std::string::npos) << message;
    EXPECT_NE(message.find(reason), std::string::npos) << message;
}

std::string Repeated(const std::string& text, std::size_t times) {
    std::string all;
    while (times-- > 0)
        all += text;
    return all;
}

std::string Root(const std::string& nodes) {
    return "<RegisterDescription>" + nodes + "</RegisterDescription>";
}

std::string Zip(const std::map<std::string, std::string>& files) {
    zip_error_t error;
    zip_source_t* const target = zip_source_buffer_create(nullptr, 0, 0, &error);
    zip_source_keep(target);
    zip_t* const archive = zip_open_from_source(target, ZIP_TRUNCATE, &error);
    for (const auto& file : files)
        zip_file_add(archive, file.first.c_str(),
                     zip_source_buffer(archive, file.second.data(), file.second.size(), 0), ZIP_FL_ENC_UTF_8);
    EXPECT_EQ(zip_close(archive), 0);
    std::string bytes(1 << 20, '\0');
    zip_source_open(target);
    bytes.resize(static_cast<std::size_t>(zip_source_read(target, &bytes[0], bytes.size())));
    zip_source_close(target);
    zip_source_free(target);
    return bytes;
}

const auto Parse = [](const std::string& xml) { return Description::FromXml(xml, "test.xml"); };
const std::string Good = Root("\n<Port Name='Device'/>\n") + "\n";

TEST(Description, HeaderTellsTheFile) {
    const auto description = Parse("\xEF\xBB\xBF"
                                   R"(<?xml version='1.0' encoding='utf-8'?>
<g:RegisterDescription xmlns:g='urn:x' ModelName=' M ' VendorName='V' ToolTip='T' StandardNameSpace='GEV'
SchemaMajorVersion='1' SchemaSubMinorVersion=' 0 ' MajorVersion='2' MinorVersion='99999999999'
SubMinorVersion='x' ProductGuid='P' VersionGuid='G'><g:Port Name='Device'/></g:RegisterDescription>)");
    const DescriptionHeader& h = description->Header();
    EXPECT_EQ((std::vector<std::string_view>{"M", "GEV", "G"}),
              (std::vector<std::string_view>{h.modelName, h.standardNameSpace, h.versionGuid}));
    EXPECT_EQ((std::vector<int>{1, 2, 2147483647, 0}),
              (std::vector<int>{h.schemaMajorVersion, h.majorVersion, h.minorVersion, h.subMinorVersion}));
    EXPECT_EQ(Dump(*description), "4 Port Device\n");
}

TEST(Description, ElementsReferencesStructuresAndEntries) {
    const auto description = Parse(R"(<RegisterDescription>
<Integer Name=' W ' NameSpace='Standard' MergePriority='-1'><Min>
   	0x10 </Min><!-- between --><Max>1<!-- in -->2</Max><ToolTip><![CDATA[ a < b ]]></ToolTip>
<Description>a &amp; <![CDATA[b]]> c</Description><Unit/><pIndex>S</pIndex><ValueIndexed Index='0x1'>7</ValueIndexed></Integer>
<SwissKnife Name='K'><pVariable Name='A.Max'>W</pVariable><Constant Name='C'>3</Constant></SwissKnife>
<Group><Group><IntReg Name='S'><pIndex Offset='4'>W</pIndex><pIndex pOffset='K'>W</pIndex><IntSwissKnife/>
<IntSwissKnife Name='Named'/></IntReg></Group></Group><Extension><Integer Name='hidden'/></Extension>
<StructReg Comment='c' NameSpace='Standard'><IntSwissKnife><Formula>P</Formula></IntSwissKnife><pIsLocked>Low</pIsLocked>
<LSB>31</LSB><AccessMode>RO</AccessMode><StructEntry Name='Low'><Bit>3</Bit><AccessMode>RW</AccessMode></StructEntry>
<StructEntry Name='High' NameSpace='Custom'><pIsLocked>W</pIsLocked></StructEntry></StructReg>
<Enumeration Name='Mode'><EnumEntry Name='On'><Value>1</Value></EnumEntry>
<EnumEntry Name='Off'><Value>0</Value><Symbolic>Dark</Symbolic></EnumEntry><Value>1</Value></Enumeration>
</RegisterDescription>)");
    EXPECT_EQ(ProblemsOf(*description), "");
    EXPECT_EQ(
        Dump(*description),
        R"(2 std Integer W Min=0x10 Max=12 ToolTip=a < b Description=a & b c Unit= pIndex=S#2 ValueIndexed[0x1]=7
5 SwissKnife K pVariable[A.Max]=W#0 Constant[C]=3
6 IntReg S pIndex[4]=W#0 pIndex[K#1]=W#0 IntSwissKnife=S_IntSwissKnife_6_0#3 IntSwissKnife=Named#4
6 IntSwissKnife S_IntSwissKnife_6_0 inner#2
7 IntSwissKnife Named inner#2
8 IntSwissKnife _IntSwissKnife_8_0 inner Formula=P
9 std MaskedIntReg Low Bit=3 AccessMode=RW IntSwissKnife=_IntSwissKnife_8_0#5 pIsLocked=Low#6
10 MaskedIntReg High pIsLocked=W#0 IntSwissKnife=_IntSwissKnife_8_0#5 LSB=31 AccessMode=RO
11 Enumeration Mode EnumEntry=EnumEntry_Mode_On#9 EnumEntry=EnumEntry_Mode_Off#10 Value=1
11 EnumEntry EnumEntry_Mode_On#8=On Value=1
12 EnumEntry EnumEntry_Mode_Off#8=Dark Value=0 Symbolic=Dark
)");
}

TEST(Description, BadNodesDoNotCostTheGoodOnes) {
    const auto description = Parse(R"(<RegisterDescription>
<Integer Name='A'><Value>1</Value><Sparkle>2</Sparkle><Min/></Integer>
<Gadget Name='G'><Value>1</Value></Gadget>
<Integer Name='A'><Value>2</Value></Integer>
<Integer><Value>3</Value></Integer>
<Enumeration Name='E'><EnumEntry Name='X'/><EnumEntry><Value>1</Value></EnumEntry>
<EnumEntry Name='Y'><Value>2</Value></EnumEntry><EnumEntry Name='Y'><Value>3</Value></EnumEntry></Enumeration>
<Category Name='Root'><pFeature>A</pFeature><pFeature>Ghost</pFeature></Category>
<StructReg><pPort>Nowhere</pPort><StructEntry Name='S1'><Bit>1</Bit></StructEntry>
<StructEntry Name='S2'><Bit>2</Bit></StructEntry></StructReg><Integer Name='I'><EnumEntry Name='Z'/><StructEntry/></Integer>
<SwissKnife Name='K'><pVariable>A</pVariable><IntSwissKnife/><ValueIndexed>1</ValueIndexed></SwissKnife>
<StringReg Name='T'><Address/></StringReg><String Name='U'><Value/></String></RegisterDescription>)");
    EXPECT_EQ(ProblemsOf(*description), R"(2 A: unknown element 'Sparkle' is skipped
2 A: Min without a value is skipped
3 G: unknown node type 'Gadget' is skipped
4 A: another node has this name already; this one is skipped
5 : Integer without a name is skipped
6 E: EnumEntry 'X' without a value is skipped
6 E: EnumEntry '' without a name is skipped
7 EnumEntry_E_Y: another node has this name already; this one is skipped
10 I: EnumEntry 'Z' outside an Enumeration is skipped
10 I: StructEntry outside a StructReg is skipped
11 K: pVariable without Name is skipped
11 K: IntSwissKnife outside a register is skipped
11 K: ValueIndexed without Index is skipped
12 T: Address without a value is skipped
8 Root: pFeature names 'Ghost', which does not exist
9 S1: pPort names 'Nowhere', which does not exist
)");
    EXPECT_EQ(description->Elements(description->Nodes()[0]).size(), 1u);
}

TEST(Description, DamagedTextsAreRefused) {
    const std::string root = "<RegisterDescription>\n";
    ExpectRefused("", "XML is damaged");
    ExpectRefused("\x7F"
                  "ELF",
                  "XML is damaged");
    ExpectRefused(root + "<Port Name='Device'/>\n", "line 2: XML is damaged");
    ExpectRefused(root + "<Port></Integer></RegisterDescription>", "line 2: XML is damaged");
    ExpectRefused("\n<Other/>", "line 2: root element is 'Other'");
    ExpectRefused(Good.substr(0, 30) + std::string(1, '\0') + Good.substr(30), "NUL byte at offset 30");
    ExpectRefused("<RegisterDescription\nSchemaMajorVersion='2' SchemaMinorVersion='0'/>",
                  "line 1: schema version '2'");
    ExpectRefused("<RegisterDescription SchemaMajorVersion='one'/>", "schema version 'one'");
    const std::string twice = "XML is damaged: attribute 'a' is given twice";
    ExpectRefused("<RegisterDescription a='1' b='2' a='1'/>", twice);
    for (const char* element :
         {"Port Name='P' %/", "Group %/", "Extension><Any><x %/></Any></Extension", "StructReg %/",
          "StructReg><StructEntry Name='S' %/></StructReg", "Float Name='F'><Max %>1</Max></Float",
          "Enumeration Name='E'><EnumEntry Name='A' %><Value>1</Value></EnumEntry></Enumeration"}) {
        const std::string text = element;
        const std::size_t place = text.find('%');
        ExpectRefused(root + "<" + text.substr(0, place) + "a='1' b='' a='2'" + text.substr(place + 1) +
                          "></RegisterDescription>",
                      twice);
    }
    ExpectRefused(root + "<Port Name='P' a='' a=''/></RegisterDescription>", "line 2, node 'P': " + twice);
    std::string many = "<Port Name='P'";
    for (int i = 0; i < 200000; ++i)
        many += " a" + std::to_string(i) + "=''";
    ExpectRefused(root + many + "/></RegisterDescription>", "node 'P': more than 64 attributes");
    ExpectRefused("<!DOCTYPE r [<!ENTITY a \"aaaa\"><!ENTITY b \"&a;&a;\">]>\n" + Good, "entities");
    EXPECT_EQ(RefusalOf("<!DOCTYPE RegisterDescription>\n" + Good), "");
    EXPECT_EQ(RefusalOf(Good + std::string(100, '\0')), ""); // padding of the camera's memory
    for (std::size_t length = 0; length < Good.size() - 1; ++length)
        EXPECT_NE(RefusalOf(Good.substr(0, length)), "") << length;
    EXPECT_EQ(Dump(*Parse(Root("<String Name='S'><Value>&undefined;</Value></String>"))),
              "1 String S Value=&undefined;\n");
}

TEST(Description, NestingAndSizesAreBounded) {
    const auto nested = [](const std::string& name, std::size_t depth) {
        return Repeated("<" + name + ">", depth) + Repeated("</" + name + ">", depth);
    };
    EXPECT_EQ(RefusalOf(Root(nested("Group", 60))), "");
    ExpectRefused(Root(nested("Group", 100)), "nest too deeply");
    ExpectRefused(Root(nested("Group", 50000)), "nest too deeply");
    ExpectRefused(Root(nested("Extension", 50000)), "nest too deeply");
    ExpectRefused(Root("<Integer Name='W'>\n" + nested("Value", 50000) + "</Integer>"),
                  "line 2, node 'W': elements nest too deeply");
    ExpectRefused(std::string(17u << 20, ' '), "larger than 16 MiB");
    ExpectRefused(Root(Repeated("<a/>", 500000)), "too many elements");
    ExpectRefused(Root(Repeated("\n", 16000000)), "too many elements");
    ExpectRefused(Root("<Formula x='" + std::string(15u << 20, '=') + "'/>"), "too many elements");
    ExpectRefused(
        Root("<SwissKnife Name='K'><Formula>" + Repeated("1+", 600000) + "1</Formula></SwissKnife>"),
        "node 'K': formulas are longer");
    std::string entries, nodes; // entries that inherit much: few bytes, many records
    for (int i = 0; i < 40000; ++i) {
        entries += i < 2000 ? "<StructEntry Name='S" + std::to_string(i) + "'/>" : "";
        nodes += "<Port Name='" + std::to_string(i) + "'/>";
    }
    ExpectRefused(Root("<StructReg>" + Repeated("<Address>1</Address>", 1000) + entries + "</StructReg>"),
                  "too many elements");
    ExpectRefused(Root(nodes), "more than 32768 nodes");
    const auto noisy = Parse(Root(Repeated("<Gadget Name='G'/>", 5000) + "<Port Name='P'/>"));
    EXPECT_EQ(noisy->Problems().size(), Description::MaxProblems);
    EXPECT_EQ(noisy->SuppressedProblems(), 5000 - Description::MaxProblems);
    EXPECT_EQ(noisy->Nodes().size(), 1u);
}

TEST(Description, ZipArchivesAndFiles) {
    const std::string good = Zip({{"readme.txt", "hello"}, {"folder/Camera.XML", "\xEF\xBB\xBF" + Good}});
    EXPECT_EQ(UnpackDescription(good, "x"), Good);
    ExpectRefused(Zip({{"readme.txt", "hello"}}), "no .xml");
    ExpectRefused(Zip({{"a.xml", Good}, {"b.xml", Good}}), "more than one");
    ExpectRefused(Zip({{"a.xml", std::string(30u << 20, ' ')}}), "larger than 16 MiB");
    ExpectRefused(good + std::string(4u << 20, ' '), "larger than 4 MiB");
    for (std::size_t length = 4; length < good.size(); length += 7)
        ExpectRefused(good.substr(0, length), "zip archive");
    for (std::size_t i = 0; i < good.size(); ++i) { // any single byte: refused in words, or read as it was
        std::string damaged = good;
        damaged[i] = static_cast<char>(damaged[i] ^ 0x55);
        std::string content;
        try {
            content = UnpackDescription(damaged, "camera.xml");
        } catch (const GenICam_3_2::GenericException&) {
            continue;
        }
        EXPECT_TRUE(content == Good || i < 4) << "byte " << i;
    }
    for (const std::size_t at : {20, 24}) { // the directory lies about the size, packed or unpacked
        std::string lying = good;
        char& byte = lying[lying.find("PK\x01\x02") + at];
        byte = static_cast<char>(byte ^ 4);
        ExpectRefused(lying, "zip archive is damaged");
    }
    const std::string path = ::testing::TempDir() + "/description_test.zip";
    std::ofstream(path, std::ios::binary) << good;
    EXPECT_EQ(Description::FromFile(path)->Nodes().size(), 1u);
    std::remove(path.c_str());
    EXPECT_THROW(Description::FromFile(path), GenICam_3_2::GenericException);
    EXPECT_THROW(Description::FromFile(::testing::TempDir()), GenICam_3_2::GenericException);
}

} // namespace
} // namespace GenApi_3_2::Engine
