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

constexpr std::uint32_t ToEnd = GvspResendItem::ToBlockEnd;

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

TEST_F(ResendParserTest, AGapAcrossBlocksMakesTwoRangesAndCountsTheBlocksBetween) {
    parser.SetMaxPid(100);
    Feed(7, 0, 60);
    Feed(8, 2, 60);
    ASSERT_EQ(asked.size(), 2U);
    ExpectAsked(0, 7, 61, ToEnd);
    ExpectAsked(1, 8, 0, 1);
    EXPECT_EQ(parser.GetImagesLost(), 0U);
    Feed(8, 61, 100);
    Feed(11, 5, 60); // all of 9 asked for, 10 lost
    ASSERT_GE(asked.size(), 4U);
    EXPECT_EQ(parser.GetImagesLost(), 1U);
    ExpectAsked(2, 9, 0, ToEnd);
    ExpectAsked(3, 11, 0, 4);
    parser.RemoveUpTo(10); // 9 never came
    EXPECT_EQ(parser.GetImagesLost(), 2U);
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
    ExpectAsked(0, 65535, 31, ToEnd);

    GvspResendParser extended(true);
    extended.SetFlagExt(true);
    extended.SetMaxPid(1);
    const GvspPacketAddr last{1, 0xFFFFFFFF};
    extended.UpdateResend(&last, now);
    EXPECT_EQ(extended.Expected(), (GvspPacketAddr{0, 1}));
}

TEST_F(ResendParserTest, ARequestIsRepeatedByCountOrByTime) {
    parser.SetMaxPid(1000);
    Feed(1, 0, 10);
    Feed(1, 21); // ten are missing
    while (asked.empty())
        Feed(1, parser.Expected().packetId);
    now += milliseconds(4); // more than the round trip
    const std::uint32_t next = parser.Expected().packetId;
    Feed(1, next, next + 48);
    EXPECT_EQ(asked.size(), 1U);
    Feed(1, next + 49);
    ASSERT_EQ(asked.size(), 2U) << "its countdown has run out";
    ExpectAsked(1, 1, 11, 20);
    for (const milliseconds passed : {milliseconds(39), milliseconds(1)}) {
        EXPECT_EQ(asked.size(), 2U) << "few packets, little time";
        now += passed;
        parser.NoteDrained(now);
        parser.CheckListTimeOut(now, false);
        Ask();
    }
    EXPECT_EQ(asked.size(), 3U);
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
    parser.SetMaxPid(600);
    std::uint64_t wanted = 0;
    for (std::uint32_t block = 1; block <= 40; ++block)
        for (std::uint32_t id = 0; id <= 600; id += 10, wanted += 9)
            Feed(block, id); // nine of ten lost
    std::uint64_t granted = 0;
    for (const GvspResendInfo& info : asked)
        granted += info.lastPacketId - info.firstPacketId + 1;
    EXPECT_LT(granted, wanted / 4) << "90 % loss must not become a request storm";
    EXPECT_GT(granted, 1000U);
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
