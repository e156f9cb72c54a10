#include "gev/stream/GvspResendParser.h"

#include <gtest/gtest.h>
#include <vector>

namespace VX3::Test {
namespace {

using std::chrono::milliseconds;

// Feeds addresses and asks after each, as the receive thread does.
class ResendParserTest : public ::testing::Test {
protected:
    void Feed(std::uint32_t blockId, std::uint32_t packetId) {
        const GvspPacketAddr addr{packetId, blockId};
        parser.NoteDrained(now);
        parser.UpdateResend(&addr, now);
        Ask();
    }
    void Feed(std::uint32_t blockId, std::uint32_t first, std::uint32_t last) {
        for (std::uint32_t id = first; id <= last; ++id)
            Feed(blockId, id);
    }
    void Ask() {
        GvspResendInfo info;
        while (parser.GetResendInfo(info, now))
            asked.push_back(info);
    }
    void Silence(milliseconds time) {
        for (const auto end = now + time; now < end; now += milliseconds(2)) {
            parser.NoteDrained(now);
            parser.CheckListTimeOut(now, true);
            Ask();
        }
    }
    void ExpectAsked(std::size_t index, std::uint32_t blockId, std::uint32_t first, std::uint32_t last) {
        ASSERT_LT(index, asked.size());
        EXPECT_EQ(asked[index].blockId, blockId);
        EXPECT_EQ(asked[index].firstPacketId, first);
        EXPECT_EQ(asked[index].lastPacketId, last);
    }

    GvspResendParser parser{true};
    IGvspResendParser::TimePoint now{std::chrono::seconds(100)};
    std::vector<GvspResendInfo> asked;
};

TEST_F(ResendParserTest, AGapIsAskedForOnceAfterTheReorderWindowOrItsTime) {
    parser.SetMaxPid(100);
    Feed(7, 0, 2);
    Feed(7, 5, 30);
    EXPECT_TRUE(asked.empty()) << "packets 3 and 4 may just be late";
    Feed(7, 31, 60);
    ASSERT_EQ(asked.size(), 1U);
    ExpectAsked(0, 7, 3, 4);
    Feed(7, 61, 75);
    EXPECT_EQ(asked.size(), 1U);
    Feed(7, 3, 4);
    EXPECT_FALSE(parser.HasItems());

    Feed(7, 77); // 76 is missing, and few packets follow
    now += GvspResendParser::ReorderTime;
    parser.CheckListTimeOut(now, false);
    Ask();
    ASSERT_EQ(asked.size(), 2U);
    ExpectAsked(1, 7, 76, 76);
}

TEST_F(ResendParserTest, AGapAcrossBlocksAsksForTheLeadersOfWholeBlocksFirst) {
    parser.SetMaxPid(100);
    Feed(7, 0, 60);
    Feed(8, 2, 60);
    ASSERT_EQ(asked.size(), 4U); // the tail in pieces
    ExpectAsked(0, 7, 61, 76);
    ExpectAsked(2, 7, 93, 100);
    ExpectAsked(3, 8, 0, 1);
    Feed(7, 61, 100);
    Feed(8, 0, 1);
    Feed(8, 61, 100);
    asked.clear();
    Feed(11, 5, 60); // all of 9 and 10 is missing
    ASSERT_EQ(asked.size(), 3U);
    ExpectAsked(0, 9, 0, 0);
    ExpectAsked(1, 10, 0, 0);
    ExpectAsked(2, 11, 0, 4);
    asked.clear();
    Feed(9, 0); // it exists: now for the rest
    ASSERT_FALSE(asked.empty());
    EXPECT_EQ(asked[0].blockId, 9U);
    EXPECT_EQ(asked[0].firstPacketId, 1U);
    EXPECT_EQ(parser.GetImagesLost(), 0U);
    parser.Refused({0, 10}, now);
    EXPECT_EQ(parser.GetImagesLost(), 1U) << "nothing of 10 was ever seen";
    parser.RemoveUpTo(10);
    EXPECT_EQ(parser.GetImagesLost(), 1U) << "some of 9 was";
}

TEST_F(ResendParserTest, OfAHugeGapOnlyTheLatestBlocksAreAskedFor) {
    parser.SetMaxPid(10);
    Feed(65500, 0, 10);
    Feed(464, 0, 10); // 65501 .. 65535 and 1 .. 463
    const auto some = static_cast<std::size_t>(GvspResendParser::MaxWholeBlocks) + 2; // and those at its ends
    EXPECT_EQ(parser.GetImagesLost(), 498U - some);
    Silence(milliseconds(2));
    ASSERT_EQ(asked.size(), some);
    ExpectAsked(0, 65501, 0, 0);
    ExpectAsked(1, 455, 0, 0);
    ExpectAsked(some - 1, 463, 0, 0);
}

TEST_F(ResendParserTest, BlockIdsWrapWithoutAGap) {
    parser.SetMaxPid(40);
    Feed(65534, 0, 40);
    Feed(65535, 0, 30); // its tail is missing
    Feed(1, 0);
    EXPECT_TRUE(parser.IsAwaiting(65535)) << "block 1 follows 65535";
    EXPECT_TRUE(parser.IsAwaiting(1)) << "so it waits for 65535";
    EXPECT_FALSE(parser.IsAwaiting(65534));
    Feed(1, 1, 40);
    ASSERT_EQ(asked.size(), 1U);
    ExpectAsked(0, 65535, 31, 40);

    GvspResendParser extended(true);
    extended.SetFlagExt(true);
    extended.SetMaxPid(1);
    const GvspPacketAddr last{1, 0xFFFFFFFF};
    extended.UpdateResend(&last, now);
    EXPECT_EQ(extended.Expected(), (GvspPacketAddr{0, 1}));
}

TEST_F(ResendParserTest, WhatIsNotAnsweredIsAskedForAgainEachTimeLater) {
    parser.SetMaxPid(1000);
    Feed(1, 0, 10);
    Feed(1, 12, 60);
    ASSERT_EQ(asked.size(), 1U);
    std::vector<milliseconds> at;
    const auto start = now;
    for (std::size_t seen = 1; now < start + milliseconds(60); seen = asked.size()) {
        Silence(milliseconds(2));
        if (asked.size() != seen)
            at.push_back(std::chrono::duration_cast<milliseconds>(now - start));
    }
    ASSERT_GE(at.size(), 3U);
    for (std::size_t i = 2; i < at.size(); ++i)
        EXPECT_GT(at[i] - at[i - 1], at[i - 1] - at[i - 2]);
    ExpectAsked(asked.size() - 1, 1, 11, 11);
}

TEST_F(ResendParserTest, ACameraThatAnswersIsAskedAsLongAsItHoldsTheBlock) {
    parser.SetMaxPid(1000);
    Feed(1, 0, 10);
    Feed(1, 21, 60);
    for (unsigned round = 0; round < 10; ++round) { // one packet each time, half the answers lost
        Silence(milliseconds(60));
        ASSERT_TRUE(parser.IsAwaiting(1)) << round;
        Feed(1, 11 + round);
    }
    EXPECT_FALSE(parser.HasItems());
    EXPECT_GT(asked.size(), 10U);

    Feed(1, 71, 110);
    Silence(milliseconds(60));
    EXPECT_TRUE(parser.IsAwaiting(1));
    Silence(milliseconds(100));
    EXPECT_FALSE(parser.IsAwaiting(1)) << "it answers nobody any more";
}

TEST_F(ResendParserTest, WhilePacketsLieUnreadNothingIsAskedForAgain) {
    parser.SetMaxPid(1000);
    Feed(1, 0, 10);
    Feed(1, 12, 60);
    ASSERT_EQ(asked.size(), 1U);
    for (int i = 0; i < 50; ++i) { // 100 ms of reading a full socket
        now += milliseconds(2);
        parser.CheckListTimeOut(now, false);
        Ask();
    }
    EXPECT_EQ(asked.size(), 1U);
    Silence(milliseconds(6));
    EXPECT_EQ(asked.size(), 2U);
}

TEST_F(ResendParserTest, LatePacketsSplitTheirRangeAndReachOnlyIt) {
    parser.SetMaxPid(200);
    Feed(1, 0, 9);
    Feed(1, 20, 25);
    Feed(1, 14);
    Feed(1, 14);
    Feed(1, 19);
    Feed(1, 10);
    Feed(1, 26, 80);
    ASSERT_EQ(asked.size(), 2U);
    ExpectAsked(0, 1, 11, 13);
    ExpectAsked(1, 1, 15, 18);
    const GvspPacketAddr from{11, 1}, to{13, 1};
    EXPECT_EQ(parser.UpdateResend(&from, &to, now), Status::Ok);
    EXPECT_EQ(parser.UpdateResend(&to, &from, now), Status::WrongState);
    Feed(1, 15, 18);
    EXPECT_FALSE(parser.HasItems());
}

TEST_F(ResendParserTest, ABlockOfWhichAPacketIsGoneCostsNothingFurther) {
    parser.SetMaxPid(200);
    Feed(1, 0, 9);
    Feed(1, 20, 80);
    parser.Refused({12, 1}, now);
    EXPECT_FALSE(parser.IsAwaiting(1));
    asked.clear();
    Feed(1, 90, 130); // it loses more
    Silence(milliseconds(6));
    EXPECT_TRUE(asked.empty());
}

TEST_F(ResendParserTest, WhatIsOnItsWayIsBounded) {
    parser.SetMaxPid(3000);
    Feed(1, 0, 5);
    Feed(1, 2500, 2600);
    const auto packets = [&] {
        std::uint64_t sum = 0;
        for (const GvspResendInfo& info : asked)
            sum += info.lastPacketId - info.firstPacketId + 1;
        return sum;
    };
    EXPECT_EQ(packets(), GvspRecoveryWindow::Initial);
    Feed(1, 6, 69); // the answers: twice as many may follow
    EXPECT_GT(packets(), 2 * GvspRecoveryWindow::Initial);
    EXPECT_LE(packets(), 3 * GvspRecoveryWindow::Initial);

    asked.clear();
    for (int i = 0; i < 12; ++i) { // the socket overruns, again and again
        now += milliseconds(50);
        parser.NoteOverrun(now);
        parser.NoteDrained(now);
    }
    parser.CheckListTimeOut(now, true);
    Ask();
    EXPECT_LE(packets(), GvspRecoveryWindow::Smallest);
}

TEST_F(ResendParserTest, BlocksThatCannotBeCompletedInTimeAreGivenUpForThoseThatCan) {
    parser.SetMaxPid(1000);
    parser.SetPlaces(8);
    std::uint32_t block = 1;
    const auto frame = [&](std::uint32_t missing) { // its first packets
        Feed(block, 0);
        Feed(block, missing + 1, 1000);
        ++block;
        now += milliseconds(5);
    };
    for (int i = 0; i < 10; ++i) {
        frame(0);
        parser.NoteOverrun(now);
    }
    frame(900);
    frame(3);
    frame(2);
    frame(0);
    EXPECT_FALSE(parser.IsAwaiting(11));
    EXPECT_TRUE(parser.IsAwaiting(12));
    asked.clear();
    Silence(milliseconds(20));
    ASSERT_FALSE(asked.empty());
    for (const GvspResendInfo& info : asked)
        EXPECT_NE(info.blockId, 11U);
}

TEST_F(ResendParserTest, ReorderingIsLearntWhereAskingTurnsOutTooEarly) {
    parser.SetMaxPid(60000);
    Feed(1, 0, 100);
    std::uint32_t next = 101;
    const auto late = [&](std::uint32_t distance, bool twice) { // one packet so many others late
        Feed(1, next + 1, next + distance);
        Feed(1, next);
        if (twice)
            Feed(1, next); // the answer to what was asked too early
        next += distance + 1;
    };
    late(64, true);
    const std::size_t learning = asked.size();
    EXPECT_EQ(learning, 1U);
    for (int i = 0; i < 100; ++i)
        late(64, false);
    EXPECT_EQ(asked.size(), learning) << "packets 64 late are waited for now";
    for (int i = 0; i < 1500; ++i)
        Feed(1, next), ++next;
    EXPECT_FALSE(parser.HasItems());
}

TEST(ResendParser, WithoutResendSupportGapsCloseSilently) {
    GvspResendParser silent(false);
    silent.SetMaxPid(100);
    const IGvspResendParser::TimePoint now{std::chrono::seconds(100)};
    GvspResendInfo info;
    for (std::uint32_t id = 0; id < 60; id = id == 1 ? 5 : id + 1) {
        const GvspPacketAddr addr{id, 3};
        silent.UpdateResend(&addr, now);
        EXPECT_FALSE(silent.GetResendInfo(info, now));
        EXPECT_EQ(silent.IsAwaiting(3), id >= 5 && id < 42) << id << ": inside the reorder window";
    }
}

} // namespace
} // namespace VX3::Test
