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
    for (const auto& [width, height, format] : {std::tuple{0xFFFFFFFFU, 0xFFFFFFFFU, 0x01080001U},
                                                {0x10000U, 0x10000U, 0x01080001U},
                                                {0xFFFFFFFFU, 1U, 0x01FF0001U},
                                                {1U, 0xFFFFFFFFU, 0x01080001U},
                                                {20000U, 20000U, 0x01080001U}}) {
        EXPECT_TRUE(Failed(lab.Give(LeaderOf(width, height, format)))) << width << " x " << height;
        EXPECT_FALSE(lab.Parser().Geometry().IsFixed());
    }
    EXPECT_TRUE(Failed(lab.Give(LeaderOf(0xFFFFFFF0U, 0, 0, Gvsp::PayloadType::Jpeg))));
    EXPECT_TRUE(log.Has("leader of block 1 refused"));
    lab.GiveBlock(1);
    ASSERT_EQ(lab.Images().size(), 1U);
    EXPECT_TRUE(lab.Images()[0].intact);
}

TEST(GvspHostile, PacketSizesWithoutRoomForDataAreRefused) {
    for (const std::uint32_t packetSize : {0U, 28U, 36U, 48U}) {
        LabShape shape;
        shape.packetSize = packetSize;
        shape.extended = packetSize == 48;
        shape.bufferSize = 1000;
        GvspLab lab(shape);
        Datagram leader = LeaderOf(10, 10);
        if (shape.extended)
            leader = [] {
                Gvsp::Header header;
                header.blockId = 1;
                header.extended = true;
                Datagram packet(64);
                packet.resize(Gvsp::EncodeLeader({packet.data(), packet.size()}, header, Gvsp::Leader()));
                return packet;
            }();
        EXPECT_EQ(lab.Give(leader), Status::Malformed) << packetSize;
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
    Datagram packet = lab.Make(1, 2);
    packet.pop_back();
    EXPECT_EQ(lab.Give(packet), Status::Malformed);
    packet.resize(packet.size() + 2);
    EXPECT_EQ(lab.Give(packet), Status::Malformed);
    Datagram shortOne = lab.Make(1, last - 1); // its length where a full packet belongs
    Wire::Store<std::uint32_t>(shortOne.data() + 4, 0x03000002);
    EXPECT_EQ(lab.Give(shortOne), Status::Malformed);
    for (const std::uint32_t id : {0U, last, last + 1, 0x00FFFFFFU}) {
        packet = lab.Make(1, 2);
        Wire::Store<std::uint32_t>(packet.data() + 4, 0x03000000 | id);
        EXPECT_EQ(lab.Give(packet), Status::Malformed) << id;
    }
    packet = lab.Make(1, 2);
    packet[4] = 0x83; // extended ids in a standard stream
    EXPECT_EQ(lab.Give(packet), Status::Malformed);
    packet = lab.Make(1, 2);
    packet[4] = 5;
    EXPECT_EQ(lab.Give(packet), Status::Malformed);
    packet = lab.Make(1, 2);
    packet[2] = packet[3] = 0; // block 0: a test packet
    EXPECT_EQ(lab.Give(packet), Status::Malformed);
    EXPECT_EQ(lab.Give(lab.Make(1, 2, 0x8004)), Status::Malformed);
    packet = lab.Make(2, 0);
    packet.push_back(0); // a leader of another length than the first
    EXPECT_EQ(lab.Give(packet), Status::Malformed);
    EXPECT_EQ(lab.Parser().BlocksInFlight(), 1U);
    EXPECT_EQ(lab.Give(lab.Make(1, 2, 0x0100)), Status::Ok) << "resent is not an error";
    packet = lab.Make(1, last - 1); // the last packet, padded to full size
    packet.resize(1472);
    EXPECT_EQ(lab.Give(packet), Status::Ok);
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
