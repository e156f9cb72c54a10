#include "gev/stream/GvspResendParser.h"

#include <gtest/gtest.h>
#include <vector>

namespace VX3 {
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

constexpr std::uint32_t toEnd = GvspResendItem::ToBlockEnd;

TEST_F(ResendParserTest, AGapIsAskedForOnceAfterTheReorderWindow) {
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
}

TEST_F(ResendParserTest, AGapIsAskedForAfterTimeToo) {
    parser.SetMaxPid(10);
    Feed(7, 1, 2);
    Feed(7, 5);
    now += GvspResendParser::ReorderTime;
    parser.CheckListTimeOut(now, false);
    Ask();
    ASSERT_EQ(asked.size(), 1U);
    ExpectAsked(0, 7, 3, 4);
}

TEST_F(ResendParserTest, AGapAcrossBlocksMakesTwoRangesAndCountsTheBlocksBetween) {
    parser.SetMaxPid(100);
    Feed(7, 0, 60);
    Feed(8, 2, 60);
    ASSERT_EQ(asked.size(), 2U);
    ExpectAsked(0, 7, 61, toEnd);
    ExpectAsked(1, 8, 0, 1);
    EXPECT_EQ(parser.GetImagesLost(), 0U);
    Feed(8, 61, 100);
    Feed(11, 5, 60); // all of 9 asked for, 10 lost
    ASSERT_GE(asked.size(), 4U);
    EXPECT_EQ(parser.GetImagesLost(), 1U);
    ExpectAsked(2, 9, 0, toEnd);
    ExpectAsked(3, 11, 0, 4);
    parser.RemoveUpTo(10); // 9 never came
    EXPECT_EQ(parser.GetImagesLost(), 2U);
}

TEST_F(ResendParserTest, BlockIdsWrapWithoutAGap) {
    parser.SetMaxPid(40);
    Feed(65534, 0, 40);
    Feed(65535, 0, 40);
    Feed(1, 0, 40);
    EXPECT_FALSE(parser.HasItems());
    Feed(2, 0, 30); // the tail of 2 is missing, then of the one before the wrap
    Feed(3, 0, 40);
    ASSERT_EQ(asked.size(), 1U);
    ExpectAsked(0, 2, 31, toEnd);

    GvspResendParser wrapping(true);
    wrapping.SetMaxPid(40);
    for (std::uint32_t id = 0; id <= 30; ++id) {
        const GvspPacketAddr addr{id, 65535};
        wrapping.UpdateResend(&addr, now);
    }
    const GvspPacketAddr first{0, 1};
    wrapping.UpdateResend(&first, now);
    EXPECT_TRUE(wrapping.IsAwaiting(65535)) << "block 1 follows 65535";
    EXPECT_TRUE(wrapping.IsAwaiting(1)) << "so it waits for 65535";
    EXPECT_FALSE(wrapping.IsAwaiting(65534));

    GvspResendParser extended(true);
    extended.SetFlagExt(true);
    extended.SetMaxPid(1);
    const GvspPacketAddr last{1, 0xFFFFFFFF};
    extended.UpdateResend(&last, now);
    EXPECT_EQ(extended.Expected(), (GvspPacketAddr{0, 1}));
}

TEST_F(ResendParserTest, RequestsAreRepeatedAfterTheRoundTripAtMostFiveTimes) {
    parser.SetMaxPid(1000);
    Feed(1, 0, 10);
    Feed(1, 12, 60);
    ASSERT_EQ(asked.size(), 1U);
    Silence(milliseconds(1));
    EXPECT_EQ(asked.size(), 1U) << "the answer is still on its way";
    Silence(milliseconds(300));
    EXPECT_EQ(asked.size(), GvspResendParser::MaxAttempts);
    EXPECT_FALSE(parser.HasItems()) << "then given up";
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

TEST_F(ResendParserTest, ReorderingInsideTheWindowAsksForNothing) {
    constexpr std::uint32_t last = 999;
    parser.SetMaxPid(last);
    std::vector<std::uint32_t> order;
    for (std::uint32_t base = 0; base < 1000; base += 40)
        for (std::uint32_t i = 0; i < 40; ++i)
            order.push_back(base + (i * 7) % 40); // each at most 32 places after its turn
    for (std::uint32_t block = 1; block <= 3; ++block)
        for (const std::uint32_t id : order)
            Feed(block, id);
    EXPECT_TRUE(asked.empty());
    EXPECT_FALSE(parser.HasItems());
}

TEST_F(ResendParserTest, RefusedPacketsAreNotAskedForAgain) {
    parser.SetMaxPid(200);
    Feed(1, 0, 9);
    Feed(1, 20, 80);
    ASSERT_EQ(asked.size(), 1U);
    parser.Refused({12, 1}, false);
    parser.Refused({16, 1}, true); // and 10 .. 15
    asked.clear();
    Silence(milliseconds(6));
    ASSERT_GE(asked.size(), 1U);
    ExpectAsked(0, 1, 17, 19);
    parser.Refused({19, 1}, true);
    EXPECT_FALSE(parser.HasItems());
}

TEST_F(ResendParserTest, RequestsAreBoundedInRateAndFollowOnceTheRateAllows) {
    parser.SetMaxPid(100000);
    Feed(1, 0);
    std::uint64_t wanted = 0;
    for (std::uint32_t id = 1; id + 10 < 20000; id += 10) { // nine of ten lost
        Feed(1, id);
        wanted += 9;
    }
    std::uint64_t granted = 0;
    for (const GvspResendInfo& info : asked)
        granted += info.lastPacketId - info.firstPacketId + 1;
    // The first 200,000 come at once; nothing of that is a lasting rate.
    EXPECT_LE(granted, 200000U + 20000U / 4);
    GvspResendParser small(true);
    small.SetMaxPid(600);
    granted = wanted = 0;
    for (std::uint32_t block = 1; block <= 40; ++block) {
        for (std::uint32_t id = 0; id <= 600; id += 10) {
            const GvspPacketAddr addr{id, block};
            small.UpdateResend(&addr, now);
            wanted += 9;
            GvspResendInfo info;
            while (small.GetResendInfo(info, now))
                granted += info.lastPacketId - info.firstPacketId + 1;
        }
    }
    EXPECT_LT(granted, wanted / 4) << "90 % loss must not become a request storm";
    EXPECT_GT(granted, 1000U);
}

TEST_F(ResendParserTest, WithoutResendSupportGapsCloseSilently) {
    GvspResendParser silent(false);
    silent.SetMaxPid(100);
    GvspResendInfo info;
    for (const std::uint32_t id : {0U, 1U, 5U}) {
        const GvspPacketAddr addr{id, 3};
        silent.UpdateResend(&addr, now);
    }
    EXPECT_TRUE(silent.IsAwaiting(3)) << "still inside the reorder window";
    for (std::uint32_t id = 6; id < 60; ++id) {
        const GvspPacketAddr addr{id, 3};
        silent.UpdateResend(&addr, now);
        EXPECT_FALSE(silent.GetResendInfo(info, now));
    }
    EXPECT_FALSE(silent.IsAwaiting(3));
}

} // namespace
} // namespace VX3
