// The packets of a block as they stand on the wire, for every payload type.
#include "simulated/camera/PreparedBlock.h"

#include "gev/protocol/Gvsp.h"

#include <gtest/gtest.h>
#include <numeric>

namespace VX3 {
namespace Test {
namespace {

using namespace Simulated;
namespace Type = Gvsp::PayloadType;

SharedBytes Bytes(std::size_t size) {
    std::vector<std::uint8_t> bytes(size);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{1});
    return SharedBytes::Of(std::move(bytes));
}

// A big-endian number in a packet, counted from the end of its header.
struct Field {
    std::size_t offset;
    std::size_t width;
    std::uint64_t value;
};

struct Case {
    const char* name;
    std::uint16_t type;
    std::vector<std::size_t> pieces; // sizes of the data
    std::size_t leaderSize, trailerSize;
    std::vector<Field> leader, trailer;
    unsigned format;                       // of payload packets
    std::vector<Field> first, last;        // payload packets
    std::vector<std::size_t> payloadSizes; // of the data in each
};

// Packets of 500 bytes carry 464 bytes of data, 452 with extended ids, less what stands before the data.
const Case Cases[] = {
    {"image",
     Type::Image,
     {1000},
     36,
     8,
     {{0, 1, 0x21},
      {2, 2, 1},
      {4, 8, 7},
      {12, 4, 0x01080001},
      {16, 4, 640},
      {20, 4, 480},
      {24, 4, 16},
      {28, 4, 8},
      {32, 2, 3},
      {34, 2, 5}},
     {{2, 2, 1}, {4, 4, 479}},
     3,
     {},
     {},
     {464, 464, 72}},
    {"image with chunks",
     Type::Image | Type::ChunkBit,
     {464},
     36,
     16,
     {{2, 2, 0x4001}},
     {{2, 2, 0x4001}, {4, 4, 479}, {8, 4, 44}, {12, 4, 9}},
     3,
     {},
     {},
     {464}},
    {"raw", Type::RawData, {10}, 20, 4, {{12, 8, 10}}, {{2, 2, 2}}, 3, {}, {}, {10}},
    {"file", Type::File, {10}, 26, 4, {{12, 8, 10}, {20, 6, 0x612E747874'00}}, {}, 3, {}, {}, {10}},
    {"chunks", Type::ChunkData, {100}, 12, 8, {{4, 8, 7}}, {{4, 4, 44}}, 3, {}, {}, {100}},
    {"extended chunks",
     Type::ExtendedChunkData,
     {100},
     36,
     16,
     {{16, 4, 640}},
     {{4, 4, 44}, {8, 4, 479}, {12, 4, 9}},
     3,
     {},
     {},
     {100}},
    {"JPEG",
     Type::Jpeg,
     {100},
     32,
     4,
     {{1, 1, 0x55}, {12, 8, 100}, {20, 8, 1000}, {28, 4, 77}},
     {},
     3,
     {},
     {},
     {100}},
    {"H.264",
     Type::H264,
     {500},
     32,
     4,
     {{4, 8, 500},
      {13, 1, 1},
      {14, 2, 2},
      {17, 1, 3},
      {18, 1, 0x80},
      {19, 1, 4},
      {20, 2, 5},
      {22, 2, 6},
      {24, 4, 7},
      {28, 4, 8}},
     {},
     5,
     {{0, 8, 7}},
     {{0, 8, 7}},
     {456, 44}},
    {"multi-zone",
     Type::MultiZone,
     {500, 300},
     40,
     8,
     {{12, 4, 0x40000000}, {16, 4, 0x01080001}, {20, 4, 640}},
     {{4, 4, 479}},
     6,
     {{0, 1, 0}, {1, 1, 0}, {2, 6, 0}},
     {{1, 1, 0x03}, {2, 6, 500}},
     {444, 56, 300}},
    {"multi-part",
     Type::MultiPart,
     {500, 300},
     12 + 96,
     4 + 32,
     {{12, 2, 1},
      {14, 6, 500},
      {20, 4, 0x01080001},
      {26, 1, 4},
      {32, 2, 1},
      {34, 2, 2},
      {36, 4, 640},
      {60, 2, 10},
      {62, 6, 300},
      {68, 4, 0xABC}},
     {{4, 2, 1}, {6, 6, 500}, {12, 4, 480}, {20, 2, 10}, {22, 6, 300}, {28, 8, 0}},
     7,
     {{0, 1, 0}, {1, 1, 0}, {2, 6, 0}},
     {{0, 1, 1}, {1, 1, 0x41}, {2, 6, 500}},
     {444, 56, 300}},
    {"GenDC",
     Type::GenDc,
     {500, 300},
     28,
     4,
     {{12, 8, 800}, {20, 1, 0}, {24, 4, 450}},
     {},
     8,
     {{0, 4, 436}, {4, 8, 0}, {12, 1, 0x60}, {13, 1, 0x80}, {14, 2, 0}},
     {{0, 4, 300}, {4, 8, 500}, {12, 1, 0}, {13, 1, 0xC0}, {14, 2, 1}},
     {436, 64, 300}},
    {"of the device",
     Type::DeviceSpecific,
     {70000},
     20,
     4,
     {{2, 2, 0x8001}, {12, 8, 70000}},
     {{2, 2, 0x8001}},
     3,
     {},
     {},
     {}},
};

Block MakeBlock(const Case& c) {
    Block block;
    Gvsp::BlockInfo& info = block.info;
    info.payloadType = c.type;
    info.fieldInfo = 0x21;
    info.flags = 0x55;
    info.image = {0x01080001, 640, 480, 16, 8, 3, 5};
    info.fileName = "a.txt";
    info.jpeg = {0, 1000, 77};
    info.h264 = {1, 2, 3, 0x80, 4, 5, 6, 7, 8};
    info.zoneDirections = 0x40000000;
    info.descriptorSize = 450;
    info.trailerSizeY = 479;
    info.chunkPayloadLength = 44;
    info.chunkLayoutId = 9;
    info.parts.resize(2);
    info.parts[0].image = info.image;
    info.parts[0].sourceId = 4;
    info.parts[0].purposeId = 1;
    info.parts[0].regionId = 2;
    info.parts[1].dataType = Gvsp::PartType::ChunkData;
    info.parts[1].image.pixelFormat = 0xABC;
    for (const std::size_t size : c.pieces)
        block.data.push_back(Bytes(size));
    return block;
}

void ExpectFields(WireBytes packet, const std::vector<Field>& fields) {
    Gvsp::Header header;
    ASSERT_TRUE(Gvsp::DecodeHeader(packet.data, packet.size, header));
    for (const Field& field : fields) {
        ASSERT_LE(header.Size() + field.offset + field.width, packet.size);
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < field.width; ++i)
            value = value << 8 | packet.data[header.Size() + field.offset + i];
        EXPECT_EQ(value, field.value) << "at " << field.offset;
    }
}

TEST(BlockPackets, EveryPayloadTypeIsLaidOutAsTheStandardSays) {
    const BlockStamp stamp{0x1234, 7, nullptr};
    for (const Case& c : Cases)
        for (const bool whole : {false, true}) {
            SCOPED_TRACE(c.name);
            const Block block = MakeBlock(c);
            ASSERT_EQ(PacketMaker::Objection(block), nullptr);
            const bool zones = c.type == Type::MultiPart || c.type == Type::MultiZone;
            // GenDC and H.264 go with both forms; here one each.
            const bool extended = c.type == Type::GenDc || zones;
            PreparedBlock prepared(
                std::make_shared<PacketMaker>(block, PacketForm{500, c.type == Type::GenDc}), whole);
            const BlockLayout& layout = prepared.Maker()->Layout();
            const std::size_t headerSize = Gvsp::HeaderSize(extended);
            const OutPacket leader = prepared.Packet(0, stamp);
            EXPECT_EQ(leader.head.size, headerSize + c.leaderSize);
            ExpectFields(leader.head, c.leader);
            if (extended) {
                EXPECT_EQ(leader.head.data[7], c.type == Type::MultiPart   ? 2
                                               : c.type == Type::MultiZone ? 1
                                                                           : 0);
            }
            const OutPacket trailer = prepared.Packet(layout.TrailerId(), stamp);
            EXPECT_TRUE(trailer.trailer);
            EXPECT_EQ(trailer.head.size, headerSize + c.trailerSize);
            ExpectFields(trailer.head, c.trailer);
            std::vector<std::size_t> sizes;
            std::vector<std::uint8_t> data;
            for (std::uint32_t id = 1; id < layout.TrailerId(); ++id) {
                const OutPacket packet = prepared.Packet(id, stamp);
                Gvsp::Header header;
                ASSERT_TRUE(Gvsp::DecodeHeader(packet.head.data, packet.head.size, header));
                EXPECT_EQ(header.blockId, 0x1234U);
                EXPECT_EQ(header.packetId, id);
                EXPECT_EQ(header.format, c.format);
                EXPECT_LE(packet.head.size + packet.data.size, 500U - 28U);
                sizes.push_back(packet.data.size);
                data.insert(data.end(), packet.data.data, packet.data.data + packet.data.size);
            }
            if (!c.payloadSizes.empty())
                EXPECT_EQ(sizes, c.payloadSizes);
            ExpectFields(prepared.Packet(1, stamp).head, c.first);
            ExpectFields(prepared.Packet(layout.PayloadPackets(), stamp).head, c.last);
            std::vector<std::uint8_t> expected;
            for (const SharedBytes& piece : block.data)
                expected.insert(expected.end(), piece.data.get(), piece.data.get() + piece.size);
            EXPECT_EQ(data, expected);
        }
}

TEST(BlockPackets, ResendsSayThatTheyAre) {
    for (const bool extended : {false, true}) {
        const PacketMaker maker(MakeBlock(Cases[0]), {500, extended});
        std::vector<std::uint8_t> room(maker.LargestHeadSize());
        const std::uint64_t id = extended ? 0x123456789AULL : 0x9A;
        ASSERT_NE(maker.MakeHead(2, {id, 0, nullptr}, 0x0100, {room.data(), room.size()}), 0U);
        Gvsp::Header header;
        ASSERT_TRUE(Gvsp::DecodeHeader(room.data(), room.size(), header));
        EXPECT_EQ(header.status, 0x0100);
        EXPECT_EQ(header.blockId, id);
        if (extended)
            EXPECT_EQ(room[3], 1) << "the flag beside the status";
        EXPECT_EQ(maker.MakeHead(0, {}, 0, {room.data(), 30}), 0U) << "no room for a leader";
    }
}

TEST(BlockPackets, BlocksThatCannotBeSentAreRefused) {
    Block block = MakeBlock(Cases[0]);
    block.data.push_back(Bytes(10));
    EXPECT_NE(PacketMaker::Objection(block), nullptr) << "an image has one piece";
    block.data.clear();
    EXPECT_NE(PacketMaker::Objection(block), nullptr);
    block.data = {{nullptr, 10}};
    EXPECT_NE(PacketMaker::Objection(block), nullptr);
    block.info.payloadType = Type::MultiZone;
    block.data.assign(33, Bytes(10));
    EXPECT_NE(PacketMaker::Objection(block), nullptr) << "zones are counted in five bits";
    // Packet sizes that leave no room for data, or more than a datagram has.
    EXPECT_EQ(BlockLayout(MakeBlock(Cases[0]), {0, true}).PayloadPackets(), 13U);
    EXPECT_EQ(BlockLayout(MakeBlock(Cases[0]), {0xFFFFFFFF, true}).PayloadPackets(), 1U);
}

} // namespace
} // namespace Test
} // namespace VX3
