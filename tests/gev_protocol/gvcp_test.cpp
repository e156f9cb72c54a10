#include "gev/protocol/Gvcp.h"

#include "gev/protocol/Bootstrap.h"
#include "gev/protocol/DiscoveryInfo.h"
#include "support/GvcpReencode.h"
#include "support/Hex.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <string>

namespace VX3 {
namespace Test {
namespace {

using namespace Gvcp;

const std::uint8_t Five[] = {1, 2, 3, 4, 5};
const std::string Zeros12(24, '0');

// Byte images worked out by hand from the published packet layouts.
const std::pair<std::string, std::function<std::size_t(WireRoom)>> Commands[] = {
    {"42110002 0000ffff", [](WireRoom r) { return EncodeDiscovery(r); }},
    {"42110004 0038ffff 00000102 03040506" + Zeros12 + "c0a80002" + Zeros12 + "ffffff00" + Zeros12 +
         "c0a80001",
     [](WireRoom r) {
         return EncodeForceIp(r, {0x0102, 0x03040506, 0xC0A80002, 0xFFFFFF00, 0xC0A80001});
     }},
    {"42010080 00041234 00000a00", [](WireRoom r) { return EncodeReadReg(r, 0x1234, 0x0A00); }},
    {"42010082 00080007 00000a00 00000002", [](WireRoom r) { return EncodeWriteReg(r, 7, 0x0A00, 2); }},
    {"42010084 00080001 00000200 00000200",
     [](WireRoom r) {
         return EncodeReadMem(r, false, 1, {0x200, 512});
     }},
    {"42018084 000c0001 00000012 00000200 00000008",
     [](WireRoom r) {
         return EncodeReadMem(r, true, 1, {0x1200000200, 8});
     }},
    {"42010086 000c0002 0000b000 01020304 05000000",
     [](WireRoom r) {
         return EncodeWriteMem(r, false, 2, {0xB000, {Five, 5}});
     }},
    {"42018086 00100002 00000001 0000b000 01020304 05000000",
     [](WireRoom r) {
         return EncodeWriteMem(r, true, 2, {0x10000B000, {Five, 5}});
     }},
    {"42000040 000c0009 0001beef 00000003 00ffffff",
     [](WireRoom r) {
         return EncodePacketResend(r, 9, {false, 0xDEADBEEF, 3, 0xFFFFFFFF, 1});
     }},
    {"42100040 00140009 00010000 00000003 ffffffff 00000001 deadbeef",
     [](WireRoom r) {
         return EncodePacketResend(r, 9, {true, 0x1DEADBEEF, 3, 0xFFFFFFFF, 1});
     }},
};

TEST(Gvcp, CommandsHaveThePublishedBytesAndReadBackWholeOnly) {
    for (const auto& [hex, encode] : Commands) {
        SCOPED_TRACE(hex);
        const Bytes image = FromHex(hex);
        Bytes made(image.size());
        EXPECT_EQ(encode({made.data(), made.size() - 1}), 0U);
        ASSERT_EQ(encode({made.data(), made.size()}), image.size());
        EXPECT_EQ(made, image);
        for (std::size_t size = 0; size <= image.size(); size += 4) {
            const Bytes cut(image.begin(), image.begin() + static_cast<long>(size));
            std::fill(made.begin(), made.end(), std::uint8_t{0xEE});
            (void)ReencodeCommand({cut.data(), size}, {made.data(), made.size()});
            EXPECT_EQ(made == image, size == image.size());
        }
    }
    const Bytes wrongKey = FromHex("41110002 0000ffff");
    CommandPacket command;
    EXPECT_FALSE(DecodeCommand({wrongKey.data(), wrongKey.size()}, command));
}

TEST(Gvcp, DiscoveryAcknowledgementHasItsFieldsInTheirPlaces) {
    GVCP_DISCOVERY_ACK ack;
    Bytes image(DiscoveryAckSize);
    const std::pair<std::size_t, const char*> fields[] = {
        {0, "00000003 00f8ffff 00020001 80000001 0000a1b2 c3d4e5f6"},
        {44, "c0a80114"},
        {60, "ffffff00"},
        {76, "c0a80101"},
        {80, "4d61"},
        {112, "4361"},
        {144, "7633"},
        {176, "6865"},
        {224, "30313233 34353637 38394142 43444546"},
        {240, "6c65"}}; // the serial number fills its field
    for (const auto& [at, hex] : fields) {
        const Bytes field = FromHex(hex);
        std::copy(field.begin(), field.end(), image.begin() + static_cast<long>(at));
    }
    std::copy(image.begin(), image.end(), ack.bytes.begin());
    GevDiscoveryInfo info;
    ASSERT_TRUE(DecodeDiscoveryAck(ack, info));
    EXPECT_EQ(info.specVersionMajor, 2);
    EXPECT_EQ(info.specVersionMinor, 1);
    EXPECT_EQ(info.deviceMode, 0x80000001U);
    EXPECT_EQ(info.macHigh, 0xA1B2U);
    EXPECT_EQ(info.macLow, 0xC3D4E5F6U);
    EXPECT_EQ(info.currentIp, 0xC0A80114U);
    EXPECT_EQ(info.subnetMask, 0xFFFFFF00U);
    EXPECT_EQ(info.defaultGateway, 0xC0A80101U);
    EXPECT_EQ(info.manufacturerName + info.modelName + info.deviceVersion + info.manufacturerInfo,
              "MaCav3he");
    EXPECT_EQ(info.serialNumber + info.userDefinedName, "0123456789ABCDEFle");
    GVCP_DISCOVERY_ACK again;
    ASSERT_EQ(EncodeDiscoveryAck({again.bytes.data(), DiscoveryAckSize}, 0xFFFF, info), DiscoveryAckSize);
    EXPECT_EQ(Bytes(again.bytes.begin(), again.bytes.end()), image);
    EXPECT_FALSE(DecodeDiscoveryPayload({ack.bytes.data() + 8, 247}, info));
}

TEST(Gvcp, RegistersHaveNamesInEveryChannel) {
    EXPECT_STREQ(Bootstrap::RegisterName(0x0A00), "control channel privilege");
    EXPECT_STREQ(Bootstrap::RegisterName(Bootstrap::StreamRegister(Bootstrap::StreamDestination, 3)),
                 "stream channel destination address");
    EXPECT_STREQ(Bootstrap::RegisterName(0x0048 + 31), "manufacturer name");
    EXPECT_STREQ(Bootstrap::RegisterName(0x0A04), "reserved register");
    EXPECT_STREQ(Bootstrap::RegisterName(0xFFFFFFFFFFFFULL), "manufacturer register");
}

} // namespace
} // namespace Test
} // namespace VX3
