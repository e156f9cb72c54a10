#include "gev/protocol/Bootstrap.h"
#include "gev/protocol/DiscoveryInfo.h"
#include "gev/protocol/Gvcp.h"
#include "gev/protocol/GvcpCodec.h"
#include "support/GvcpReencode.h"
#include "support/Hex.h"
#include "support/TransactionLab.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>

namespace VX3::Test {
namespace {

using namespace Gvcp;
using Outcome = Transaction::Outcome;

const std::uint8_t Five[] = {1, 2, 3, 4, 5};
std::string Zeros(std::size_t bytes) {
    return std::string(2 * bytes, '0');
}

const ForceIpRequest Force{0x0102, 0x03040506, 0xC0A80002, 0xFFFFFF00, 0xC0A80001};
const MemoryRequest Read{0x200, 512}, FarRead{0x1200000200, 8};
const MemoryData Write{0xB000, {Five, 5}}, FarWrite{0x10000B000, {Five, 5}};
const ResendRequest Resend{false, 0xDEADBEEF, 3, 0xFFFFFFFF, 1},
    WideResend{true, 0x1DEADBEEF, 3, 0xFFFFFFFF, 1};

// Byte images worked out by hand from the published packet layouts.
const std::pair<std::string, std::function<std::size_t(WireRoom)>> Commands[] = {
    {"42110002 0000ffff", [](WireRoom r) { return EncodeDiscovery(r); }},
    {"42110004 0038ffff 00000102 03040506" + Zeros(12) + "c0a80002" + Zeros(12) + "ffffff00" + Zeros(12) +
         "c0a80001",
     [](WireRoom r) { return EncodeForceIp(r, Force); }},
    {"42010080 00041234 00000a00", [](WireRoom r) { return EncodeReadReg(r, 0x1234, 0x0A00); }},
    {"42010082 00080007 00000a00 00000002", [](WireRoom r) { return EncodeWriteReg(r, 7, 0x0A00, 2); }},
    {"42010084 00080001 00000200 00000200", [](WireRoom r) { return EncodeReadMem(r, false, 1, Read); }},
    {"42018084 000c0001 00000012 00000200 00000008",
     [](WireRoom r) { return EncodeReadMem(r, true, 1, FarRead); }},
    {"42010086 000c0002 0000b000 01020304 05000000",
     [](WireRoom r) { return EncodeWriteMem(r, false, 2, Write); }},
    {"42018086 00100002 00000001 0000b000 01020304 05000000",
     [](WireRoom r) { return EncodeWriteMem(r, true, 2, FarWrite); }},
    {"42000040 000c0009 0001beef 00000003 00ffffff",
     [](WireRoom r) { return EncodePacketResend(r, 9, Resend); }},
    {"42100040 00140009 00010000 00000003 ffffffff 00000001 deadbeef",
     [](WireRoom r) { return EncodePacketResend(r, 9, WideResend); }},
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
    const Bytes image =
        FromHex("00000003 00f8ffff 00020001 80000001 0000a1b2 c3d4e5f6" + Zeros(20) + "c0a80114" + Zeros(12) +
                "ffffff00" + Zeros(12) + "c0a80101 4d61" + Zeros(30) + "4361" + Zeros(30) + "7633" +
                Zeros(30) + "6865" + Zeros(46) + "30313233 34353637 38394142 43444546" + "6c65" +
                Zeros(14)); // the serial number fills its field
    ASSERT_EQ(image.size(), DiscoveryAckSize);
    std::copy(image.begin(), image.end(), ack.bytes.begin());
    GevDiscoveryInfo info;
    ASSERT_TRUE(DecodeDiscoveryAck(ack, info));
    EXPECT_EQ(
        std::tuple(info.specVersionMajor, info.specVersionMinor, info.deviceMode, info.macHigh, info.macLow),
        std::tuple(2, 1, 0x80000001U, 0xA1B2U, 0xC3D4E5F6U));
    EXPECT_EQ(std::tuple(info.currentIp, info.subnetMask, info.defaultGateway),
              std::tuple(0xC0A80114U, 0xFFFFFF00U, 0xC0A80101U));
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
    EXPECT_STREQ(Bootstrap::RegisterName(0x0A08), "reserved register");
    EXPECT_STREQ(Bootstrap::RegisterName(0xFFFFFFFFFFFFULL), "manufacturer register");
}

constexpr std::uint16_t Id = 7;
const Transaction::Limits Limits{Transaction::Duration(100), Transaction::Duration(5000)};
const Bytes Six{1, 2, 3, 4, 5, 6};

WireRequest Request(Command command, WireBytes data, std::size_t count) {
    return {static_cast<std::uint16_t>(command), 0x1200000A00, data, count};
}
const WireRequest ReadReg = Request(Command::ReadReg, {}, 4);
const WireRequest WriteReg = Request(Command::WriteReg, {Six.data(), 4}, 0);
const WireRequest ReadMem = Request(Command::ReadMem, {}, 6);
const WireRequest ReadMemEx = Request(Command::ReadMemEx, {}, 6);
const WireRequest WriteMem = Request(Command::WriteMem, {Six.data(), 6}, 0);
const WireRequest WriteMemEx = Request(Command::WriteMemEx, {Six.data(), 6}, 0);

class GvcpExchange : public testing::Test {
protected:
    const GvcpCodec codec;
    TransactionLab lab{codec, MaxPacket};
};

TEST_F(GvcpExchange, OnlyTheRightAcknowledgementIsBelieved) {
    const struct {
        const WireRequest& request;
        const char* answer;
        Outcome outcome; // TimedOut: ignored
        std::size_t dataSize;
    } cases[] = {
        {ReadReg, "00000081 00040007 01020304", Outcome::Complete, 4},
        {ReadReg, "00000081 00040006 01020304", Outcome::TimedOut, 0},
        {ReadReg, "00000081 00040007 0102", Outcome::Malformed, 0},
        {ReadReg, "00000081 00080007 01020304 05060708", Outcome::Malformed, 0},
        {ReadReg, "00000081 000400", Outcome::TimedOut, 0}, // not even a header
        {ReadReg, "", Outcome::TimedOut, 0},
        {ReadReg, "00000083 00040007 00000001", Outcome::TimedOut, 0}, // another command's
        {ReadReg, "80060081 00000007", Outcome::Refused, 0},
        {ReadReg, "80060081 00000008", Outcome::TimedOut, 0},
        {ReadReg, "00000089 00040007 0000", Outcome::TimedOut, 0}, // pending, without its time
        {WriteReg, "00000083 00040007 00000001", Outcome::Complete, 0},
        {WriteReg, "00000083 00040007 00000000", Outcome::Incomplete, 0},
        {WriteReg, "00000083 00040007 00010001", Outcome::Incomplete, 0},
        {ReadMem, "00000085 000c0007 00000a00 01020304 05060000", Outcome::Complete, 6},
        {ReadMem, "00000085 000c0007 00000a04 01020304 05060000", Outcome::Malformed, 0},
        {ReadMem, "00000085 00080007 00000a00 01020304", Outcome::Malformed, 0},
        {ReadMem, "00000085 000c0007 00000a00 01020304 050600", Outcome::Malformed, 0},
        {ReadMemEx, "00008085 00100007 00000012 00000a00 01020304 05060000", Outcome::Complete, 6},
        {ReadMemEx, "00008085 00100007 00000000 00000a00 01020304 05060000", Outcome::Malformed, 0},
        {ReadMemEx, "00000085 000c0007 00000a00 01020304 05060000", Outcome::TimedOut, 0},
        {WriteMem, "00000087 00040007 00000008", Outcome::Complete, 0}, // what was sent, padding included
        {WriteMem, "00000087 00040007 00000006", Outcome::Incomplete, 0},
        {WriteMemEx, "00008087 00040007 00000008", Outcome::Complete, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.answer);
        EXPECT_EQ(lab.Run(c.request, Id, Limits, {{30, FromHex(c.answer)}}), c.outcome);
        EXPECT_EQ(lab.machine.Answer().data.size, c.dataSize);
        const bool answered = c.outcome != Outcome::TimedOut;
        EXPECT_EQ(lab.machine.IdUsed(), answered);
        EXPECT_EQ(lab.endMs, answered ? 30 : 200);
        ASSERT_EQ(lab.sent.size(), answered ? 1U : 2U);
        EXPECT_EQ(lab.sent.front(), lab.sent.back()) << "a retry has the same bytes";
    }
    EXPECT_EQ(lab.Run(ReadReg, Id, Limits, {{150, FromHex(cases[0].answer)}}), Outcome::Complete) << "late";
    EXPECT_EQ(lab.Data(), FromHex("01020304"));
}

TEST_F(GvcpExchange, ItsRules) {
    const Bytes right = FromHex("00000081 00040007 01020304");
    // Cameras put any id into PENDING_ACK. 5000 ms are granted, not one more.
    EXPECT_EQ(lab.Run(ReadReg, Id, Limits, {{90, FromHex("00000089 00040063 00001388")}, {5080, right}}),
              Outcome::Complete);
    EXPECT_EQ(lab.Run(ReadReg, Id, Limits, {{90, FromHex("00000089 00040007 00001389")}}), Outcome::TimedOut);
    EXPECT_EQ(lab.endMs, 5090);
    EXPECT_EQ(codec.Rules().NextId(0xFFFF), 1) << "0 is never used";
    const Bytes large(513);
    for (const WireRequest& request :
         {Request(Command::ReadMem, {}, 513), Request(Command::WriteMem, {large.data(), 513}, 0),
          Request(Command::WriteReg, {Six.data(), 3}, 0), Request(Command::PacketResend, {}, 0)})
        EXPECT_EQ(lab.Run(request, Id, Limits), Outcome::Unsendable);

    const GvcpRawCodec raw({Six.data(), 6}, Ack::ReadReg, 4);
    TransactionLab rawLab(raw, MaxPacket);
    EXPECT_EQ(rawLab.Run({}, Id, Limits, {{1, FromHex("00000081 00000007")}}), Outcome::Malformed);
    EXPECT_EQ(rawLab.Run({}, Id, Limits, {{1, right}}), Outcome::Complete);
    EXPECT_EQ(rawLab.sent, (std::vector<Bytes>{Six}));
    EXPECT_EQ(rawLab.machine.Packet().size, 12U);
    EXPECT_EQ(rawLab.Data(), FromHex("01020304"));
}

} // namespace
} // namespace VX3::Test
