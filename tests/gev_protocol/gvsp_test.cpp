#include "gev/protocol/Gvsp.h"

#include "support/Hex.h"

#include <gtest/gtest.h>

namespace VX3::Test {
namespace {

using namespace Gvsp;

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

TEST(Gvsp, LeadersAndTrailersCarryWhatTheirPayloadTypeNeeds) {
    const Bytes image =
        FromHex("00000001 01020304 05060708 01080001 00000780 000004b0 00000010 00000008 00030004");
    Leader leader;
    ASSERT_TRUE(DecodeLeader({image.data(), 36}, leader));
    EXPECT_EQ(std::tuple(leader.timeStamp, leader.pixelFormat, leader.sizeY, leader.offsetY, leader.paddingX),
              std::tuple(0x0102030405060708ULL, 0x01080001U, 1200U, 8U, 3));
    Bytes made(HeaderSize(false) + 36);
    ASSERT_EQ(EncodeLeader({made.data(), made.size()}, {1, 0, 0, 0, false}, leader), made.size());
    EXPECT_EQ(Bytes(made.begin() + 8, made.end()), image);

    Bytes plain = image;
    Wire::Store<std::uint16_t>(&plain[2], PayloadType::DeviceSpecific);
    EXPECT_TRUE(DecodeLeader({plain.data(), 20}, leader) && leader.IsPlainBytes());
    EXPECT_EQ(leader.sizeX, 1920U);
    EXPECT_EQ(leader.sizeY, 0U) << "not reached by the packet";
    Bytes other = image;
    Wire::Store<std::uint16_t>(&other[2], 4);
    EXPECT_TRUE(DecodeLeader({other.data(), 12}, leader));
    EXPECT_FALSE(DecodeLeader({image.data(), 35}, leader)) << "an image leader is whole or nothing";
    EXPECT_FALSE(DecodeLeader({plain.data(), 19}, leader));
    EXPECT_FALSE(DecodeLeader({other.data(), 11}, leader));

    ASSERT_EQ(EncodeTrailer({made.data(), 16}, {1, 686, 0, 0, false}, {PayloadType::Image, 1000}), 16U);
    EXPECT_EQ(Bytes(made.begin() + 8, made.begin() + 16), FromHex("00000001 000003e8"));
    Trailer trailer;
    ASSERT_TRUE(DecodeTrailer({&made[8], 8}, trailer));
    EXPECT_EQ(trailer.sizeY, 1000U);
    ASSERT_TRUE(DecodeTrailer({&made[8], 7}, trailer));
    EXPECT_EQ(trailer.sizeY, 0U);
    EXPECT_FALSE(DecodeTrailer({&made[8], 3}, trailer));
}

TEST(Gvsp, SizesAndIds) {
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
} // namespace VX3::Test
