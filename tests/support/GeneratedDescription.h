// A camera description of any size, made of the patterns that real cameras' descriptions consist of:
// registers with bit fields, values with dynamic bounds and availability, enumerations, converters and
// formulas, every feature reachable from a category. For tests and benchmarks.
#pragma once

#include <cstddef>
#include <string>

namespace VX3::Test {

// The nodes of one group, entries and the formula inside a register included.
constexpr std::size_t NodesPerGeneratedGroup = 14;

namespace Detail {

inline void AddIntegerNodes(std::string& xml, const std::string& n, std::size_t address) {
    const std::string at = std::to_string(address);
    xml +=
        "  <Integer Name=\"Value" + n +
        "\" NameSpace=\"Custom\">\n"
        "    <ToolTip>Number " +
        n +
        " &lt;pixels&gt;</ToolTip>\n"
        "    <Description>A value with bounds from other nodes and a register behind it.</Description>\n"
        "    <DisplayName>Value " +
        n +
        "</DisplayName>\n"
        "    <Visibility>Expert</Visibility>\n"
        "    <pIsAvailable>Available" +
        n +
        "</pIsAvailable>\n"
        "    <pValue>Register" +
        n +
        "</pValue>\n"
        "    <Min>0</Min>\n"
        "    <pMax>Maximum" +
        n +
        "</pMax>\n"
        "    <Inc>4</Inc>\n"
        "    <Representation>Linear</Representation>\n"
        "  </Integer>\n"
        "  <IntReg Name=\"Register" +
        n +
        "\">\n"
        "    <Address>\n      " +
        at +
        "\n    </Address>\n"
        "    <Length>4</Length>\n    <AccessMode>RW</AccessMode>\n    <pPort>Device</pPort>\n"
        "    <Cachable>WriteThrough</Cachable>\n    <Sign>Unsigned</Sign>\n    "
        "<Endianess>BigEndian</Endianess>\n"
        "  </IntReg>\n"
        "  <IntSwissKnife Name=\"Maximum" +
        n +
        "\">\n"
        "    <pVariable Name=\"BITS\">Available" +
        n +
        "</pVariable>\n"
        "    <pVariable Name=\"VALUE\">Offset" +
        n +
        "</pVariable>\n"
        "    <Formula>(BITS = 1) ? ((VALUE &amp; 0xFFF) &lt;&lt; 2) + 4096 : 65536 - 4</Formula>\n"
        "  </IntSwissKnife>\n"
        "  <StructReg Comment=\"Bits " +
        n +
        "\">\n"
        "    <Address>" +
        std::to_string(address + 4) +
        "</Address>\n    <Length>4</Length>\n"
        "    <AccessMode>RW</AccessMode>\n    <pPort>Device</pPort>\n    <Endianess>BigEndian</Endianess>\n"
        "    <StructEntry Name=\"Available" +
        n +
        "\"><Bit>31</Bit></StructEntry>\n"
        "    <StructEntry Name=\"Offset" +
        n +
        "\"><LSB>19</LSB><MSB>4</MSB></StructEntry>\n"
        "  </StructReg>\n";
}

inline void AddFloatNodes(std::string& xml, const std::string& n, std::size_t address) {
    xml += "  <Float Name=\"Gain" + n + "\">\n    <pValue>GainConverter" + n +
           "</pValue>\n"
           "    <Unit>dB</Unit>\n    <DisplayNotation>Fixed</DisplayNotation>\n"
           "    <DisplayPrecision>2</DisplayPrecision>\n  </Float>\n"
           "  <Converter Name=\"GainConverter" +
           n +
           "\">\n"
           "    <pVariable Name=\"OFFSET\">Offset" +
           n +
           "</pVariable>\n"
           "    <FormulaTo>(FROM - OFFSET) * 10 ** 2</FormulaTo>\n"
           "    <FormulaFrom>TO / 100.0 + OFFSET</FormulaFrom>\n"
           "    <pValue>GainRegister" +
           n +
           "</pValue>\n    <Slope>Increasing</Slope>\n  </Converter>\n"
           "  <IntReg Name=\"GainRegister" +
           n +
           "\">\n"
           "    <Address>0x" +
           std::to_string(1000 + address % 1000) +
           "</Address>\n"
           "    <IntSwissKnife>\n      <pVariable Name=\"SELECTOR\">Mode" +
           n +
           "</pVariable>\n"
           "      <Formula>SELECTOR * 16</Formula>\n    </IntSwissKnife>\n"
           "    <Length>4</Length>\n    <AccessMode>RW</AccessMode>\n    <pPort>Device</pPort>\n"
           "    <Endianess>LittleEndian</Endianess>\n  </IntReg>\n";
}

inline void AddChoiceNodes(std::string& xml, const std::string& n) {
    xml +=
        "  <Enumeration Name=\"Mode" + n + "\">\n    <DisplayName><![CDATA[Mode ]]>" + n + "</DisplayName>\n";
    for (const char* entry : {"Off", "Once", "Continuous"})
        xml += std::string("    <EnumEntry Name=\"") + entry + "\"><Value>" + std::to_string(entry[2] % 16) +
               "</Value></EnumEntry>\n";
    xml += "    <pValue>Offset" + n + "</pValue>\n    <pSelected>Gain" + n +
           "</pSelected>\n  </Enumeration>\n"
           "  <Command Name=\"Run" +
           n + "\">\n    <pValue>Register" + n +
           "</pValue>\n"
           "    <CommandValue>1</CommandValue>\n  </Command>\n";
}

} // namespace Detail

// `groups` times the pattern, plus Root, one category for 50 groups each and the port Device. Registers stand
// from address 0x1000 on, big-endian mostly.
inline std::string GeneratedDescription(std::size_t groups) {
    constexpr std::size_t groupsPerCategory = 50;
    std::string xml =
        "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
        "<RegisterDescription ModelName=\"Generated\" VendorName=\"Vendor\" ToolTip=\"Generated\"\n"
        "  StandardNameSpace=\"GEV\" SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\"\n"
        "  SchemaSubMinorVersion=\"0\" MajorVersion=\"1\" MinorVersion=\"2\" SubMinorVersion=\"3\"\n"
        "  xmlns=\"http://www.genicam.org/GenApi/Version_1_1\">\n  <Category Name=\"Root\">\n";
    const std::size_t categories = (groups + groupsPerCategory - 1) / groupsPerCategory;
    for (std::size_t c = 0; c < categories; ++c)
        xml += "    <pFeature>Category" + std::to_string(c) + "</pFeature>\n";
    xml += "  </Category>\n";
    for (std::size_t c = 0; c < categories; ++c) {
        xml += "  <Category Name=\"Category" + std::to_string(c) + "\">\n";
        for (std::size_t g = c * groupsPerCategory; g < groups && g < (c + 1) * groupsPerCategory; ++g)
            for (const char* feature : {"Value", "Gain", "Mode", "Run"})
                xml += std::string("    <pFeature>") + feature + std::to_string(g) + "</pFeature>\n";
        xml += "  </Category>\n";
    }
    for (std::size_t g = 0; g < groups; ++g) {
        const std::string n = std::to_string(g);
        const std::size_t address = 0x1000 + g * 16;
        Detail::AddIntegerNodes(xml, n, address);
        Detail::AddFloatNodes(xml, n, address);
        Detail::AddChoiceNodes(xml, n);
    }
    return xml + "  <Port Name=\"Device\" NameSpace=\"Standard\"/>\n</RegisterDescription>\n";
}

} // namespace VX3::Test
