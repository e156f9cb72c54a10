// Datagrams that lie: about sizes, ids, forms and lengths. Run under AddressSanitizer, where a byte written
// outside an image ends the test.
#include "support/GvspLab.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>
#include <random>

namespace VX3 {
namespace Test {
namespace {

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

TEST(GvspHostile, NoSequenceOfDatagramsWritesOutsideOrWedgesTheStream) {
    std::mt19937 random(11);
    for (unsigned round = 0; round < 30; ++round) {
        LabShape shape;
        shape.width = 64;
        shape.height = 40;
        shape.packetSize = 300;
        shape.redirect = round % 2 == 0;
        shape.extended = round % 3 == 0;
        GvspLab lab(shape);
        for (unsigned n = 0; n < 1500; ++n) {
            const std::uint32_t block =
                random() % 8 == 0 ? static_cast<std::uint32_t>(random()) : 1 + n / 100;
            Datagram packet = lab.Make(block, static_cast<std::uint32_t>(random()) % (shape.TrailerId() + 2));
            if (random() % 6 == 0)
                packet[random() % std::min<std::size_t>(packet.size(), 60)] =
                    static_cast<std::uint8_t>(random());
            if (random() % 20 == 0)
                packet.resize(random() % 700);
            (void)lab.Give(packet);
            (void)lab.Requests();
            lab.Pass(std::chrono::microseconds(random() % 3000));
        }
        const std::size_t before = lab.Images().size();
        lab.Silence(std::chrono::milliseconds(1500));
        if (!lab.Parser().Geometry().IsFixed())
            continue;
        EXPECT_EQ(lab.Parser().BlocksInFlight(), 0U);
        for (std::uint32_t id = 0; id <= shape.TrailerId(); ++id)
            (void)lab.Give(40000, id);
        lab.Silence(std::chrono::milliseconds(1500));
        EXPECT_GE(lab.Images().size(), before);
    }
}

} // namespace
} // namespace Test
} // namespace VX3
