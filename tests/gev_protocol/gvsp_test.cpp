#include "gev/protocol/Gvsp.h"

#include "support/Hex.h"

#include <array>
#include <gtest/gtest.h>

namespace VX3 {
namespace Test {
namespace {

using namespace Gvsp;

std::uint32_t Word(const std::uint8_t* p) {
    return Wire::Load<std::uint32_t>(p);
}

TEST(Gvsp, BothHeaderFormsHaveThePublishedBytesAndAreWholeOrRefused) {
    const struct {
        Header header;
        const char* image;
    } cases[] = {
        {{0xBEEF, 0x01020304, 0x0100, 0, false}, "0100beef 03020304 ab"}, // packet ids have 24 bits
        {{0x1122334455667788ULL, 0x01020304, 0, 0, true}, "00000000 83000000 11223344 55667788 01020304 ab"},
    };
    const std::uint8_t payload[] = {0xAB};
    for (const auto& c : cases) {
        const Bytes image = FromHex(c.image);
        Bytes made(image.size());
        EXPECT_EQ(EncodePayload({made.data(), made.size() - 1}, c.header, {payload, 1}), 0U);
        EXPECT_EQ(EncodePayload({made.data(), made.size()}, c.header, {payload, 1}), image.size());
        EXPECT_EQ(made, image);
        for (std::size_t cut = 0; cut < image.size(); ++cut) {
            const Bytes exact(image.begin(), image.begin() + static_cast<long>(cut));
            Header header;
            header.packetId = 99;
            const bool whole = cut == HeaderSize(c.header.extended);
            EXPECT_EQ(DecodeHeader(exact.data(), exact.size(), header), whole);
            EXPECT_EQ(header.packetId,
                      !whole ? 99 : c.header.packetId & (c.header.extended ? ~0U : 0xFFFFFFU));
            EXPECT_EQ(header.blockId, whole ? c.header.blockId : 0);
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
} // namespace Test
} // namespace VX3
