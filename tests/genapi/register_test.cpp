// Where registers lie and how numbers lie in them.
#include "support/TestNodeMap.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace GenApi_3_2;
using namespace GenICam_3_2;
using namespace TestSupport;

namespace {

std::string Masked(const std::string& name, unsigned length, const std::string& more) {
    return "<MaskedIntReg Name=\"" + name + "\"><Address>0x100</Address><Length>" + std::to_string(length) +
           "</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>" + more + "</MaskedIntReg>";
}

} // namespace

TEST(Register, BitFieldsCountFromTheEndThatTheByteOrderSays) {
    const std::string big = "<Endianess>BigEndian</Endianess>";
    const std::string little = "<Endianess>LittleEndian</Endianess>";
    TestNodeMap nodes(Masked("BigLow", 4, "<LSB>31</LSB><MSB>28</MSB>" + big) +
                      Masked("BigSwapped", 4, "<LSB>28</LSB><MSB>31</MSB>" + big) +
                      Masked("BigBit", 4, "<Bit>0</Bit>" + big) +
                      Masked("LittleLow", 4, "<LSB>0</LSB><MSB>3</MSB>" + little) +
                      Masked("LittleTwo", 2, "<LSB>12</LSB><MSB>15</MSB>" + little) +
                      Masked("Default", 2, "") +
                      Masked("Signed", 4, "<LSB>15</LSB><MSB>8</MSB><Sign>Signed</Sign>" + big));
    nodes.port.Put(0x100, 0x81F2F3A5);
    EXPECT_EQ(5, nodes.Integer("BigLow").GetValue());
    EXPECT_EQ(5, nodes.Integer("BigSwapped").GetValue());
    EXPECT_EQ(1, nodes.Integer("BigBit").GetValue());
    EXPECT_EQ(1, nodes.Integer("LittleLow").GetValue());
    EXPECT_EQ(0xF, nodes.Integer("LittleTwo").GetValue());
    EXPECT_EQ(0xF281, nodes.Integer("Default").GetValue()) << "little-endian and unsigned unless told";
    EXPECT_EQ(-14, nodes.Integer("Signed").GetValue()) << "the sign is that of the field";
    EXPECT_EQ(-128, nodes.Integer("Signed").GetMin());
    EXPECT_EQ(127, nodes.Integer("Signed").GetMax());
    EXPECT_EQ(15, nodes.Integer("BigLow").GetMax());
}

TEST(Register, MaskedWriteKeepsTheOtherBitsAsTheDeviceHasThemNow) {
    TestNodeMap nodes(Masked("Low", 4, "<LSB>31</LSB><MSB>24</MSB><Endianess>BigEndian</Endianess>") +
                      Masked("High", 4, "<LSB>7</LSB><MSB>0</MSB><Endianess>BigEndian</Endianess>"));
    nodes.port.Put(0x100, 0x11223344);
    EXPECT_EQ(0x44, nodes.Integer("Low").GetValue());
    EXPECT_EQ(0x11, nodes.Integer("High").GetValue());
    nodes.Integer("High").SetValue(0xAA);
    nodes.port.Put(0x100, 0xAA99FF44); // the device changes bits by itself
    nodes.Integer("Low").SetValue(0x55);
    EXPECT_EQ(0xAA99FF55u, nodes.port.Word(0x100));
    EXPECT_THROW(nodes.Integer("Low").SetValue(0x100, false), OutOfRangeException) << "never truncated";
    EXPECT_EQ(0xAA99FF55u, nodes.port.Word(0x100));
}

TEST(Register, WidthsFromOneToEightBytesAndTheSignsOfEach) {
    std::string xml;
    for (int length = 1; length <= 8; ++length)
        for (const char* sign : {"Signed", "Unsigned"})
            xml += "<IntReg Name=\"" + std::string(sign) + std::to_string(length) +
                   "\"><Address>64</Address><Length>" + std::to_string(length) +
                   "</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Sign>" + sign +
                   "</Sign><Endianess>BigEndian</Endianess></IntReg>";
    TestNodeMap nodes(xml);
    for (int length = 1; length <= 8; ++length) {
        std::memset(&nodes.port.memory[64], 0, 8);
        auto& isSigned = nodes.Integer("Signed" + std::to_string(length));
        isSigned.SetValue(-2);
        EXPECT_EQ(0xFE, nodes.port.memory[static_cast<std::size_t>(63 + length)]);
        EXPECT_EQ(-2, isSigned.GetValue(false, true));
        const std::int64_t all = nodes.Integer("Unsigned" + std::to_string(length)).GetValue();
        EXPECT_EQ(length == 8 ? -2 : (std::int64_t(1) << (8 * length)) - 2, all);
    }
    EXPECT_EQ(INT64_MAX, nodes.Integer("Unsigned8").GetMax());
    EXPECT_EQ(INT64_MIN, nodes.Integer("Signed8").GetMin());
}

TEST(Register, AddressIsTheSumOfAllItsPartsIn64Bits) {
    TestNodeMap nodes(
        "<Integer Name=\"Base\"><Value>0x1000</Value></Integer><Integer "
        "Name=\"Index\"><Value>3</Value></Integer>"
        "<Integer Name=\"Far\"><Value>0xFFFFFFFFFFFFFFF0</Value></Integer>"
        "<Integer Name=\"Stride\"><Value>0x40</Value></Integer>"
        "<IntReg Name=\"Sum\"><Address>0x20</Address><Address>4</Address><pAddress>Base</pAddress>"
        "<IntSwissKnife Name=\"Part\"><pVariable Name=\"I\">Index</pVariable><Formula>I * 0x100</Formula>"
        "</IntSwissKnife><pIndex Offset=\"0x10\">Index</pIndex><pIndex pOffset=\"Stride\">Index</pIndex>"
        "<pIndex>Index</pIndex><Length>4</Length><AccessMode>RO</AccessMode><pPort>Device</pPort></IntReg>"
        "<IntReg Name=\"Wraps\"><pAddress>Far</pAddress><Address>0x30</Address><Length>4</Length>"
        "<pPort>Device</pPort></IntReg>"
        "<Register Name=\"High\"><Address>0xFFFFF0F00000</Address><Length>4</Length><pPort>Device</pPort>"
        "</Register>");
    auto& sum = nodes.As<IRegister>("Sum");
    EXPECT_EQ(0x1000 + 0x24 + 0x300 + 0x30 + 0xC0 + 0xC, sum.GetAddress());
    nodes.Integer("Index").SetValue(0);
    EXPECT_EQ(0x1024, sum.GetAddress());
    EXPECT_EQ(0x20, nodes.As<IRegister>("Wraps").GetAddress());
    EXPECT_EQ(0xFFFFF0F00000, nodes.As<IRegister>("High").GetAddress());
}

TEST(Register, IndexedRegisterIsReadAnewWhenTheIndexChanges) {
    TestNodeMap nodes(WordRegister("Selector", 0) +
                      "<IntReg Name=\"Gain\"><Address>0x10</Address><pIndex Offset=\"4\">Selector</pIndex>"
                      "<Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>"
                      "<Endianess>BigEndian</Endianess></IntReg>");
    nodes.port.Put(0x10, 7);
    nodes.port.Put(0x18, 9);
    EXPECT_EQ(7, nodes.Integer("Gain").GetValue());
    nodes.Integer("Selector").SetValue(2);
    EXPECT_EQ(9, nodes.Integer("Gain").GetValue());
    nodes.Integer("Gain").SetValue(10);
    EXPECT_EQ(10u, nodes.port.Word(0x18));
    EXPECT_EQ(7u, nodes.port.Word(0x10));
}

TEST(Register, StructEntriesShareTheWordAndInheritConditions) {
    TestNodeMap nodes(WordRegister("Lock", 0) +
                      "<StructReg Comment=\"c\"><Address>0x40</Address><Length>4</Length>"
                      "<AccessMode>RW</AccessMode><pPort>Device</pPort><pIsLocked>Lock</pIsLocked>"
                      "<Endianess>BigEndian</Endianess>"
                      "<StructEntry Name=\"Upper\"><LSB>15</LSB><MSB>0</MSB></StructEntry>"
                      "<StructEntry Name=\"Flag\"><Bit>31</Bit><AccessMode>RO</AccessMode></StructEntry>"
                      "</StructReg>");
    nodes.port.Put(0x40, 0x12340001);
    EXPECT_EQ(0x1234, nodes.Integer("Upper").GetValue());
    EXPECT_EQ(1, nodes.Integer("Flag").GetValue());
    EXPECT_EQ(RW, nodes.Mode("Upper"));
    EXPECT_EQ(RO, nodes.Mode("Flag"));
    nodes.Integer("Upper").SetValue(0xFFFF);
    EXPECT_EQ(0xFFFF0001u, nodes.port.Word(0x40));
    nodes.Integer("Lock").SetValue(1);
    EXPECT_EQ(RO, nodes.Mode("Upper"));
}

TEST(Register, OverlappingRegistersSeeEachOthersWrites) {
    TestNodeMap nodes(WordRegister("Whole", 0x100) +
                      Masked("Field", 4, "<LSB>31</LSB><MSB>24</MSB><Endianess>BigEndian</Endianess>"));
    EXPECT_EQ(0, nodes.Integer("Whole").GetValue());
    EXPECT_EQ(0, nodes.Integer("Field").GetValue());
    nodes.Integer("Whole").SetValue(0x0102);
    EXPECT_EQ(2, nodes.Integer("Field").GetValue());
    nodes.Integer("Field").SetValue(5);
    EXPECT_EQ(0x0105, nodes.Integer("Whole").GetValue());
}

TEST(Register, TextEndsAtTheFirstNulAndIsPaddedWithZeros) {
    TestNodeMap nodes("<StringReg Name=\"Text\"><Address>0x80</Address><Length>8</Length>"
                      "<AccessMode>RW</AccessMode><pPort>Device</pPort></StringReg>"
                      "<String Name=\"Feature\"><pValue>Text</pValue></String>");
    std::memcpy(&nodes.port.memory[0x80], "ab\0defgh", 8);
    auto& text = nodes.As<IString>("Feature");
    EXPECT_EQ("ab", text.GetValue());
    text.SetValue("xyz");
    EXPECT_EQ(0, std::memcmp(&nodes.port.memory[0x80], "xyz\0\0\0\0\0", 8));
    text.SetValue("12345678");
    EXPECT_EQ("12345678", text.GetValue(false, true)) << "no room for a NUL is no error";
    EXPECT_THROW(text.SetValue("123456789"), OutOfRangeException);
    EXPECT_EQ(8, text.GetMaxLength());
}

TEST(Register, FloatingRegistersOfBothSizes) {
    const auto reg = [](const char* name, int length) {
        return "<FloatReg Name=\"" + std::string(name) + "\"><Address>0x80</Address><Length>" +
               std::to_string(length) +
               "</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Endianess>BigEndian</Endianess>"
               "</FloatReg>";
    };
    TestNodeMap nodes(reg("Single", 4) + reg("Double", 8) + reg("Odd", 3));
    nodes.Float("Single").SetValue(-1.5);
    EXPECT_EQ(0xBFC00000u, nodes.port.Word(0x80));
    EXPECT_EQ(-1.5, nodes.Float("Single").GetValue(false, true));
    EXPECT_THROW(nodes.Float("Single").SetValue(1e300, false), OutOfRangeException);
    nodes.Float("Double").SetValue(1e300);
    EXPECT_EQ(1e300, nodes.Float("Double").GetValue(false, true));
    EXPECT_THROW(nodes.Float("Odd").GetValue(), OutOfRangeException);
}

TEST(Register, RawBytesOneTransferAndNoMoreThanItsLength) {
    TestNodeMap nodes("<Integer Name=\"Size\"><Value>6</Value></Integer>"
                      "<Register Name=\"Raw\"><Address>0x80</Address><pLength>Size</pLength>"
                      "<AccessMode>RW</AccessMode><pPort>Device</pPort></Register>");
    auto& raw = nodes.As<IRegister>("Raw");
    const std::uint8_t bytes[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    std::uint8_t back[8] = {};
    EXPECT_THROW(raw.Set(bytes, 8), OutOfRangeException);
    EXPECT_THROW(raw.Set(bytes, -1), OutOfRangeException);
    EXPECT_THROW(raw.Get(nullptr, 6), InvalidArgumentException);
    raw.Set(bytes, 6);
    EXPECT_EQ(1, nodes.port.writes);
    raw.Get(back, 6);
    EXPECT_EQ(1, nodes.port.reads);
    EXPECT_EQ(0, std::memcmp(bytes, back, 6));
    EXPECT_EQ("0x010203040506", raw.ToString());
    raw.FromString("0xA0A1A2A3A4A5");
    EXPECT_EQ(0xA0, nodes.port.memory[0x80]);
    EXPECT_THROW(raw.FromString("0xA0A"), InvalidArgumentException);
    nodes.Integer("Size").SetValue(std::int64_t(1) << 40);
    EXPECT_THROW(raw.ToString(), OutOfRangeException) << "a hostile length allocates nothing";
}

TEST(Register, ConfigurationMemoryGivesKeysAndTexts) {
    TestNodeMap nodes("<ConfRom Name=\"Rom\"><Address>0x400</Address><Length>64</Length><pPort>Device</pPort>"
                      "</ConfRom><IntKey Name=\"Vendor\"><p1212Parser>Rom</p1212Parser><Key>3</Key></IntKey>"
                      "<IntKey Name=\"Missing\"><p1212Parser>Rom</p1212Parser><Key>0x77</Key></IntKey>"
                      "<TextDesc Name=\"Name\"><p1212Parser>Rom</p1212Parser><Key>3</Key></TextDesc>");
    nodes.port.Put(0x400, 0x01000000); // one word of header
    nodes.port.Put(0x408, 0x00030000); // root directory of three entries
    nodes.port.Put(0x40C, 0xD1000003); // a directory at word 6
    nodes.port.Put(0x410, 0x0C000001);
    nodes.port.Put(0x418, 0x00020000);
    nodes.port.Put(0x41C, 0x03123456);
    nodes.port.Put(0x420, 0x81000001); // its text at word 9
    nodes.port.Put(0x424, 0x00030000);
    nodes.port.Put(0x430, 0x41636D65);
    EXPECT_EQ(0x123456, nodes.Integer("Vendor").GetValue());
    EXPECT_EQ("Acme", nodes.As<IString>("Name").GetValue());
    EXPECT_THROW(nodes.Integer("Missing").GetValue(), RuntimeException);
    std::fill_n(nodes.port.memory.begin() + 0x400, 64, std::uint8_t(0xFF)); // every length a lie
    nodes.map->InvalidateNodes();
    EXPECT_THROW(nodes.Integer("Vendor").GetValue(), RuntimeException);
}
