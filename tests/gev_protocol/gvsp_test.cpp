#include "gev/protocol/Gvsp.h"

#include <array>
#include <gtest/gtest.h>
#include <vector>

namespace VX3 {
namespace {

using namespace Gvsp;

std::uint32_t Word(const std::uint8_t* p) {
    return Wire::Load<std::uint32_t>(p);
}

TEST(Gvsp, BothHeaderFormsHaveThePublishedBytes) {
    std::array<std::uint8_t, 64> bytes{};
    const WireRoom room{bytes.data(), bytes.size()};
    const std::uint8_t payload[] = {0xAB};
    ASSERT_EQ(EncodePayload(room, {0xBEEF, 0x01020304, 0x0100, 0, false}, {payload, 1}), 9U);
    EXPECT_EQ(Word(&bytes[0]), 0x0100BEEFU);
    EXPECT_EQ(Word(&bytes[4]), 0x03020304U) << "packet ids have 24 bits";
    EXPECT_EQ(bytes[8], 0xAB);

    ASSERT_EQ(EncodePayload(room, {0x1122334455667788ULL, 0x01020304, 0, 0, true}, {payload, 1}), 21U);
    EXPECT_EQ(Word(&bytes[0]), 0U);
    EXPECT_EQ(Word(&bytes[4]), 0x83000000U);
    EXPECT_EQ(Word(&bytes[8]), 0x11223344U);
    EXPECT_EQ(Word(&bytes[16]), 0x01020304U);

    Header header;
    ASSERT_TRUE(DecodeHeader(bytes.data(), 21, header));
    EXPECT_TRUE(header.extended);
    EXPECT_TRUE(header.Is(Format::Payload));
    EXPECT_EQ(header.blockId, 0x1122334455667788ULL);
    EXPECT_EQ(header.packetId, 0x01020304U);
    EXPECT_EQ(EncodePayload({bytes.data(), 20}, {1, 1, 0, 0, true}, {payload, 1}), 0U);
}

TEST(Gvsp, HeadersCutAnywhereAreRefused) {
    std::array<std::uint8_t, 20> bytes{};
    for (const bool extended : {false, true}) {
        const std::size_t size = EncodeHeader({bytes.data(), bytes.size()}, {5, 6, 0, 3, extended});
        ASSERT_EQ(size, HeaderSize(extended));
        for (std::size_t cut = 0; cut <= size; ++cut) {
            const std::vector<std::uint8_t> exact(bytes.data(), bytes.data() + cut);
            Header header;
            header.packetId = 99;
            EXPECT_EQ(DecodeHeader(exact.data(), exact.size(), header), cut == size);
            EXPECT_EQ(header.packetId, cut == size ? 6U : 99U);
        }
    }
}

TEST(Gvsp, LeadersCarryWhatTheirPayloadTypeNeeds) {
    std::array<std::uint8_t, 64> bytes{};
    Leader leader;
    leader.timeStamp = 0x0102030405060708ULL;
    leader.pixelFormat = 0x01080001;
    leader.sizeX = 1920;
    leader.sizeY = 1200;
    leader.offsetX = 16;
    leader.offsetY = 8;
    leader.paddingX = 3;
    ASSERT_EQ(EncodeLeader({bytes.data(), bytes.size()}, {1, 0, 0, 0, false}, leader), 44U);
    EXPECT_EQ(Word(&bytes[8]), 0x00000001U) << "payload type";
    EXPECT_EQ(Word(&bytes[12]), 0x01020304U);
    EXPECT_EQ(Word(&bytes[20]), 0x01080001U);
    EXPECT_EQ(Word(&bytes[24]), 1920U);
    EXPECT_EQ(Word(&bytes[28]), 1200U);
    Leader read;
    ASSERT_TRUE(DecodeLeader({&bytes[8], 36}, read));
    EXPECT_EQ(read.timeStamp, leader.timeStamp);
    EXPECT_EQ(read.sizeY, 1200U);
    EXPECT_EQ(read.offsetY, 8U);
    EXPECT_EQ(read.paddingX, 3);

    EXPECT_FALSE(DecodeLeader({&bytes[8], 35}, read)) << "an image leader is whole or nothing";
    Wire::Store<std::uint16_t>(&bytes[10], PayloadType::DeviceSpecific);
    EXPECT_TRUE(DecodeLeader({&bytes[8], 20}, read));
    EXPECT_TRUE(read.IsPlainBytes());
    EXPECT_EQ(read.sizeX, 1920U);
    EXPECT_EQ(read.sizeY, 0U) << "not reached by the packet";
    EXPECT_FALSE(DecodeLeader({&bytes[8], 19}, read));
    Wire::Store<std::uint16_t>(&bytes[10], 4);
    EXPECT_TRUE(DecodeLeader({&bytes[8], 12}, read));
    EXPECT_FALSE(DecodeLeader({&bytes[8], 11}, read));
}

TEST(Gvsp, TrailersAndGeometry) {
    std::array<std::uint8_t, 32> bytes{};
    ASSERT_EQ(EncodeTrailer({bytes.data(), bytes.size()}, {1, 686, 0, 0, false}, {PayloadType::Image, 1000}),
              16U);
    EXPECT_EQ(Word(&bytes[8]), 1U);
    EXPECT_EQ(Word(&bytes[12]), 1000U);
    Trailer trailer;
    ASSERT_TRUE(DecodeTrailer({&bytes[8], 8}, trailer));
    EXPECT_EQ(trailer.sizeY, 1000U);
    ASSERT_TRUE(DecodeTrailer({&bytes[8], 7}, trailer));
    EXPECT_EQ(trailer.sizeY, 0U);
    EXPECT_FALSE(DecodeTrailer({&bytes[8], 3}, trailer));

    EXPECT_EQ(DataPerPacket(1500, false), 1464U);
    EXPECT_EQ(DataPerPacket(1500, true), 1452U);
    EXPECT_EQ(DataPerPacket(36, false), 0U);
    EXPECT_EQ(DataPerPacket(0, true), 0U);
    EXPECT_EQ(NextBlockId(65535, false), 1U);
    EXPECT_EQ(NextBlockId(65535, true), 65536U);
    EXPECT_EQ(NextBlockId(0xFFFFFFFFFFFFFFFFULL, true), 1U);
    EXPECT_TRUE(IsErrorStatus(0x800C));
    EXPECT_FALSE(IsErrorStatus(0x0100));
}

} // namespace
} // namespace VX3
