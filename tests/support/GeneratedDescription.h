// A camera description of any size, made of the patterns that real cameras' descriptions consist of:
// registers with bit fields, values with dynamic bounds and availability, enumerations, converters and
// formulas, every feature reachable from a category. For tests and benchmarks.
#pragma once

#include <cstddef>
#include <map>
#include <string>

namespace VX3::Test {

// The nodes of one group, entries and the formula inside a register included.
constexpr std::size_t NodesPerGeneratedGroup = 14;

// One group: @N is its number, @A the address of its registers, @B and @C those behind; a bar ends a line and
// indents the next by four.
constexpr const char* GeneratedGroup = R"(
  <Integer Name="Value@N" NameSpace="Custom">|<ToolTip>Number @N &lt;pixels&gt;</ToolTip>
    <Description>A value with bounds from other nodes and a register behind it.</Description>
    <DisplayName>Value @N</DisplayName>|<Visibility>Expert</Visibility>|<pIsAvailable>Available@N</pIsAvailable>
    <pValue>Register@N</pValue>|<Min>0</Min>|<pMax>Maximum@N</pMax>|<Inc>4</Inc>
    <Representation>Linear</Representation>
  </Integer>
  <IntReg Name="Register@N">|<Address>|  @A|</Address>|<Length>4</Length>|<AccessMode>RW</AccessMode>
    <pPort>Device</pPort>|<Cachable>WriteThrough</Cachable>|<Sign>Unsigned</Sign>|<Endianess>BigEndian</Endianess>
  </IntReg>
  <IntSwissKnife Name="Maximum@N">|<pVariable Name="BITS">Available@N</pVariable>
    <pVariable Name="VALUE">Offset@N</pVariable>
    <Formula>(BITS = 1) ? ((VALUE &amp; 0xFFF) &lt;&lt; 2) + 4096 : 65536 - 4</Formula>
  </IntSwissKnife>
  <StructReg Comment="Bits @N">|<Address>@B</Address>|<Length>4</Length>|<AccessMode>RW</AccessMode>
    <pPort>Device</pPort>|<Endianess>BigEndian</Endianess>
    <StructEntry Name="Available@N"><Bit>31</Bit></StructEntry>
    <StructEntry Name="Offset@N"><LSB>19</LSB><MSB>4</MSB></StructEntry>
  </StructReg>
  <Float Name="Gain@N">|<pValue>GainConverter@N</pValue>|<Unit>dB</Unit>
    <DisplayNotation>Fixed</DisplayNotation>|<DisplayPrecision>2</DisplayPrecision>
  </Float>
  <Converter Name="GainConverter@N">|<pVariable Name="OFFSET">Offset@N</pVariable>
    <FormulaTo>(FROM - OFFSET) * 10 ** 2</FormulaTo>|<FormulaFrom>TO / 100.0 + OFFSET</FormulaFrom>
    <pValue>GainRegister@N</pValue>|<Slope>Increasing</Slope>
  </Converter>
  <IntReg Name="GainRegister@N">|<Address>0x@C</Address>
    <IntSwissKnife>|  <pVariable Name="SELECTOR">Mode@N</pVariable>|  <Formula>SELECTOR * 16</Formula>|</IntSwissKnife>
    <Length>4</Length>|<AccessMode>RW</AccessMode>|<pPort>Device</pPort>|<Endianess>LittleEndian</Endianess>
  </IntReg>
  <Enumeration Name="Mode@N">|<DisplayName><![CDATA[Mode ]]>@N</DisplayName>
    <EnumEntry Name="Off"><Value>6</Value></EnumEntry>|<EnumEntry Name="Once"><Value>3</Value></EnumEntry>
    <EnumEntry Name="Continuous"><Value>14</Value></EnumEntry>|<pValue>Offset@N</pValue>
    <pSelected>Gain@N</pSelected>
  </Enumeration>
  <Command Name="Run@N">|<pValue>Register@N</pValue>|<CommandValue>1</CommandValue>
  </Command>)";

// `groups` times the pattern, plus Root, one category for 50 groups each and the port Device. Registers stand
// from address 0x1000 on, big-endian mostly.
inline std::string GeneratedDescription(std::size_t groups) {
    constexpr std::size_t GroupsPerCategory = 50;
    std::string xml =
        "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
        "<RegisterDescription ModelName=\"Generated\" VendorName=\"Vendor\" ToolTip=\"Generated\"\n"
        "  StandardNameSpace=\"GEV\" SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\"\n"
        "  SchemaSubMinorVersion=\"0\" MajorVersion=\"1\" MinorVersion=\"2\" SubMinorVersion=\"3\"\n"
        "  xmlns=\"http://www.genicam.org/GenApi/Version_1_1\">\n  <Category Name=\"Root\">\n";
    const std::size_t categories = (groups + GroupsPerCategory - 1) / GroupsPerCategory;
    for (std::size_t c = 0; c < categories; ++c)
        xml += "    <pFeature>Category" + std::to_string(c) + "</pFeature>\n";
    xml += "  </Category>\n";
    for (std::size_t c = 0; c < categories; ++c) {
        xml += "  <Category Name=\"Category" + std::to_string(c) + "\">\n";
        for (std::size_t g = c * GroupsPerCategory; g < groups && g < (c + 1) * GroupsPerCategory; ++g)
            for (const char* feature : {"Value", "Gain", "Mode", "Run"})
                xml += std::string("    <pFeature>") + feature + std::to_string(g) + "</pFeature>\n";
        xml += "  </Category>\n";
    }
    for (std::size_t g = 0; g < groups; ++g) {
        const std::size_t address = 0x1000 + g * 16;
        const std::map<char, std::string> numbers = {{'N', std::to_string(g)},
                                                     {'A', std::to_string(address)},
                                                     {'B', std::to_string(address + 4)},
                                                     {'C', std::to_string(1000 + address % 1000)}};
        for (const char* at = GeneratedGroup + 1; *at != '\0'; ++at)
            xml += *at == '|' ? "\n    " : *at == '@' ? numbers.at(*++at) : std::string(1, *at);
        xml += "\n";
    }
    return xml + "  <Port Name=\"Device\" NameSpace=\"Standard\"/>\n</RegisterDescription>\n";
}

} // namespace VX3::Test
