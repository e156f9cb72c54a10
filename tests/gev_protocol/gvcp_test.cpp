#include "gev/protocol/Gvcp.h"

#include "gev/protocol/Bootstrap.h"
#include "gev/protocol/DiscoveryInfo.h"

#include <array>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace VX3 {
namespace {

using namespace Gvcp;

struct Buffer {
    std::array<std::uint8_t, MaxPacket> bytes{};
    std::size_t size = 0;
    WireRoom Room() { return {bytes.data(), bytes.size()}; }
    WireBytes View() const { return {bytes.data(), size}; }
    std::string Hex() const {
        static const char* const digits = "0123456789abcdef";
        std::string text;
        for (std::size_t i = 0; i < size; ++i) {
            text += digits[bytes[i] >> 4];
            text += digits[bytes[i] & 15];
        }
        return text;
    }
};

// Byte images worked out by hand from the published packet layouts.
TEST(Gvcp, CommandsHaveThePublishedBytes) {
    const std::uint8_t five[] = {1, 2, 3, 4, 5};
    const std::vector<std::pair<std::string, std::function<std::size_t(WireRoom)>>> cases = {
        {"421100020000ffff", [](WireRoom r) { return EncodeDiscovery(r); }},
        {"42010080000412340000"
         "0a00",
         [](WireRoom r) { return EncodeReadReg(r, 0x1234, 0x0A00); }},
        {"4201008200080007"
         "00000a00"
         "00000002",
         [](WireRoom r) { return EncodeWriteReg(r, 7, 0x0A00, 2); }},
        {"4201008400080001"
         "00000200"
         "00000200",
         [](WireRoom r) {
             return EncodeReadMem(r, false, 1, {0x200, 512});
         }},
        {"42018084000c0001"
         "0000001200000200"
         "00000008",
         [](WireRoom r) {
             return EncodeReadMem(r, true, 1, {0x1200000200, 8});
         }},
        {"42010086000c0002"
         "0000b000"
         "0102030405000000",
         [&](WireRoom r) {
             return EncodeWriteMem(r, false, 2, {0xB000, {five, 5}});
         }},
        {"4201808600100002"
         "000000010000b000"
         "0102030405000000",
         [&](WireRoom r) {
             return EncodeWriteMem(r, true, 2, {0x10000B000, {five, 5}});
         }},
        {"42000040000c0009"
         "0001"
         "beef"
         "00000003"
         "00ffffff",
         [](WireRoom r) {
             return EncodePacketResend(r, 9, {false, 0xDEADBEEF, 3, 0xFFFFFFFF, 1});
         }},
        {"4210004000140009"
         "0001"
         "0000"
         "00000003"
         "ffffffff"
         "00000001deadbeef",
         [](WireRoom r) {
             return EncodePacketResend(r, 9, {true, 0x1DEADBEEF, 3, 0xFFFFFFFF, 1});
         }},
    };
    for (const auto& [expected, encode] : cases) {
        Buffer packet;
        packet.size = encode(packet.Room());
        EXPECT_EQ(packet.Hex(), expected);
        // One byte less room: nothing is claimed to be written.
        EXPECT_EQ(encode({packet.bytes.data(), packet.size - 1}), 0U) << expected;
    }
}

TEST(Gvcp, ForceIpPutsItsWordsWhereCamerasLookForThem) {
    Buffer packet;
    packet.size = EncodeForceIp(packet.Room(), {0x0102, 0x03040506, 0xC0A80002, 0xFFFFFF00, 0xC0A80001});
    ASSERT_EQ(packet.size, ForceIpSize);
    const auto word = [&](std::size_t at) { return Wire::Load<std::uint32_t>(packet.bytes.data() + at); };
    EXPECT_EQ(packet.Hex().substr(0, 16), "421100040038ffff");
    EXPECT_EQ(word(8), 0x0102U);
    EXPECT_EQ(word(12), 0x03040506U);
    EXPECT_EQ(word(28), 0xC0A80002U);
    EXPECT_EQ(word(44), 0xFFFFFF00U);
    EXPECT_EQ(word(60), 0xC0A80001U);
    CommandPacket command;
    ForceIpRequest request;
    ASSERT_TRUE(DecodeCommand(packet.View(), command) && DecodeForceIp(command.payload, request));
    EXPECT_EQ(request.macLow, 0x03040506U);
    EXPECT_EQ(request.gateway, 0xC0A80001U);
}

TEST(Gvcp, MemoryAndResendCommandsReadBack) {
    for (const bool extended : {false, true}) {
        Buffer packet;
        CommandPacket command;
        const std::uint64_t address = extended ? 0x123456789ABCULL : 0x9ABCU;
        packet.size = EncodeReadMem(packet.Room(), extended, 5, {address, 276});
        MemoryRequest request;
        ASSERT_TRUE(DecodeCommand(packet.View(), command) &&
                    DecodeReadMem(command.payload, extended, request));
        EXPECT_EQ(request.address, address);
        EXPECT_EQ(request.count, 276);
        EXPECT_EQ(command.header.reqId, 5);

        packet.size = EncodePacketResend(packet.Room(), 6, {extended, 65401, 7, 9, 2});
        ResendRequest resend;
        ASSERT_TRUE(DecodeCommand(packet.View(), command) && DecodePacketResend(command, resend));
        EXPECT_EQ(resend.extended, extended);
        EXPECT_EQ(resend.blockId, 65401U);
        EXPECT_EQ(resend.firstPacket, 7U);
        EXPECT_EQ(resend.lastPacket, 9U);
        EXPECT_EQ(resend.channel, 2);
        // Every cut of it is refused, not read past its end.
        for (std::size_t size = 0; size < packet.size; ++size) {
            const std::vector<std::uint8_t> cut(packet.bytes.data(), packet.bytes.data() + size);
            EXPECT_FALSE(DecodeCommand({cut.data(), cut.size()}, command) &&
                         DecodePacketResend(command, resend));
        }
    }
    CommandPacket command;
    const std::uint8_t wrongKey[8] = {0x41, 1, 0, 2};
    EXPECT_FALSE(DecodeCommand({wrongKey, sizeof(wrongKey)}, command));
}

AckVerdict Judge(const Buffer& packet, std::uint16_t reqId = 7, Ack code = Ack::ReadReg,
                 std::uint16_t length = 4) {
    return JudgeAck(packet.View(), {reqId, code, length});
}

TEST(Gvcp, OnlyTheAcknowledgementWaitedForEndsTheWait) {
    using Kind = AckVerdict::Kind;
    Buffer packet;
    packet.size = EncodeReadRegAck(packet.Room(), 7, 0xCAFE);
    EXPECT_EQ(Judge(packet).kind, Kind::Complete);
    EXPECT_EQ(Judge(packet, 8).kind, Kind::Ignore) << "stale id";
    EXPECT_EQ(Judge(packet, 7, Ack::WriteReg).kind, Kind::Ignore) << "another command's";
    EXPECT_EQ(Judge(packet, 7, Ack::ReadReg, 8).kind, Kind::BadLength);
    packet.size = 10;
    EXPECT_EQ(Judge(packet).kind, Kind::BadLength) << "shorter than its own length field";
    packet.size = 7;
    EXPECT_EQ(Judge(packet).kind, Kind::Ignore) << "shorter than a header";

    packet.size = EncodeAckHeader(packet.Room(), {AckStatus::AccessDenied, Ack::ReadReg, 0, 7});
    EXPECT_EQ(Judge(packet).kind, Kind::ErrorCode);
    EXPECT_EQ(Judge(packet).status, AckStatus::AccessDenied);
    EXPECT_EQ(Judge(packet, 8).kind, Kind::Ignore) << "a stale refusal";

    packet.size = EncodePendingAck(packet.Room(), 99, 5000);
    EXPECT_EQ(Judge(packet).kind, Kind::Extend);
    EXPECT_EQ(Judge(packet).pendingMs, 5000);
    packet.size = 11;
    EXPECT_EQ(Judge(packet).kind, Kind::Ignore) << "PENDING_ACK without its time";
}

TEST(Gvcp, DiscoveryAcknowledgementReadsBackFieldByField) {
    GevDiscoveryInfo info;
    info.specVersionMajor = 2;
    info.specVersionMinor = 1;
    info.deviceMode = 0x80000001;
    info.macHigh = 0xA1B2;
    info.macLow = 0xC3D4E5F6;
    info.currentIp = 0xC0A80114;
    info.subnetMask = 0xFFFFFF00;
    info.defaultGateway = 0xC0A80101;
    info.manufacturerName = "Maker";
    info.modelName = "CamA";
    info.deviceVersion = "v3";
    info.manufacturerInfo = "made here";
    info.serialNumber = "0123456789ABCDEFcut"; // fills its field without a terminator
    info.userDefinedName = "left";
    GVCP_DISCOVERY_ACK ack;
    ASSERT_EQ(EncodeDiscoveryAck({ack.bytes.data(), ack.bytes.size()}, 0xFFFF, info), DiscoveryAckSize);
    const auto word = [&](std::size_t at) { return Wire::Load<std::uint32_t>(ack.bytes.data() + at); };
    EXPECT_EQ(word(0), 0x00000003U);
    EXPECT_EQ(word(4), 0x00F8FFFFU);
    EXPECT_EQ(word(16), 0x0000A1B2U);
    EXPECT_EQ(word(44), 0xC0A80114U);
    EXPECT_EQ(word(60), 0xFFFFFF00U);
    EXPECT_EQ(word(76), 0xC0A80101U);
    EXPECT_EQ(ack.bytes[80], 'M');
    EXPECT_EQ(ack.bytes[112], 'C');
    EXPECT_EQ(ack.bytes[144], 'v');
    EXPECT_EQ(ack.bytes[176], 'm');
    EXPECT_EQ(ack.bytes[224], '0');
    EXPECT_EQ(ack.bytes[240], 'l');

    GevDiscoveryInfo read;
    ASSERT_TRUE(DecodeDiscoveryAck(ack, read));
    EXPECT_EQ(read.macHigh, 0xA1B2U);
    EXPECT_EQ(read.serialNumber, "0123456789ABCDEF");
    EXPECT_EQ(read.userDefinedName, "left");
    EXPECT_EQ(read.specVersionMinor, 1);
    EXPECT_FALSE(DecodeDiscoveryPayload({ack.bytes.data() + 8, 247}, read));
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
} // namespace VX3
