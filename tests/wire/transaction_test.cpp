// Transactions from memory, under a clock of the test's own; cursors at their ends.
#include "support/TransactionLab.h"
#include "wire/RequestSplit.h"
#include "wire/Transaction.h"
#include "wire/WireCursor.h"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

namespace VX3::Test {
namespace {

using Outcome = Transaction::Outcome;
using Kind = WireAnswer::Kind;

// A protocol for a serial line, small but with everything that datagrams do not need: a preamble that also
// occurs in data, a checksum, a flag on retries, ids used up by silence, 0 for reads only.
// 01 00 | checksum | flags or status | code | length | id | payload, all words of 16 bits.
namespace Line {
constexpr std::uint16_t Read = 0x10;  // payload: address, count; answered by the data
constexpr std::uint16_t Write = 0x12; // payload: address, data; answered by nothing
constexpr std::uint16_t Pending = 0x15;
constexpr std::uint16_t Resend = 0x8000;
constexpr std::size_t Header = 12;
constexpr std::size_t MostPayload = 40;

std::uint16_t Sum(const std::uint8_t* bytes, std::size_t size) {
    std::uint16_t sum = 0xFFFF;
    for (std::size_t i = 0; i < size; ++i)
        sum = static_cast<std::uint16_t>(sum * 31 + bytes[i]);
    return sum;
}

Bytes Packet(std::uint16_t code, std::uint16_t id, const Bytes& payload = {}, std::uint16_t flags = 0) {
    Bytes packet(Header + payload.size());
    WireWriter writer(packet.data(), packet.size());
    EXPECT_TRUE(writer.U16(0x0100) && writer.U16(0) && writer.U16(flags) && writer.U16(code) &&
                writer.U16(static_cast<std::uint16_t>(payload.size())) && writer.U16(id) &&
                writer.Copy(payload.data(), payload.size()));
    Wire::Store(packet.data() + 2, Sum(packet.data() + 4, packet.size() - 4));
    return packet;
}
Bytes PendingMs(std::uint16_t id, std::uint16_t ms) {
    return Packet(Pending, id, {static_cast<std::uint8_t>(ms >> 8), static_cast<std::uint8_t>(ms)});
}

class Codec : public ITransactionCodec {
public:
    const TransactionRules& Rules() const override {
        static const TransactionRules rules{4, 0, 1, false, true, 16, 8};
        return rules;
    }
    WireBytes Encode(WireRoom room, const WireRequest& request, std::uint16_t id,
                     unsigned attempt) const override {
        if (id == 0 && request.command != Read)
            return {};
        Bytes payload{static_cast<std::uint8_t>(request.address), static_cast<std::uint8_t>(request.count)};
        payload.insert(payload.end(), request.data.data, request.data.data + request.data.size);
        const Bytes packet = Packet(request.command, id, payload, attempt == 0 ? 0 : Resend);
        WireWriter writer(room);
        return {room.data, writer.Copy(packet.data(), packet.size()) ? packet.size() : 0};
    }
    WireAnswer Judge(WireBytes packet, const WireRequest& request) const override {
        WireAnswer answer;
        answer.status = Wire::Load<std::uint16_t>(packet.data + 4);
        answer.id = Wire::Load<std::uint16_t>(packet.data + 10);
        answer.data = {packet.data + Header, packet.size - Header};
        const auto code = Wire::Load<std::uint16_t>(packet.data + 6);
        if (code == Pending && answer.data.size == 2) {
            answer.kind = Kind::Pending;
            answer.pendingMs = Wire::Load<std::uint16_t>(answer.data.data);
        } else if (code == request.command + 1) {
            answer.kind = answer.status != 0                  ? Kind::Refused
                          : answer.data.size == request.count ? Kind::Complete
                                                              : Kind::Malformed;
        }
        return answer;
    }
    WireFrame FrameOf(WireBytes arrived) const override {
        EXPECT_NE(arrived.size, 0U);
        for (std::size_t at = 0; at < arrived.size; ++at) {
            const std::uint8_t* p = arrived.data + at;
            const std::size_t left = arrived.size - at;
            if (p[0] != 1 || (left > 1 && p[1] != 0))
                continue;
            if (left < Header)
                return {at, 0};
            const std::size_t payload = Wire::Load<std::uint16_t>(p + 8);
            if (payload > MostPayload)
                continue;
            if (left < Header + payload)
                return {at, 0};
            if (Wire::Load<std::uint16_t>(p + 2) == Sum(p + 4, Header + payload - 4))
                return {at, Header + payload};
        }
        return {arrived.size, 0};
    }
};
} // namespace Line

Bytes Joined(std::initializer_list<Bytes> parts) {
    Bytes whole;
    for (const Bytes& part : parts)
        whole.insert(whole.end(), part.begin(), part.end());
    return whole;
}

const Bytes Four{9, 8, 7, 6};
const WireRequest ReadFour{Line::Read, 0x20, {}, 4};
const Transaction::Limits Limits{Transaction::Duration(100), Transaction::Duration(1000)};
constexpr std::uint16_t Id = 7;

class LineTransaction : public testing::Test {
protected:
    Outcome Run(const std::vector<Arrival>& arrivals, const WireRequest& request = ReadFour) {
        return lab.Run(request, Id, Limits, arrivals);
    }
    Line::Codec codec;
    TransactionLab lab{codec, Line::Header + Line::MostPayload};
    const Bytes right = Line::Packet(Line::Read + 1, Id, Four);
};

// Whatever comes before it, however it is cut: the answer is found, once it is whole, without another send.
TEST_F(LineTransaction, FindsTheAnswerInTheStream) {
    Bytes corrupt = right;
    corrupt.back() ^= 1;
    const Bytes stale = Line::Packet(Line::Read + 1, Id - 1, {1, 2, 3, 4});
    std::vector<Bytes> befores{Bytes(300, 0), Bytes(300, 1), corrupt, stale};
    befores.push_back(Line::Packet(Line::Write + 1, Id)); // another command's
    befores.push_back(Line::PendingMs(Id - 1, 9000));
    befores.push_back(Bytes(right.begin(), right.end() - 1));
    for (const char* noise : {"", "01", "0100", "010100", "6f6b0d0a3e", "010009090000"})
        befores.push_back(FromHex(noise));
    befores.push_back(Joined({stale, befores.back(), corrupt, {1, 0}}));
    for (const Bytes& before : befores) {
        SCOPED_TRACE(testing::PrintToString(before));
        const Bytes stream = Joined({before, right});
        std::vector<Arrival> singly;
        for (std::size_t i = 0; i < stream.size(); ++i)
            singly.push_back({static_cast<long>(50 + i / 10), {stream[i]}});
        for (const auto& arrivals : {std::vector<Arrival>{{50, stream}}, singly}) {
            ASSERT_EQ(Run(arrivals), Outcome::Complete);
            EXPECT_EQ(lab.Data(), Four);
            EXPECT_EQ(lab.sent.size(), 1U);
        }
    }
    // A start of packet that promises more than comes hides the answer until the attempt is over, no longer.
    const Bytes liar{1, 0, 0, 0, 0, 0, 0, 0, 0, Line::MostPayload, 0, 0};
    ASSERT_EQ(Run({{10, Joined({liar, right})}}), Outcome::Complete);
    EXPECT_EQ(lab.Data(), Four);
    EXPECT_EQ(lab.endMs, 100);
    EXPECT_EQ(lab.sent.size(), 1U);
    // Unless it promises more than there is room for.
    TransactionLab small(codec, Line::Header + 8);
    ASSERT_EQ(small.Run(ReadFour, Id, Limits, {{10, Joined({liar, right})}}), Outcome::Complete);
    EXPECT_EQ(small.endMs, 10);
    // What arrived before the command was sent answers nothing.
    ASSERT_EQ(Run({{10, Bytes(right.begin(), right.end() - 2)}}), Outcome::TimedOut);
    ASSERT_EQ(Run({{10, {right[right.size() - 2], right.back()}}}), Outcome::TimedOut);
}

TEST_F(LineTransaction, AsksAgainSayingSoAndGivesUpInTime) {
    for (std::size_t lost = 0; lost <= 4; ++lost) {
        const long answered = static_cast<long>(lost) * 100 + 99;
        EXPECT_EQ(Run({{answered, right}}), lost < 4 ? Outcome::Complete : Outcome::TimedOut);
        EXPECT_EQ(lab.sentMs.size(), std::min<std::size_t>(lost + 1, 4));
        EXPECT_EQ(lab.endMs, std::min(answered, 400L));
        EXPECT_TRUE(lab.machine.IdUsed()) << "its rules never give an id to two commands";
        const auto flags = [&](std::size_t i) { return Wire::Load<std::uint16_t>(lab.sent[i].data() + 4); };
        EXPECT_EQ(flags(0), 0);
        for (std::size_t i = 1; i < lab.sent.size(); ++i) {
            EXPECT_EQ(flags(i), Line::Resend);
            EXPECT_EQ(lab.sentMs[i], 100 * static_cast<long>(i));
            EXPECT_EQ(codec.FrameOf({lab.sent[i].data(), lab.sent[i].size()}).size, lab.sent[i].size())
                << "the flag is under the checksum";
        }
    }
}

TEST_F(LineTransaction, AnswersDecideAtOnce) {
    const struct {
        Bytes answer;
        Outcome outcome;
    } cases[] = {
        {Line::Packet(Line::Read + 1, Id, {}, 0x8004), Outcome::Refused},
        {Line::Packet(Line::Read + 1, Id, {1, 2, 3}), Outcome::Malformed},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Run({{30, c.answer}, {40, right}}), c.outcome);
        EXPECT_EQ(lab.endMs, 30);
        EXPECT_TRUE(lab.machine.IdUsed());
    }
    EXPECT_EQ(Run({{30, cases[0].answer}}), Outcome::Refused);
    EXPECT_EQ(lab.machine.Answer().status, 0x8004);
    // Two answers at once: the second belongs to nobody, not even to the command after it.
    EXPECT_EQ(Run({{30, Joined({right, right})}}), Outcome::Complete);
    EXPECT_EQ(lab.Run(ReadFour, Id + 1, Limits, {{30, right}}), Outcome::TimedOut);
    // A command the protocol forbids is not sent, and uses no id.
    EXPECT_EQ(lab.Run({Line::Write, 1, {Four.data(), 4}, 0}, 0, Limits), Outcome::Unsendable);
    EXPECT_TRUE(lab.sent.empty());
    EXPECT_FALSE(lab.machine.IdUsed());
}

TEST_F(LineTransaction, PendingAnswersPutTheEndOffUpToTheLimit) {
    const auto pending = [](std::uint16_t ms) { return Line::PendingMs(Id, ms); };
    const struct {
        std::vector<Arrival> arrivals;
        Outcome outcome;
        long endMs;
        std::size_t sends;
    } cases[] = {
        {{{90, pending(500)}, {580, right}}, Outcome::Complete, 580, 1},
        {{{90, pending(1000)}, {1080, right}}, Outcome::Complete, 1080, 1}, // all of the limit at once
        {{{10, pending(20)}, {40, right}}, Outcome::Complete, 40, 2},       // sooner than it was due
        {{{90, pending(200)}, {280, pending(300)}, {570, right}}, Outcome::Complete, 570, 1},
        {{{90, Line::PendingMs(Id + 1, 500)}, {150, right}}, Outcome::Complete, 150, 2}, // another's
        {{{90, pending(100)}}, Outcome::TimedOut, 490, 4},                // the answer was lost
        {{{150, pending(100)}, {240, right}}, Outcome::Complete, 240, 2}, // the first one was lost
        {{{90, pending(65535)}}, Outcome::TimedOut, 1090, 1},             // 1000 ms and no longer
        {{{90, pending(900)}, {980, pending(900)}, {1080, pending(900)}}, Outcome::TimedOut, 1090, 1},
        // Its time ran out; the retry is told the same again, which gains it nothing but the retry's own
        // wait.
        {{{50, pending(1000)}, {1060, pending(1000)}, {1140, right}}, Outcome::Complete, 1140, 2},
        {{{50, pending(1000)}, {1060, pending(1000)}, {1151, right}}, Outcome::TimedOut, 1150, 2},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        EXPECT_EQ(Run(c.arrivals), c.outcome);
        EXPECT_EQ(lab.endMs, c.endMs);
        EXPECT_EQ(lab.sent.size(), c.sends);
    }
    // A device that says nothing else, for ever.
    std::vector<Arrival> flood;
    for (long ms = 1; ms < 5000; ms += 7)
        flood.push_back({ms, pending(50)});
    EXPECT_EQ(Run(flood), Outcome::TimedOut);
    EXPECT_LE(lab.endMs, 1001);
    EXPECT_EQ(lab.sent.size(), 1U);

    using std::chrono::milliseconds;
    EXPECT_EQ(Transaction::PendingLimit(milliseconds(0)), milliseconds(5000));
    EXPECT_EQ(Transaction::PendingLimit(milliseconds(1667)), milliseconds(5001));
    EXPECT_EQ(Transaction::PendingLimit(milliseconds(0xFFFFFFFF)), milliseconds(30000));
}

TEST_F(LineTransaction, ItsOwnerMayGiveUpOrHaveNothingToSend) {
    lab.machine.Start(ReadFour, Id, Limits);
    lab.machine.Abandon();
    EXPECT_EQ(lab.Finish({}), Outcome::Abandoned);
    EXPECT_FALSE(lab.machine.IdUsed()) << "never sent";
    ASSERT_EQ(Run({{1, right}}), Outcome::Complete);
    lab.machine.Abandon();
    EXPECT_EQ(lab.machine.Result(), Outcome::Complete) << "too late";

    lab.machine.Await(ReadFour, Id, Limits);
    EXPECT_EQ(lab.Finish({{60, right}}), Outcome::Complete);
    lab.machine.Await(ReadFour, Id, Limits);
    EXPECT_EQ(lab.Finish({}), Outcome::TimedOut);
    EXPECT_TRUE(lab.sent.empty());
    EXPECT_EQ(lab.endMs, 100);

    // A carrier that claims more than it was given room for.
    lab.machine.Start(ReadFour, Id, Limits);
    ASSERT_EQ(lab.machine.Next({}), Transaction::Step::Send);
    lab.machine.Room().data[0] = 1;
    lab.machine.Received(1, {});
    lab.machine.Received(100, {});
    EXPECT_LE(lab.machine.Room().size, Line::Header + Line::MostPayload);

    // A carrier that is not ready uses the attempts up without any wait.
    Transaction& machine = lab.machine;
    machine.Start(ReadFour, Id, Limits);
    for (int i = 0; i < 4; ++i) {
        ASSERT_EQ(machine.Next({}), Transaction::Step::Send);
        machine.SendFailed();
    }
    EXPECT_EQ(machine.Next({}), Transaction::Step::Finished);
    EXPECT_EQ(machine.Result(), Outcome::TimedOut);
}

// A long access as its owner runs it: piece by piece, each with the id that the one before left.
TEST_F(LineTransaction, LongAccessesAreSplit) {
    Bytes source(19);
    std::iota(source.begin(), source.end(), std::uint8_t{1});
    Bytes written;
    std::vector<std::uint16_t> ids{0xFFFE};
    RequestSplit writes({Line::Write, 0x40, {source.data(), source.size()}, 0}, codec.Rules());
    for (WireRequest piece; writes.Next(piece); ids.push_back(codec.Rules().NextId(ids.back()))) {
        EXPECT_EQ(piece.address, 0x40 + writes.Offset());
        EXPECT_EQ(lab.Run(piece, ids.back(), Limits, {{5, Line::Packet(Line::Write + 1, ids.back())}}),
                  Outcome::Complete);
        written.insert(written.end(), lab.sent[0].begin() + Line::Header + 2, lab.sent[0].end());
    }
    EXPECT_EQ(written, source);
    EXPECT_EQ(ids, (std::vector<std::uint16_t>{0xFFFE, 0xFFFF, 1, 2})) << "0 is for a first read only";

    RequestSplit split({Line::Read, 100, {}, 33}, codec.Rules());
    WireRequest piece;
    std::vector<std::size_t> counts;
    while (split.Next(piece))
        counts.push_back(piece.count);
    EXPECT_EQ(counts, (std::vector<std::size_t>{16, 16, 1}));
    EXPECT_FALSE(split.Next(piece));
    EXPECT_FALSE(RequestSplit({Line::Read, 100, {}, 0}, codec.Rules()).Next(piece));
}

// The heap block is exactly as long as the cursor says, so that AddressSanitizer sees every overrun.
TEST(WireCursor, WhatDoesNotFitFailsAndMovesNothing) {
    for (std::size_t size = 0; size < 8; ++size) {
        std::vector<std::uint8_t> exact(size, 0xAA);
        exact.shrink_to_fit();
        WireReader reader(exact.data(), exact.size());
        std::uint64_t value = 42;
        WireBytes view;
        EXPECT_FALSE(reader.U64(value));
        EXPECT_FALSE(reader.Skip(size + 1));
        EXPECT_FALSE(reader.View(static_cast<std::size_t>(-1), view));
        EXPECT_EQ(value, 42U);
        EXPECT_EQ(reader.Remaining(), size);

        WireWriter writer(exact.data(), exact.size());
        EXPECT_FALSE(writer.U64(0));
        EXPECT_FALSE(writer.Zeros(size + 1));
        EXPECT_FALSE(writer.Text("abc", size + 1));
        EXPECT_EQ(writer.Written(), 0U);
    }
}

} // namespace
} // namespace VX3::Test
