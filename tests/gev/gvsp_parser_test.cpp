// The image parser in an undisturbed world, and its bookkeeping of blocks.
#include "support/GvspLab.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

namespace VX3::Test {
namespace {

using std::chrono::milliseconds;

TEST(GvspGeometry, FollowsFromTheFirstLeader) {
    struct Row {
        std::uint32_t format, sizeX, sizeY;
        std::uint16_t paddingX, payloadType;
        std::uint32_t packetSize;
        bool extended;
        std::uint32_t bytes, packetData, lastData, packets; // 0 packets: refused
    };
    constexpr std::uint32_t Most = GvspGeometry::MaxBlockBytes;
    for (const Row& row : {
             Row{0x01080001, 1000, 1000, 0, Gvsp::PayloadType::Image, 1500, false, 1000000, 1464, 88, 686},
             Row{0x010C0006, 100, 10, 4, Gvsp::PayloadType::Image, 576, true, 1540, 528, 484, 5}, // 12 bits
             Row{0, 1056, 10, 4, Gvsp::PayloadType::Jpeg, 576, true, 1056, 528, 0, 4},
             Row{0x01080001, 100, 10, 0, 0x4000, 576, true, 0, 528, 0, 2}, // not placed
             Row{0x01010037, 1U << 31, 4, 0, Gvsp::PayloadType::Image, 9000, false, Most, 8964, 7012, 119786},
             Row{0x01010037, 1U << 31, 5, 0, Gvsp::PayloadType::Image, 9000, false, 0, 0, 0, 0},
             Row{0x01080001, ~0U, ~0U, 0, Gvsp::PayloadType::Image, 9000, false, 0, 0, 0, 0},
             Row{0, Most + 1, 0, 0, Gvsp::PayloadType::Jpeg, 9000, false, 0, 0, 0, 0},
             Row{0x01080001, 1 << 15, 1 << 10, 0, Gvsp::PayloadType::Image, 37, false, 0, 0, 0, 0},
             Row{0x01080001, 10, 10, 0, Gvsp::PayloadType::Image, 36, false, 0, 0, 0, 0},
             Row{0x01080001, 10, 10, 0, Gvsp::PayloadType::Image, 48, true, 0, 0, 0, 0},
         }) {
        Gvsp::Leader leader;
        leader.payloadType = row.payloadType;
        leader.pixelFormat = row.format;
        leader.sizeX = row.sizeX;
        leader.sizeY = row.sizeY;
        leader.paddingX = row.paddingX;
        GvspGeometry geometry;
        EXPECT_EQ(GvspGeometry::FromLeader(leader, row.packetSize, row.extended, geometry),
                  row.packets != 0 ? Status::Ok : Status::Malformed)
            << row.sizeX;
        EXPECT_EQ(geometry.payloadBytes, row.bytes);
        EXPECT_EQ(geometry.packetData, row.packetData);
        EXPECT_EQ(geometry.lastData, row.lastData);
        EXPECT_EQ(geometry.packets, row.packets);
    }
}

TEST(GvspBlockRing, KeepsBlocksInOrderWhateverOpensAndCloses) {
    GvspBlockRing ring;
    const GvspBlockOrder order;
    for (std::uint32_t i = 1; i <= 6; ++i)
        ring.AddSpare(nullptr, i, 0);
    std::vector<GvspParserInfo*> opened;
    for (const std::uint32_t id : {65535U, 2U, 1U, 65534U}) {
        opened.push_back(&ring.Open(id, order));
        opened.back()->blockId = id;
    }
    const auto inFlight = [&] {
        std::vector<std::uint32_t> ids;
        for (std::size_t i = 0; i < ring.InFlight(); ++i)
            ids.push_back(ring.At(i).blockId);
        return ids;
    };
    EXPECT_EQ(inFlight(), (std::vector<std::uint32_t>{65534, 65535, 1, 2}));
    ring.Close(*opened[0]);
    EXPECT_EQ(inFlight(), (std::vector<std::uint32_t>{65534, 1, 2}));
    ring.Close(*opened[0]); // spare already
    EXPECT_EQ(inFlight(), (std::vector<std::uint32_t>{65534, 1, 2}));
    EXPECT_EQ(ring.Size(), 6U);
    ring.Close(*opened[1]); // the newest
    EXPECT_EQ(inFlight(), (std::vector<std::uint32_t>{65534, 1}));
    EXPECT_EQ(ring.Find(2), nullptr);
    EXPECT_EQ(ring.Find(1), opened[2]);
}

TEST(GvspPace, IsLearntFromNeighboursInABlock) {
    using Point = GvspPace::TimePoint;
    const Point start{std::chrono::seconds(10)};
    struct Row {
        GvspPacketAddr first, second;
        bool learnt;
    };
    for (const Row& row : {Row{{1, 1}, {2, 1}, true}, Row{{1, 1}, {3, 1}, false}, // one between was lost
                           Row{{1, 1}, {2, 2}, false},                            // the pause between frames
                           Row{{2, 1}, {1, 1}, false}}) {                         // resent
        GvspPace pace;
        pace.Learn(row.first, start);
        pace.Learn(row.second, start + milliseconds(50));
        const Point last = pace.Last();
        EXPECT_FALSE(pace.IsQuiet(last + milliseconds(19), true));
        EXPECT_EQ(pace.IsQuiet(last + milliseconds(20), true), !row.learnt);
        EXPECT_EQ(pace.IsQuiet(last + milliseconds(199), true), !row.learnt);
        EXPECT_TRUE(pace.IsQuiet(last + milliseconds(200), true)) << "four times its pause";
    }
    GvspPace pace;
    EXPECT_FALSE(pace.IsQuiet(start, true)) << "nothing came yet";
    pace.Learn({5, 1}, start);
    EXPECT_FALSE(pace.IsQuiet(start + milliseconds(199), false)) << "a camera that resends nothing";
    EXPECT_TRUE(pace.IsQuiet(start + milliseconds(200), false));
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
    for (std::uint32_t block = 3; block <= 5; ++block)
        lab.GiveBlock(block);
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(lab.Give(2, 0), Status::Malformed);
    EXPECT_EQ(log.Count("Block 2's leader"), 0U) << "no longer among the last three";
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(lab.Give(5, 0), Status::Malformed);
    EXPECT_EQ(log.Count("already committed!"), LogLimiter::PerSecond);
    EXPECT_EQ(lab.Images().size(), 5U);
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

TEST(GvspParser, AFrameWithoutItsLeaderHasNoTimeStamp) {
    LabShape shape;
    shape.resend = false;
    GvspLab lab(shape);
    lab.GiveBlock(1);
    lab.GiveRange(2, 1, shape.TrailerId());
    lab.GiveBlock(3);
    ASSERT_EQ(lab.Images().size(), 3U);
    EXPECT_EQ(lab.Images()[1].lost, 1U);
    EXPECT_EQ(lab.Images()[1].timeStamp, 0U);
    EXPECT_TRUE(lab.Images()[1].intact);
    EXPECT_EQ(lab.Images()[2].timeStamp, (std::uint64_t{7} << 32) + 3);
}

TEST(GvspParser, ThePictureMayChangeWhileTheStreamRuns) {
    struct {
        std::uint32_t width, height, expectedLost;
    } const rows[] = {{500, 2000, 0}, {2000, 500, 0}, {640, 480, 1}, {1200, 1000, 1}, {1000, 1000, 1}};
    GvspLab lab;
    std::uint32_t block = 1;
    lab.GiveBlock(block);
    for (const auto& row : rows) {
        const std::size_t before = lab.Images().size();
        const std::uint32_t trailer = lab.Shape().TrailerId();
        lab.GiveRange(++block, 0, trailer - 2);
        (void)lab.Give(block, trailer); // its last packet is late, and waited for in vain if the size changes
        const Datagram late = lab.Make(block, trailer - 1);
        lab.Resize(row.width, row.height);
        (void)lab.Give(++block, 0);
        (void)lab.Give(late);
        lab.GiveRange(block, 1, lab.Shape().TrailerId());
        lab.GiveBlock(++block);
        ASSERT_EQ(lab.Images().size(), before + 3) << row.width;
        EXPECT_EQ(lab.Images()[before].lost, row.expectedLost) << row.width;
        for (std::size_t i = before + 1; i < lab.Images().size(); ++i) {
            const LabImage& image = lab.Images()[i];
            EXPECT_EQ(image.width, row.width);
            EXPECT_EQ(image.lines, row.height);
            EXPECT_EQ(image.timeStamp, (std::uint64_t{7} << 32) + image.blockId);
            EXPECT_TRUE(image.intact && image.lost == 0) << row.width << ": " << image.lost;
        }
    }
}

TEST(GvspParser, ALateLeaderGivesItsOwnFrameTheNewPicture) {
    GvspLab lab;
    lab.GiveBlock(1);
    const Datagram stale = lab.Make(2, 0);
    for (const auto& [width, isWhole] : {std::pair{500U, true}, {640U, false}}) {
        const std::uint32_t block = isWhole ? 2 : 3;
        lab.GiveRange(block, 1, 3);
        lab.Resize(width, width == 500 ? 2000 : 480);
        EXPECT_EQ(Failed(lab.Give(block, 0)), !isWhole) << "what came was placed by the old geometry";
        lab.GiveRange(block, 4, lab.Shape().TrailerId());
    }
    lab.GiveBlock(4);
    ASSERT_EQ(lab.Images().size(), 4U);
    EXPECT_EQ(lab.Images()[1].width, 500U);
    EXPECT_TRUE(lab.Images()[1].intact && lab.Images()[1].lost == 0);
    EXPECT_NE(lab.Images()[2].lost, 0U);
    EXPECT_TRUE(lab.Images()[3].intact && lab.Images()[3].lost == 0);
    EXPECT_TRUE(Failed(lab.Give(stale)));
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
} // namespace VX3::Test
