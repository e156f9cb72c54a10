#include "gev/protocol/GvcpCodec.h"
#include "support/TransactionLab.h"

#include <gtest/gtest.h>

namespace VX3 {
namespace Test {
namespace {

using namespace Gvcp;
using Outcome = Transaction::Outcome;

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
} // namespace Test
} // namespace VX3
