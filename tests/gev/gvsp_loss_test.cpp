// The image parser in a bad world: loss, reordering, stuck blocks, silence, and datagrams that lie. A camera
// of a few lines answers resend requests; time is simulated, so seconds of stream take milliseconds. A byte
// written outside an image ends the test under AddressSanitizer.
#include "support/GvspLab.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include <deque>
#include <map>
#include <random>
#include <set>

namespace VX3::Test {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;

constexpr unsigned MostVainRequests = 10; // of one packet, by a camera that answers nothing

struct Camera {
    double loss = 0;
    double resendLoss = 0;
    unsigned reorder = 0; // places
    bool serve = true;
    unsigned answerAfter = 40;                                // packets sent between a request and its answer
    std::set<std::pair<std::uint32_t, std::uint32_t>> lose{}; // block, packet: the first sending
    std::set<std::uint32_t> loseBlocks{};
};

class LossRun {
public:
    LossRun(const LabShape& shape, const Camera& camera) : lab(shape), camera_(camera) {}

    void Stream(std::uint32_t frames) {
        for (std::uint32_t block = 1; block <= frames; ++block) {
            std::vector<std::uint32_t> order(lab.Shape().TrailerId() + 1);
            for (std::uint32_t id = 0; id < order.size(); ++id)
                order[id] = id;
            for (std::size_t i = 0; camera_.reorder != 0 && i + camera_.reorder < order.size();
                 i += camera_.reorder)
                std::shuffle(order.begin() + static_cast<std::ptrdiff_t>(i),
                             order.begin() + static_cast<std::ptrdiff_t>(i + camera_.reorder), random_);
            for (const std::uint32_t id : order) {
                Step();
                if (camera_.loseBlocks.count(block) != 0 || camera_.lose.count({block, id}) != 0 ||
                    Chance(camera_.loss))
                    continue;
                Deliver(block, id);
            }
        }
        lab.Silence(milliseconds(400), [this](const GvspResendInfo& info) {
            Serve(info);
            while (!answers_.empty())
                Answer();
        });
    }

    GvspLab lab;
    std::map<std::pair<std::uint32_t, std::uint32_t>, unsigned> asked;

private:
    bool Chance(double probability) { return std::uniform_real_distribution<>(0, 1)(random_) < probability; }
    void Step() {
        lab.Pass(microseconds(3)); // 4 Gbit/s in packets of 1500
        ++sent_;
        while (!answers_.empty() && answers_.front().first <= sent_)
            Answer();
    }
    void Answer() {
        const auto [block, id] = answers_.front().second;
        answers_.pop_front();
        if (!Chance(camera_.resendLoss))
            Deliver(block, id, 0x0100);
    }
    void Deliver(std::uint32_t block, std::uint32_t id, std::uint16_t status = 0) {
        (void)lab.Give(lab.Make(block, id, status));
        for (const GvspResendInfo& info : lab.Requests())
            Serve(info);
    }
    void Serve(const GvspResendInfo& info) {
        const std::uint32_t last = std::min(info.lastPacketId, lab.Shape().TrailerId());
        for (std::uint32_t id = info.firstPacketId; id <= last; ++id) {
            ++asked[{info.blockId, id}];
            if (camera_.serve)
                answers_.push_back({sent_ + camera_.answerAfter, {info.blockId, id}});
        }
    }

    Camera camera_;
    std::mt19937 random_{7};
    std::uint64_t sent_ = 0;
    std::deque<std::pair<std::uint64_t, std::pair<std::uint32_t, std::uint32_t>>> answers_;
};

void ExpectAllComplete(const LossRun& run, std::uint32_t frames) {
    ASSERT_EQ(run.lab.Images().size(), frames);
    for (std::uint32_t i = 0; i < frames; ++i) {
        EXPECT_EQ(run.lab.Images()[i].blockId, i + 1);
        EXPECT_TRUE(run.lab.Images()[i].intact) << i + 1;
        EXPECT_EQ(run.lab.Images()[i].lost, 0U) << i + 1;
    }
}

TEST(GvspLoss, OnePercentIsMadeGoodInOrder) {
    for (const bool redirect : {true, false}) {
        LabShape shape;
        shape.redirect = redirect;
        LossRun run(shape, Camera{0.01, 0.01});
        run.Stream(300);
        ExpectAllComplete(run, 300);
        EXPECT_GT(run.lab.Counts().resentPackets, 1500U);
    }
}

TEST(GvspLoss, FivePercentDeliversOrCountsEveryFrame) {
    LossRun run({}, Camera{0.05, 0.05});
    run.Stream(300);
    const Statistics counts = run.lab.Counts();
    EXPECT_EQ(counts.blocks + counts.lostBlocks, 300U);
    EXPECT_EQ(run.lab.Images().size(), counts.blocks);
    EXPECT_LE(counts.incompleteBlocks, 3U);
    std::uint64_t lost = 0;
    for (std::size_t i = 0; i < run.lab.Images().size(); ++i) {
        const LabImage& image = run.lab.Images()[i];
        EXPECT_EQ(image.intact, image.lost == 0) << image.blockId;
        lost += image.lost;
        if (i > 0)
            EXPECT_GT(image.blockId, run.lab.Images()[i - 1].blockId);
    }
    EXPECT_EQ(lost, counts.missingPackets);
}

TEST(GvspLoss, ReorderingInsideThirtyTwoPacketsAsksForNothing) {
    Camera camera;
    camera.reorder = 32;
    LossRun run({}, camera);
    run.Stream(50);
    ExpectAllComplete(run, 50);
    EXPECT_TRUE(run.asked.empty());
}

TEST(GvspLoss, ALostTailLeaderOrWholeBlockIsRecovered) {
    Camera camera;
    LabShape shape;
    const std::uint32_t last = shape.TrailerId();
    camera.lose = {{1, 0}, {2, last}, {3, 0},         {4, last - 1}, {4, last},
                   {5, 0}, {5, 1},    {10, last - 1}, {10, last}};
    camera.loseBlocks = {7};
    LossRun run(shape, camera);
    run.Stream(10);
    ExpectAllComplete(run, 10);
    EXPECT_EQ(run.lab.Counts().lostBlocks, 0U);
}

TEST(GvspLoss, AStuckBlockHoldsNobodyForLong) {
    Camera camera;
    camera.serve = false;
    camera.lose = {{2, 50}};
    LossRun run({}, camera);
    run.Stream(40); // two milliseconds a frame
    ASSERT_EQ(run.lab.Images().size(), 40U);
    EXPECT_EQ(run.lab.Images()[1].lost, 1U);
    EXPECT_EQ(run.lab.Counts().incompleteBlocks, 1U);
    EXPECT_LE((run.asked[{2, 50}]), MostVainRequests);

    LabShape hopeless; // the eighth block behind the stuck one pushes it out
    hopeless.resend = false;
    GvspLab lab(hopeless);
    lab.GiveRange(1, 0, 40);
    for (std::uint32_t block = 2; block <= 9; ++block)
        lab.GiveRange(block, 1, 9);
    ASSERT_EQ(lab.Images().size(), 1U);
    EXPECT_EQ(lab.Images()[0].blockId, 1U);
    EXPECT_EQ(lab.Parser().BlocksInFlight(), 8U);

    GvspLab hopeful; // answers may be on their way: more may queue up, to a bound
    hopeful.GiveRange(1, 0, 40);
    for (std::uint32_t block = 2; block <= 60; ++block)
        hopeful.GiveRange(block, 1, 3);
    EXPECT_EQ(hopeful.Parser().BlocksInFlight(), GvspParserImageA::MaxAwaiting);
    EXPECT_EQ(hopeful.Images().size(), 60 - GvspParserImageA::MaxAwaiting);
}

TEST(GvspLoss, LostBlocksAreCounted) {
    Camera camera;
    camera.serve = false;
    camera.loseBlocks = {3, 6, 7, 8};
    LossRun run({}, camera);
    run.Stream(20);
    EXPECT_EQ(run.lab.Images().size(), 16U);
    EXPECT_EQ(run.lab.Counts().lostBlocks, 4U);
}

TEST(GvspLoss, SilenceRecoversTheLastFramesTailOrDeliversItIncomplete) {
    for (const bool serve : {true, false}) {
        GvspLab lab;
        const std::uint32_t last = lab.Shape().TrailerId();
        lab.GiveRange(1, 0, last - 3);
        lab.Silence(milliseconds(18));
        EXPECT_TRUE(lab.Requests().empty());
        unsigned asked = 0;
        lab.Silence(milliseconds(200), [&](const GvspResendInfo& info) {
            ++asked;
            EXPECT_EQ(info.firstPacketId, last - 2);
            if (serve)
                lab.GiveRange(1, info.firstPacketId, last);
        });
        ASSERT_EQ(lab.Images().size(), 1U);
        EXPECT_EQ(lab.Images()[0].lost, serve ? 0U : 3U);
        EXPECT_GE(asked, serve ? 1U : 3U);
        EXPECT_LE(asked, serve ? 1U : MostVainRequests);
        EXPECT_EQ(lab.Images()[0].resent, asked * 3);
    }
}

TEST(GvspLoss, ACameraWithoutResendsDeliversItsLastFrameAfterTheSilence) {
    LabShape shape;
    shape.resend = false;
    GvspLab lab(shape);
    lab.GiveRange(1, 0, 500);
    lab.Silence(milliseconds(100));
    EXPECT_TRUE(lab.Images().empty()) << "its camera may only have paused";
    lab.Silence(milliseconds(150));
    ASSERT_EQ(lab.Images().size(), 1U);
    EXPECT_EQ(lab.Images()[0].lost, 185U);
}

TEST(GvspLoss, ASlowCamerasPausesAreNotTakenForLoss) {
    LabShape shape;
    shape.height = 20; // 14 packets
    GvspLab lab(shape);
    std::set<std::uint32_t> asked; // blocks
    for (std::uint32_t block = 1; block <= 3; ++block)
        for (std::uint32_t id = 0; id <= shape.TrailerId(); ++id) {
            (void)lab.Give(block, id);
            lab.Silence(milliseconds(26), [&](const GvspResendInfo& info) { asked.insert(info.blockId); });
        }
    ASSERT_EQ(lab.Images().size(), 3U);
    EXPECT_EQ(lab.Counts().incompleteBlocks, 0U);
    EXPECT_EQ(asked, (std::set<std::uint32_t>{1})) << "until its pace is known";
}

TEST(GvspLoss, ARefusalEndsTheWaitForItsBlock) {
    GvspLab lab;
    lab.GiveRange(1, 0, 100);
    lab.GiveRange(1, 102, lab.Shape().TrailerId());
    lab.GiveBlock(2);
    EXPECT_TRUE(lab.Images().empty());
    for (const std::uint16_t status : {0x8010, 0x8014}) {
        Datagram later = lab.Make(1, 101, status); // not there yet, or not now: may be asked for again
        later.resize(8);
        (void)lab.Give(later);
        EXPECT_TRUE(lab.Images().empty());
    }
    Datagram gone = lab.Make(1, 101, 0x8012);
    gone.resize(8);
    EXPECT_EQ(lab.Give(gone), Status::Malformed);
    ASSERT_EQ(lab.Images().size(), 2U);
    EXPECT_EQ(lab.Images()[0].lost, 1U);
}

Datagram LeaderOf(std::uint32_t width, std::uint32_t height, std::uint32_t format = 0x01080001,
                  std::uint16_t payloadType = Gvsp::PayloadType::Image) {
    Gvsp::Header header;
    header.blockId = 1;
    Gvsp::Leader leader;
    leader.payloadType = payloadType;
    leader.pixelFormat = format;
    leader.sizeX = width;
    leader.sizeY = height;
    Datagram packet(64);
    packet.resize(Gvsp::EncodeLeader({packet.data(), packet.size()}, header, leader));
    return packet;
}

TEST(GvspHostile, AbsurdLeadersAreRefusedAndLeaveNothingBehind) {
    LogCapture log;
    GvspLab lab;
    for (const auto& [width, height] : {std::pair{0xFFFFFFFFU, 0xFFFFFFFFU}, {20000U, 20000U}}) {
        EXPECT_TRUE(Failed(lab.Give(LeaderOf(width, height)))) << width << " x " << height;
        EXPECT_FALSE(lab.Parser().Geometry().IsFixed());
    }
    EXPECT_TRUE(Failed(lab.Give(LeaderOf(0xFFFFFFF0U, 0, 0, Gvsp::PayloadType::Jpeg))));
    EXPECT_TRUE(log.Has("leader of block 1 refused"));
    lab.GiveBlock(1);
    ASSERT_EQ(lab.Images().size(), 1U);
    EXPECT_TRUE(lab.Images()[0].intact);
}

TEST(GvspHostile, PacketSizesWithoutRoomForDataAreRefused) {
    for (const std::uint32_t packetSize : {0U, 28U, 36U}) {
        LabShape shape;
        shape.packetSize = packetSize;
        shape.bufferSize = 1000;
        GvspLab lab(shape);
        EXPECT_EQ(lab.Give(LeaderOf(10, 10)), Status::Malformed) << packetSize;
        EXPECT_EQ(lab.Give(Datagram(packetSize, 3)), Status::Malformed);
    }
}

TEST(GvspHostile, LeadersLargerThanPromisedGetLargerBlocksWithinReason) {
    for (const std::uint32_t promised : {0U, 500000U}) {
        LabShape shape; // a million bytes
        shape.bufferSize = promised;
        GvspLab lab(shape);
        for (std::uint32_t block = 1; block <= 12; ++block)
            lab.GiveBlock(block);
        ASSERT_EQ(lab.Images().size(), 12U) << promised;
        for (const LabImage& image : lab.Images())
            EXPECT_TRUE(image.intact);
    }
    LabShape small;
    small.bufferSize = 1000;
    GvspLab lab(small);
    EXPECT_EQ(lab.Give(LeaderOf(1000, 1000)), Status::NoBuffer) << "a thousand times what was promised";
}

TEST(GvspHostile, PacketsOfAnotherLengthFormOrPlaceAreRejected) {
    GvspLab lab;
    const std::uint32_t last = lab.Shape().TrailerId();
    (void)lab.Give(1, 0);
    (void)lab.Give(1, 1);
    const auto changed = [&](std::size_t at, std::vector<std::uint8_t> bytes, std::uint32_t like = 2) {
        Datagram packet = lab.Make(1, like);
        std::copy(bytes.begin(), bytes.end(), packet.begin() + static_cast<std::ptrdiff_t>(at));
        return packet;
    };
    const auto resized = [&](std::uint32_t block, std::uint32_t id, int by) {
        Datagram packet = lab.Make(block, id);
        packet.resize(packet.size() + static_cast<std::size_t>(by));
        return packet;
    };
    const auto low = static_cast<std::uint8_t>(last), high = static_cast<std::uint8_t>(last >> 8);
    const Datagram refused[] = {
        resized(1, 2, -1),
        resized(1, 2, 1),
        resized(2, 0, 1),                   // a leader of another length than the first
        changed(4, {3, 0, 0, 2}, last - 1), // the short one's length where a full packet belongs
        changed(5, {0, 0, 0}), // payload packets from the leader's place, the trailer's and beyond
        changed(5, {0, high, low}),
        changed(5, {0xFF, 0xFF, 0xFF}),
        changed(4, {0x83}), // extended ids in a standard stream
        changed(4, {5}),
        changed(2, {0, 0}), // block 0: a test packet
        lab.Make(1, 2, 0x8004),
    };
    for (std::size_t i = 0; i < std::size(refused); ++i)
        EXPECT_EQ(lab.Give(refused[i]), Status::Malformed) << i;
    EXPECT_EQ(lab.Parser().BlocksInFlight(), 1U);
    EXPECT_EQ(lab.Give(lab.Make(1, 2, 0x0100)), Status::Ok) << "resent is not an error";
    EXPECT_EQ(lab.Give(resized(1, last - 1, 1472 - 96)), Status::Ok) << "padded to full size";
    lab.GiveRange(1, 3, last - 2);
    (void)lab.Give(1, last);
    ASSERT_EQ(lab.Images().size(), 1U);
    EXPECT_TRUE(lab.Images()[0].intact);
}

TEST(GvspHostile, AnEarlyTrailerNeverPassesForData) {
    LogCapture log;
    GvspLab lab;
    lab.GiveRange(1, 0, 100);
    Datagram trailer = lab.Make(1, lab.Shape().TrailerId());
    Wire::Store<std::uint32_t>(trailer.data() + 4, 0x02000000 | 101U);
    EXPECT_EQ(lab.Give(trailer), Status::Ok);
    lab.GiveBlock(2);
    ASSERT_EQ(lab.Images().size(), 2U);
    EXPECT_EQ(lab.Images()[0].lost, lab.Shape().TrailerId() - 101 + 0U);
    EXPECT_TRUE(lab.Requests().empty()) << "what a shorter block does not have is not missing";
}

} // namespace
} // namespace VX3::Test
