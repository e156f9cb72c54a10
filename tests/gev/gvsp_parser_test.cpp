// The image parser in an undisturbed world, and its bookkeeping of blocks.
#include "support/GvspLab.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

namespace VX3 {
namespace Test {
namespace {

using std::chrono::milliseconds;

TEST(GvspGeometry, FollowsFromTheFirstLeader) {
    GvspLab lab;
    (void)lab.Give(1, 0);
    const GvspGeometry& geometry = lab.Parser().Geometry();
    EXPECT_EQ(geometry.packetData, 1464U);
    EXPECT_EQ(geometry.fullPackets, 683U);
    EXPECT_EQ(geometry.lastData, 88U);
    EXPECT_EQ(geometry.packets, 686U);
    EXPECT_EQ(lab.Make(1, 684).size(), 96U);

    Gvsp::Leader leader;
    leader.pixelFormat = 0x010C0006; // 12 bits a pixel
    leader.sizeX = 100;
    leader.sizeY = 10;
    leader.paddingX = 4;
    GvspGeometry packed;
    ASSERT_EQ(GvspGeometry::FromLeader(leader, 576, true, packed), Status::Ok);
    EXPECT_EQ(packed.payloadBytes, 1540U);
    EXPECT_EQ(packed.packetData, 528U);
    leader.payloadType = Gvsp::PayloadType::Jpeg;
    leader.sizeX = 1056;
    ASSERT_EQ(GvspGeometry::FromLeader(leader, 576, true, packed), Status::Ok);
    EXPECT_EQ(packed.packets, 4U) << "two full packets, no short one";
    leader.payloadType = 0x4000;
    ASSERT_EQ(GvspGeometry::FromLeader(leader, 576, true, packed), Status::Ok);
    EXPECT_EQ(packed.packets, 2U) << "a payload that is not placed";
}

class GvspStreams : public ::testing::TestWithParam<std::tuple<bool, bool>> {
protected:
    LabShape Shape() {
        LabShape shape;
        shape.extended = std::get<0>(GetParam());
        shape.redirect = std::get<1>(GetParam());
        return shape;
    }
};

TEST_P(GvspStreams, BlocksArriveCompleteAndWithoutACopyWhereThePlaceWasRight) {
    GvspLab lab(Shape());
    for (std::uint32_t block = 1; block <= 20; ++block)
        lab.GiveBlock(block);
    ASSERT_EQ(lab.Images().size(), 20U);
    for (std::size_t i = 0; i < 20; ++i) {
        const LabImage& image = lab.Images()[i];
        EXPECT_EQ(image.blockId, i + 1);
        EXPECT_TRUE(image.intact);
        EXPECT_EQ(image.lost, 0U);
        EXPECT_EQ(image.lines, 1000U);
        EXPECT_EQ(image.timeStamp, (std::uint64_t{7} << 32) + i + 1);
    }
    EXPECT_EQ(lab.Counts().blocks, 20U);
    EXPECT_EQ(lab.Counts().incompleteBlocks, 0U);
    const std::size_t placed = Shape().redirect ? 20U * (lab.Shape().TrailerId() - 1) : 0U;
    EXPECT_EQ(lab.Landed(), placed);
}

TEST_P(GvspStreams, DatagramsThatLandInTheWrongPlaceAreMoved) {
    GvspLab lab(Shape());
    const std::uint32_t last = lab.Shape().TrailerId();
    lab.GiveRange(1, 0, 10);
    (void)lab.Give(1, 12); // lands at 11's place
    (void)lab.Give(1, 11);
    (void)lab.Give(1, 10); // again
    (void)lab.Give(2, 0);  // a leader at 13's place
    (void)lab.Give(1, last);
    (void)lab.Give(Datagram(20, 0xEE)); // rejected, at whatever place
    (void)lab.Give(Datagram());
    lab.GiveRange(1, 13, last - 1);
    lab.GiveRange(2, 1, last);
    ASSERT_EQ(lab.Images().size(), 2U);
    EXPECT_TRUE(lab.Images()[0].intact);
    EXPECT_TRUE(lab.Images()[1].intact);
    EXPECT_EQ(lab.Images()[0].lost + lab.Images()[1].lost, 0U);
}

INSTANTIATE_TEST_SUITE_P(Forms, GvspStreams, ::testing::Combine(::testing::Bool(), ::testing::Bool()));

TEST(GvspParser, BlockIdsStartAnywhereAndWrap) {
    LabShape shape;
    shape.width = shape.height = 100;
    GvspLab lab(shape);
    for (std::uint32_t block = 65401; block <= 65535; ++block)
        lab.GiveBlock(block);
    for (std::uint32_t block = 1; block <= 5; ++block)
        lab.GiveBlock(block);
    ASSERT_EQ(lab.Images().size(), 140U);
    EXPECT_EQ(lab.Images()[135].blockId, 1U);
    EXPECT_EQ(lab.Counts().lostBlocks, 0U);
    EXPECT_EQ(lab.Counts().incompleteBlocks, 0U);
}

TEST(GvspParser, ACommittedBlocksPacketsAreRejectedAndLogged) {
    LogCapture log;
    GvspLab lab;
    lab.GiveBlock(1);
    lab.GiveBlock(2);
    EXPECT_EQ(lab.Give(1, 0), Status::Malformed);
    EXPECT_TRUE(log.Has("Block 1's leader received which is already committed!"));
    EXPECT_EQ(lab.Give(2, lab.Shape().TrailerId()), Status::Malformed);
    EXPECT_TRUE(log.Has("Block 2's trailer received which is already committed!"));
    EXPECT_EQ(lab.Give(2, 5), Status::Malformed);
    lab.GiveBlock(3);
    EXPECT_EQ(lab.Images().size(), 3U);
    EXPECT_EQ(lab.Counts().incompleteBlocks, 0U);
}

TEST(GvspParser, ACameraThatStartsOverIsFollowed) {
    GvspLab lab;
    for (std::uint32_t block = 40; block <= 42; ++block)
        lab.GiveBlock(block);
    lab.Pass(milliseconds(300));
    lab.GiveBlock(1); // acquisition stopped and started again
    lab.GiveRange(2, 0, 300);
    lab.GiveRange(2, 302, lab.Shape().TrailerId());
    EXPECT_EQ(lab.Images().size(), 4U);
    lab.Pass(GvspResendParser::ReorderTime);
    lab.GiveRange(3, 0, 20);
    EXPECT_EQ(lab.Requests().size(), 1U) << "gaps are still found";
}

TEST(GvspParser, DuplicatesCountOnce) {
    GvspLab lab;
    for (int copy = 0; copy < 2; ++copy)
        lab.GiveRange(1, 0, 300);
    EXPECT_TRUE(lab.Images().empty());
    lab.GiveRange(1, 300, lab.Shape().TrailerId());
    ASSERT_EQ(lab.Images().size(), 1U);
    EXPECT_TRUE(lab.Images()[0].intact);
    EXPECT_EQ(lab.Counts().resentPackets, 0U);
}

TEST(GvspParser, MissingPacketsAreCountedAndLogged) {
    LogCapture log;
    LabShape shape;
    shape.resend = false;
    GvspLab lab(shape);
    const std::uint32_t last = shape.TrailerId();
    lab.GiveRange(5, 0, 100);
    lab.GiveRange(5, 104, last);
    EXPECT_TRUE(lab.Images().empty());
    lab.GiveBlock(6);
    ASSERT_EQ(lab.Images().size(), 2U);
    EXPECT_EQ(lab.Images()[0].blockId, 5U);
    EXPECT_EQ(lab.Images()[0].lost, 3U);
    EXPECT_FALSE(lab.Images()[0].intact);
    EXPECT_TRUE(lab.Images()[1].intact);
    EXPECT_TRUE(log.Has("block 0x5 lost 3 packets with 2 parse items remained!"));
    EXPECT_FALSE(log.Has("resend item created")) << "nothing will be asked of this camera";
    EXPECT_EQ(lab.Counts().missingPackets, 3U);
    EXPECT_EQ(lab.Counts().incompleteBlocks, 1U);
    EXPECT_EQ(lab.Counts().blocks, 2U);
    EXPECT_TRUE(lab.Requests().empty());
}

TEST(GvspParser, AnUnknownLineCountMeansAllLines) {
    GvspLab lab;
    lab.GiveRange(1, 0, lab.Shape().TrailerId() - 1);
    Datagram trailer = lab.Make(1, lab.Shape().TrailerId());
    std::fill(trailer.end() - 4, trailer.end(), std::uint8_t{0});
    (void)lab.Give(trailer);
    ASSERT_EQ(lab.Images().size(), 1U);
    EXPECT_EQ(lab.Images()[0].lines, 1000U);
}

TEST(GvspParser, FlushDropsWhatIsIncompleteAndFreesItsBlocks) {
    GvspLab lab;
    lab.GiveRange(1, 0, 10);
    lab.GiveRange(2, 0, 10);
    EXPECT_EQ(lab.Parser().BlocksInFlight(), 2U);
    EXPECT_EQ(lab.Parser().Flush(), Status::Ok);
    EXPECT_EQ(lab.Parser().BlocksInFlight(), 0U);
    EXPECT_TRUE(lab.Images().empty());
}

TEST(GvspParser, SpareBlocksAreBoundedByTheRing) {
    LabShape shape;
    shape.width = shape.height = 10;
    shape.blocks = 60;
    GvspLab lab(shape);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(lab.Parser().AllocOneBuff(), Status::Ok);
    EXPECT_EQ(lab.Parser().AllocOneBuff(), Status::QueueFull);
    lab.GiveBlock(1);
    EXPECT_EQ(lab.Images().size(), 1U);
}

TEST(GvspParser, ARingPoolServesAStream) {
    LabShape shape;
    shape.blocks = 3;
    auto pool = ImagePoolFactory::CreateRingAImagePool(12ULL * 0x110000, 0x110000, 4096, "ring");
    GvspLab lab(shape, pool);
    for (std::uint32_t block = 1; block <= 30; ++block)
        lab.GiveBlock(block);
    ASSERT_EQ(lab.Images().size(), 30U);
    for (const LabImage& image : lab.Images())
        EXPECT_TRUE(image.intact);
}

TEST(GvspParser, APoolWithoutImagesRejectsWithALogLine) {
    LogCapture log;
    auto empty = ImagePoolFactory::CreateRingAImagePool(1024, 512, 4096, "too small");
    GvspLab lab({}, empty);
    EXPECT_TRUE(Failed(lab.Give(1, 0)));
    EXPECT_TRUE(Failed(lab.Give(1, 1)));
    EXPECT_TRUE(log.Has("GetParserInfo with bid(0) error, NO Buff Available!"));
    EXPECT_TRUE(lab.Images().empty());
}

} // namespace
} // namespace Test
} // namespace VX3
