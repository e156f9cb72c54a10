// What the camera sends and answers, from memory and with a clock of the test's own: the packets of every
// payload type as they stand on the wire, and acknowledgements of commands, hostile ones included.
#include "gev/protocol/Bootstrap.h"
#include "gev/protocol/Gvsp.h"
#include "simulated/camera/CameraTarget.h"
#include "simulated/camera/GvcpAnswers.h"
#include "simulated/camera/PreparedBlock.h"
#include "support/Hex.h"

#include <gtest/gtest.h>

#include <numeric>

namespace VX3::Test {
namespace {

using namespace Simulated;
using std::chrono::milliseconds;
namespace AckStatus = Gvcp::AckStatus;

namespace Type = Gvsp::PayloadType;

SharedBytes Ramp(std::size_t size) {
    Bytes bytes(size);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{1});
    return SharedBytes::Of(std::move(bytes));
}

struct Case {
    std::uint16_t type;
    std::size_t piece, secondPiece; // sizes of the data; no second one: 0
    const char* leader;             // each without the header that all packets have
    const char* trailer;
    unsigned format;         // of payload packets
    const char* sizes;       // of the data in each
    const char* prefix = ""; // what stands before the data of the first and of the last
    const char* lastPrefix = "";
};

// Packets of 500 bytes carry 464 bytes of data, 452 with extended ids, less what stands before the data.
const Case Cases[] = {
    {Type::Image, 1000, 0, "21550001 00000000 00000007 01080001 00000280 000001e0 00000010 00000008 00030005",
     "00000001 000001df", 3, "464 464 72 "},
    {Type::Image | Type::ChunkBit, 464, 0,
     "21554001 00000000 00000007 01080001 00000280 000001e0 00000010 00000008 00030005",
     "00004001 000001df 0000002c 00000009", 3, "464 "},
    {Type::RawData, 10, 0, "21550002 00000000 00000007 00000000 0000000a", "00000002", 3, "10 "},
    {Type::File, 10, 0, "21550003 00000000 00000007 00000000 0000000a 612e74787400", "00000003", 3, "10 "},
    {Type::ChunkData, 100, 0, "21550004 00000000 00000007", "00000004 0000002c", 3, "100 "},
    {Type::ExtendedChunkData, 100, 0,
     "21550005 00000000 00000007 01080001 00000280 000001e0 00000010 00000008 00030005",
     "00000005 0000002c 000001df 00000009", 3, "100 "},
    {Type::Jpeg, 100, 0, "21550006 00000000 00000007 00000000 00000064 00000000 000003e8 0000004d",
     "00000006", 3, "100 "},
    {Type::H264, 500, 0, "21550008 00000000 000001f4 00010002 00038004 00050006 00000007 00000008",
     "00000008", 5, "456 44 ", "00000000 00000007", "00000000 00000007"},
    {Type::MultiZone, 500, 300,
     "21550009 00000000 00000007 40000000 01080001 00000280 000001e0 00000010 00000008 00030005",
     "00000009 000001df", 6, "444 56 300 ", "00000000 00000000", "00030000 000001f4"},
    {Type::MultiPart, 500, 300,
     "2155000a 00000000 00000007 0001 0000000001f4 01080001 00000400 00000000 0001 0002 00000280 000001e0 "
     "00000010 00000008 0003 0005 00000000 000a 00000000012c 00000abc 00000000 00000000 00000000 00000000 "
     "00000000 00000000 00000000 00000000 00000000",
     "0000000a 0001 0000000001f4 000001e0 00000000 000a 00000000012c 00000000 00000000", 7, "444 56 300 ",
     "00000000 00000000", "01410000 000001f4"},
    {Type::GenDc, 500, 300, "2155000b 00000000 00000007 00000000 00000320 00000000 000001c2", "0000000b", 8,
     "436 64 300 ", "000001b4 00000000 00000000 60800000", "0000012c 00000000 000001f4 00c00001"},
    {Type::DeviceSpecific, 1000, 0, "21558001 00000000 00000007 00000000 000003e8", "00008001", 3,
     "464 464 72 "},
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
    block.data.push_back(Ramp(c.piece));
    if (c.secondPiece != 0)
        block.data.push_back(Ramp(c.secondPiece));
    return block;
}

// What stands behind the header that all packets have, which must be this one's.
Bytes BodyOf(const OutPacket& packet, std::uint32_t id, unsigned format) {
    Gvsp::Header header;
    EXPECT_TRUE(Gvsp::DecodeHeader(packet.head.data, packet.head.size, header));
    EXPECT_EQ(std::tuple(header.blockId, header.packetId, header.format), std::tuple(0x1234U, id, format));
    EXPECT_LE(packet.head.size + packet.data.size, 500U - 28U);
    return {packet.head.data + header.Size(), packet.head.data + packet.head.size};
}

TEST(BlockPackets, EveryPayloadTypeIsLaidOutAsTheStandardSays) {
    const BlockStamp stamp{0x1234, 7, nullptr};
    for (const Case& c : Cases)
        for (const bool whole : {false, true}) {
            SCOPED_TRACE(c.leader);
            const Block block = MakeBlock(c);
            ASSERT_EQ(PacketMaker::Objection(block), nullptr);
            // GenDC and H.264 go with both forms of ids; here one each.
            PreparedBlock prepared(
                std::make_shared<PacketMaker>(block, PacketForm{500, c.type == Type::GenDc}), whole);
            const BlockLayout& layout = prepared.Maker()->Layout();
            const OutPacket leader = prepared.Packet(0, stamp);
            EXPECT_EQ(BodyOf(leader, 0, 1), FromHex(c.leader));
            const bool extended = leader.head.data[4] >= 0x80;
            EXPECT_EQ(extended,
                      c.type == Type::GenDc || c.type == Type::MultiPart || c.type == Type::MultiZone);
            if (extended) // parts, or zones beside the first
                EXPECT_EQ(leader.head.data[7], c.type == Type::MultiPart   ? 2
                                               : c.type == Type::MultiZone ? 1
                                                                           : 0);
            const OutPacket trailer = prepared.Packet(layout.TrailerId(), stamp);
            EXPECT_TRUE(trailer.trailer);
            EXPECT_EQ(BodyOf(trailer, layout.TrailerId(), 2), FromHex(c.trailer));
            std::string sizes;
            Bytes data, expected, prefix;
            for (std::uint32_t id = 1; id < layout.TrailerId(); ++id) {
                const OutPacket packet = prepared.Packet(id, stamp);
                prefix = BodyOf(packet, id, c.format);
                if (id == 1)
                    EXPECT_EQ(prefix, FromHex(c.prefix));
                sizes += std::to_string(packet.data.size) + " ";
                data.insert(data.end(), packet.data.data, packet.data.data + packet.data.size);
            }
            EXPECT_EQ(prefix, FromHex(c.lastPrefix));
            EXPECT_EQ(sizes, c.sizes);
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
    block.data.push_back(Ramp(10));
    EXPECT_NE(PacketMaker::Objection(block), nullptr) << "an image has one piece";
    block.data.clear();
    EXPECT_NE(PacketMaker::Objection(block), nullptr);
    block.data = {{nullptr, 10}};
    EXPECT_NE(PacketMaker::Objection(block), nullptr);
    block.info.payloadType = Type::MultiZone;
    block.data.assign(33, Ramp(10));
    EXPECT_NE(PacketMaker::Objection(block), nullptr) << "zones are counted in five bits";
    // Packet sizes that leave no room for data, or more than a datagram has.
    EXPECT_EQ(BlockLayout(MakeBlock(Cases[0]), {0, true}).PayloadPackets(), 13U);
    EXPECT_EQ(BlockLayout(MakeBlock(Cases[0]), {0xFFFFFFFF, true}).PayloadPackets(), 1U);
}

constexpr NET_ENDPOINT Host{0x7F000001, 4000};
constexpr NET_ENDPOINT Other{0x7F000001, 4001}; // another program on the same host

class GvcpAnswersTest : public testing::Test {
protected:
    GvcpAnswersTest() : streams(registers, {}) { PowerUp(registers, {}); }

    // The acknowledgement; empty for none.
    Bytes Ask(const Bytes& datagram, const NET_ENDPOINT& sender = Host) {
        Gvcp::CommandPacket command;
        Bytes ack(Gvcp::MaxPacket);
        if (!Gvcp::DecodeCommand({datagram.data(), datagram.size()}, command))
            return {};
        ack.resize(answers.Answer(command, sender, now, AckStatus::Success, {ack.data(), ack.size()}));
        return ack;
    }
    // Any command.
    static Bytes Command(unsigned code, const Bytes& payload, unsigned flags = 1, int lengthOff = 0) {
        Bytes bytes(Gvcp::HeaderSize + payload.size());
        WireWriter writer(bytes.data(), bytes.size());
        EXPECT_TRUE(writer.U8(0x42) && writer.U8(static_cast<std::uint8_t>(flags)) &&
                    writer.U16(static_cast<std::uint16_t>(code)) &&
                    writer.U16(static_cast<std::uint16_t>(static_cast<int>(payload.size()) + lengthOff)) &&
                    writer.U16(9) && writer.Copy(payload.data(), payload.size()));
        return bytes;
    }
    static Bytes Words(std::initializer_list<std::uint32_t> values) {
        Bytes bytes(4 * values.size());
        WireWriter writer(bytes.data(), bytes.size());
        for (const std::uint32_t value : values)
            EXPECT_TRUE(writer.U32(value));
        return bytes;
    }
    static std::uint16_t StatusOf(const Bytes& ack) {
        return ack.size() < Gvcp::HeaderSize ? 0xDEAD : Wire::Load<std::uint16_t>(ack.data());
    }
    std::uint16_t Write(std::uint32_t address, std::uint32_t value, const NET_ENDPOINT& sender = Host) {
        return StatusOf(Ask(Command(0x0082, Words({address, value})), sender));
    }

    RegisterFile registers;
    StreamChannels streams;
    CameraTarget target{registers, streams};
    ControlPrivilege control{true};
    GvcpAnswers answers{target, control};
    GvcpAnswers::TimePoint now{std::chrono::seconds(100)};
};

TEST_F(GvcpAnswersTest, ExclusiveAccessKeepsOthersFromReading) {
    const Bytes read = Command(0x0080, Words({Bootstrap::CurrentIp}));
    const Bytes readMemory = Command(0x0084, Words({Bootstrap::FirstUrl, 8}));
    for (const std::uint32_t privilege : {Bootstrap::ControlAccess, Bootstrap::ExclusiveAccess}) {
        ASSERT_EQ(Write(Bootstrap::ControlChannelPrivilege, privilege), AckStatus::Success);
        EXPECT_EQ(registers.Value(Bootstrap::PrimaryApplicationPort), Host.port);
        for (const Bytes& command : {read, readMemory}) {
            EXPECT_EQ(StatusOf(Ask(command)), AckStatus::Success);
            EXPECT_EQ(StatusOf(Ask(command, Other)),
                      privilege == Bootstrap::ExclusiveAccess ? AckStatus::AccessDenied : AckStatus::Success);
        }
    }
    ASSERT_EQ(Write(Bootstrap::ControlChannelPrivilege, 0), AckStatus::Success);
    EXPECT_EQ(StatusOf(Ask(read, Other)), AckStatus::Success);
    EXPECT_EQ(registers.Value(Bootstrap::PrimaryApplicationIp), 0U);
}

TEST_F(GvcpAnswersTest, EveryWrongCommandIsAnsweredWithItsStatus) {
    ASSERT_EQ(Write(Bootstrap::ControlChannelPrivilege, 2), AckStatus::Success);
    const std::uint32_t end = static_cast<std::uint32_t>(registers.Size());
    const Bytes tooMuch(4 + GvcpAnswers::MostMemory + 4, 1);
    const struct {
        const char* what;
        Bytes command;
        std::uint16_t status; // 0xDEAD: no answer
    } cases[] = {
        {"unknown", Command(0x00FE, {}), AckStatus::NotImplemented},
        {"unknown, no answer wanted", Command(0x00FE, {}, 0), 0xDEAD},
        {"longer than it says", Command(0x0080, Words({0}), 1, -4), AckStatus::InvalidHeader},
        {"shorter than it says", Command(0x0080, Words({0}), 1, 400), AckStatus::InvalidHeader},
        {"read nothing", Command(0x0080, {}), AckStatus::InvalidParameter},
        {"read two registers", Command(0x0080, Words({0, 4})), AckStatus::InvalidParameter},
        {"read unaligned", Command(0x0080, Words({2})), AckStatus::BadAlignment},
        {"read outside", Command(0x0080, Words({end})), AckStatus::InvalidAddress},
        {"read far outside", Command(0x0080, Words({0xFFFFFFFC})), AckStatus::InvalidAddress},
        {"read the last", Command(0x0080, Words({end - 4})), AckStatus::Success},
        {"write half", Command(0x0082, Words({0xB000})), AckStatus::InvalidParameter},
        {"write unaligned", Command(0x0082, Words({0xB002, 1})), AckStatus::BadAlignment},
        {"write outside", Command(0x0082, Words({end, 1})), AckStatus::InvalidAddress},
        {"write an identity", Command(0x0082, Words({Bootstrap::MacLow, 1})), AckStatus::WriteProtect},
        {"write the description", Command(0x0082, Words({CameraRegister::Description, 1})),
         AckStatus::WriteProtect},
        {"read no memory command", Command(0x0084, Words({0})), AckStatus::InvalidParameter},
        {"read too much", Command(0x0084, Words({0, 540})), AckStatus::InvalidParameter},
        {"read over the end", Command(0x0084, Words({end - 4, 8})), AckStatus::InvalidAddress},
        {"write no memory command", Command(0x0086, {1, 2}), AckStatus::InvalidParameter},
        {"write too much", Command(0x0086, tooMuch), AckStatus::InvalidParameter},
        {"write over an edge", Command(0x0086, Bytes{0, 0, 0xFF, 0xFC, 1, 1, 1, 1, 1, 1, 1, 1}),
         AckStatus::WriteProtect},
        {"wide address outside", Command(0x8084, Bytes{1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 4}),
         AckStatus::InvalidAddress},
        {"wide address wraps", Command(0x8084, Bytes{255, 255, 255, 255, 255, 255, 255, 252, 0, 0, 0, 8}),
         AckStatus::InvalidAddress},
        {"force IP of another camera", Command(0x0004, Bytes(56)), 0xDEAD},
        {"force IP cut short", Command(0x0004, Bytes(55)), 0xDEAD},
        {"resend cut short", Command(0x0040, Bytes(11)), 0xDEAD},
        {"resend of a channel that is none", Command(0x0040, Bytes(12, 0xFF)), 0xDEAD},
    };
    for (const auto& c : cases)
        EXPECT_EQ(StatusOf(Ask(c.command)), c.status) << c.what;
    EXPECT_TRUE(Ask({0x42, 1, 0}).empty());
    EXPECT_TRUE(Ask({0x41, 1, 0, 0x80, 0, 4, 0, 1, 0, 0, 0, 0}).empty()) << "not the key";
}

TEST_F(GvcpAnswersTest, OneHostControlsUntilItFallsSilent) {
    EXPECT_EQ(Write(CameraRegister::Gain, 1), AckStatus::AccessDenied) << "nobody may yet";
    EXPECT_EQ(Write(Bootstrap::ControlChannelPrivilege, 2), AckStatus::Success);
    EXPECT_EQ(Write(Bootstrap::ControlChannelPrivilege, 2), AckStatus::Success) << "its own again";
    EXPECT_EQ(Write(CameraRegister::Gain, 1), AckStatus::Success);
    for (const std::uint32_t value : {2U, 0U})
        EXPECT_EQ(Write(Bootstrap::ControlChannelPrivilege, value, Other), AckStatus::AccessDenied);
    EXPECT_EQ(Write(CameraRegister::Gain, 2, Other), AckStatus::AccessDenied);
    EXPECT_EQ(registers.Value(CameraRegister::Gain), 1U);
    EXPECT_EQ(Write(CameraRegister::ParamsLocked, 1), AckStatus::Success);
    EXPECT_EQ(Write(CameraRegister::Height, 2), AckStatus::AccessDenied) << "locked";
    EXPECT_EQ(Write(CameraRegister::OffsetX, 2), AckStatus::Success);

    ASSERT_EQ(Write(Bootstrap::HeartbeatTimeout, 500), AckStatus::Success);
    const auto pass = [&](int ms) {
        now += milliseconds(ms);
        answers.CheckHeartbeat(now);
        return registers.Value(Bootstrap::ControlChannelPrivilege);
    };
    EXPECT_EQ(pass(499), 2U);
    (void)Ask(Command(0x0080, Words({0}))); // any command of its own
    (void)Ask(Command(0x0080, Words({0})), Other);
    EXPECT_EQ(pass(499), 2U);
    (void)Ask(Command(0x0080, Words({0})), Other);
    EXPECT_EQ(pass(1), 0U);
    EXPECT_EQ(Write(Bootstrap::ControlChannelPrivilege, 2, Other), AckStatus::Success);
    EXPECT_EQ(Write(Bootstrap::ControlChannelPrivilege, 0, Other), AckStatus::Success);
    EXPECT_EQ(registers.Value(Bootstrap::ControlChannelPrivilege), 0U);
}

} // namespace
} // namespace VX3::Test
