// GenCP packets from memory: published vectors as literal bytes, encoded and decoded; the way back after
// noise.
#include "platform/clprotocol/CDeviceID.h"
#include "platform/clprotocol/GenCpCodec.h"
#include "platform/clprotocol/Manifest.h"
#include "platform/clprotocol/Sha1.h"
#include "support/GenCpPackets.h"
#include "support/TransactionLab.h"
#include "wire/RequestSplit.h"

#include <gtest/gtest.h>

#include <numeric>

namespace VX3::Test {
namespace {

using CLProtocol::GenCpCodec;
using Kind = WireAnswer::Kind;
using Outcome = Transaction::Outcome;
using Milliseconds = Transaction::Duration;

constexpr std::uint16_t ReadMem = 0x0800;
constexpr std::uint16_t WriteMem = 0x0802;

WireRequest Read(std::uint64_t address, std::size_t count) {
    return {ReadMem, address, {}, count};
}
WireRequest Write(std::uint64_t address, const Bytes& data) {
    return {WriteMem, address, {data.data(), data.size()}, 0};
}
Bytes Encoded(const WireRequest& request, std::uint16_t id, unsigned attempt = 0) {
    Bytes room(1024);
    const WireBytes packet = GenCpCodec().Encode({room.data(), room.size()}, request, id, attempt);
    return Bytes(packet.data, packet.data + packet.size);
}

const Bytes Manual{0x00, 0x00, 0x00, 0xFF};
const Bytes Rate115200{0x00, 0x00, 0x00, 0x10};
const Bytes Abc{'a', 'b', 'c'};

TEST(GenCpCodec, Commands) {
    EXPECT_EQ(Encoded(Write(0x20405C, Manual), 0x89AB),
              FromHex("0100 2E46 ECCA 0000 4000 0802 000C 89AB 000000000020405C 000000FF"));
    EXPECT_EQ(Encoded(Read(0, 4), 0),
              FromHex("0100 B7F3 B7EF 0000 4000 0800 000C 0000 0000000000000000 0000 0004"));
    EXPECT_EQ(Encoded(Read(0x1CC, 4), 1),
              FromHex("0100 B7F2 B622 0000 4000 0800 000C 0001 00000000000001CC 0000 0004"));
    EXPECT_EQ(Encoded(Read(0x1CC, 4), 1, 1),
              FromHex("0100 37F2 3622 0000 C000 0800 000C 0001 00000000000001CC 0000 0004"));
    EXPECT_EQ(Encoded(Write(0x10004, Rate115200), 7),
              FromHex("0100 B7EA B7D5 0000 4000 0802 000C 0007 0000000000010004 00000010"));
    EXPECT_EQ(Encoded(Write(0x184, Abc), 9),
              FromHex("0100 B7E9 F202 0000 4000 0802 000B 0009 0000000000000184 616263"));
    // Checksums that come out as nothing.
    EXPECT_EQ(Encoded(Read(0, 4), 0xB7F3)[2] + Encoded(Read(0, 4), 0xB7F3)[3], 0);
    EXPECT_EQ(Encoded(Read(0, 4), 0xB7EF)[4] + Encoded(Read(0, 4), 0xB7EF)[5], 0);
}

struct Vector {
    const char* bytes;
    WireRequest request;
    std::uint16_t id;
    Kind kind;
    const char* data;
};

TEST(GenCpCodec, Answers) {
    const Vector vectors[] = {
        {"0100 F7FA F7F6 0000 0000 0801 0004 0000 00010003", Read(0, 4), 0, Kind::Complete, "00010003"},
        {"0100 F7F9 F795 0000 0000 0801 0004 0001 00000064", Read(0x1CC, 4), 1, Kind::Complete, "00000064"},
        {"0100 F7F1 F409 0000 0000 0805 0004 0005 000003E8", Read(0, 4), 5, Kind::Pending, ""},
        {"0100 F7F1 F7ED 0000 0000 0803 0004 0007 00000004", Write(0x10004, Rate115200), 7, Kind::Complete,
         ""},
        {"0100 F7F5 F7F5 0000 0000 0803 0000 0007", Write(0x10004, Rate115200), 7, Kind::Complete, ""},
        {"0100 77F1 77F1 0000 8004 0803 0000 0007", Write(0x10004, Rate115200), 7, Kind::Refused, ""},
        // Another length; another command; less written; a warning, which was executed.
        {"0100 F7FA F7F6 0000 0000 0801 0004 0000 00010003", Read(0, 8), 0, Kind::Malformed, "00010003"},
        {"0100 F7FA F7F6 0000 0000 0801 0004 0000 00010003", Write(0, Abc), 0, Kind::Foreign, ""},
        {"0100 F7F1 F7ED 0000 0000 0803 0004 0007 00000004", Write(0x10004, Abc), 7, Kind::Incomplete, ""},
    };
    const GenCpCodec codec;
    for (const Vector& vector : vectors) {
        const Bytes packet = FromHex(vector.bytes);
        const WireFrame frame = codec.FrameOf({packet.data(), packet.size()});
        EXPECT_EQ(frame.skip, 0U) << vector.bytes;
        EXPECT_EQ(frame.size, packet.size()) << vector.bytes;
        const WireAnswer answer = codec.Judge({packet.data(), packet.size()}, vector.request);
        EXPECT_EQ(answer.kind, vector.kind) << vector.bytes;
        EXPECT_EQ(answer.id, vector.id) << vector.bytes;
        if (vector.kind != Kind::Refused)
            EXPECT_EQ(Bytes(answer.data.data, answer.data.data + answer.data.size), FromHex(vector.data));
    }
    const Bytes pending = FromHex(vectors[2].bytes);
    EXPECT_EQ(codec.Judge({pending.data(), pending.size()}, Read(0, 4)).pendingMs, 1000);
    const Bytes refused = FromHex(vectors[5].bytes);
    EXPECT_EQ(codec.Judge({refused.data(), refused.size()}, Write(0, Abc)).status, 0x8004);
    const Bytes warning = GenCpPackets::Answer(0x0001, ReadMem + 1, 3, Abc);
    EXPECT_EQ(codec.Judge({warning.data(), warning.size()}, Read(0, 3)).kind, Kind::Complete);
    const Bytes event = GenCpPackets::Answer(0, ReadMem + 1, 3, Abc, 1); // another channel
    EXPECT_EQ(codec.Judge({event.data(), event.size()}, Read(0, 3)).kind, Kind::Foreign);
}

TEST(GenCpCodec, MakesNoPacketOfWhatDoesNotTravel) {
    EXPECT_TRUE(Encoded(Write(0, Abc), 0).empty()); // would be executed again by a resend
    EXPECT_TRUE(Encoded(Read(0, 1009), 1).empty());
    EXPECT_TRUE(Encoded(Write(0, Bytes(1001)), 1).empty());
    EXPECT_EQ(Encoded(Write(0, Bytes(1000)), 1).size(), 1024U);
    Bytes room(27);
    EXPECT_EQ(GenCpCodec().Encode({room.data(), room.size()}, Read(0, 4), 1, 0).size, 0U);
    const WireRequest whole = Read(0x1000, 2017);
    const GenCpCodec codec; // the split refers to its rules
    RequestSplit split(whole, codec.Rules());
    std::vector<std::size_t> sizes;
    for (WireRequest piece; split.Next(piece);)
        sizes.push_back(piece.count);
    EXPECT_EQ(sizes, (std::vector<std::size_t>{1008, 1008, 1}));
}

TEST(GenCpCodec, AZeroChecksumHasTwoForms) {
    // channel + CCD add up to 0xFFFF: the checksum is 0, and some send 0xFFFF for it.
    const GenCpCodec codec;
    Bytes packet = GenCpPackets::Answer(0, ReadMem + 1, static_cast<std::uint16_t>(0xFFFF - 0x0801), {});
    EXPECT_EQ(packet[2] + packet[3], 0);
    EXPECT_EQ(codec.FrameOf({packet.data(), packet.size()}).size, packet.size());
    packet[2] = packet[3] = packet[4] = packet[5] = 0xFF;
    EXPECT_EQ(codec.FrameOf({packet.data(), packet.size()}).size, packet.size());
}

Bytes operator+(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

const Bytes Version{0, 1, 0, 3};

Outcome Exchange(const std::vector<Arrival>& arrivals, long& endMs, std::size_t& sends) {
    const GenCpCodec codec;
    TransactionLab lab(codec, 2048);
    const Outcome outcome = lab.Run(Read(0, 4), 5, {Milliseconds(400), Milliseconds(30000)}, arrivals);
    endMs = lab.endMs;
    sends = lab.sent.size();
    if (outcome == Outcome::Complete)
        EXPECT_EQ(lab.Data(), Version);
    return outcome;
}

// Whatever stands before, within and between, the answer is found, and at once.
TEST(GenCpCodec, FindsItsWayBackAfterNoise) {
    const Bytes answer = GenCpPackets::Answer(0, ReadMem + 1, 5, Version);
    Bytes flipped = answer;
    flipped[17] ^= 0x04;
    Bytes wrongLength = answer;
    wrongLength[12] = 0x03;
    const Bytes half(answer.begin(), answer.begin() + 9);
    const Bytes text = FromHex("0D0A 4F4B 0100 01 0100");
    const Bytes stale = GenCpPackets::Answer(0, ReadMem + 1, 4, FromHex("DEADBEEF"));
    // A packet that claims a long payload which never comes, with a right header.
    Bytes liar = GenCpPackets::Answer(0, ReadMem + 1, 5, Bytes(900));
    liar.resize(16);
    long endMs = 0;
    std::size_t sends = 0;
    for (const Bytes& noise : {Bytes(), Bytes{0x01}, text, flipped, wrongLength, half, stale,
                               flipped + flipped, Bytes(3000, 0x01), stale + text + half}) {
        EXPECT_EQ(Exchange({{10, noise + answer}}, endMs, sends), Outcome::Complete);
        EXPECT_EQ(endMs, 10) << noise.size() << " bytes of noise";
        EXPECT_EQ(sends, 1U);
    }
    EXPECT_EQ(Exchange({{10, liar + answer}}, endMs, sends), Outcome::Complete) << "at the end of its time";
    EXPECT_EQ(endMs, 400);
    std::vector<Arrival> bytes;
    for (std::size_t i = 0; i < answer.size(); ++i)
        bytes.push_back({static_cast<long>(10 + i), {answer[i]}});
    EXPECT_EQ(Exchange(bytes, endMs, sends), Outcome::Complete);
    EXPECT_EQ(endMs, 29);
}

TEST(GenCpCodec, ResendsAndPendingAnswers) {
    const Bytes answer = GenCpPackets::Answer(0, ReadMem + 1, 5, Version);
    const Bytes pending = GenCpPackets::Answer(0, 0x0805, 5, FromHex("0000 03E8"));
    Bytes flipped = answer;
    flipped[4] ^= 0x80;
    long endMs = 0;
    std::size_t sends = 0;
    EXPECT_EQ(Exchange({}, endMs, sends), Outcome::TimedOut);
    EXPECT_EQ(sends, 4U);
    EXPECT_EQ(endMs, 1600);
    EXPECT_EQ(Exchange({{30, flipped}, {430, answer}}, endMs, sends), Outcome::Complete);
    EXPECT_EQ(sends, 2U);
    EXPECT_EQ(Exchange({{30, pending}, {900, pending}, {1800, answer}}, endMs, sends), Outcome::Complete);
    EXPECT_EQ(sends, 1U);
    EXPECT_EQ(endMs, 1800);
}

// ---- what stands in the device ----

TEST(GenCpManifest, TheBestDescriptionComesFirst) {
    const auto entry = [](std::uint32_t version, std::uint32_t kind, std::uint64_t size) {
        Bytes bytes(64);
        Wire::Store(bytes.data(), version);
        Wire::Store(bytes.data() + 4, kind);
        Wire::Store<std::uint64_t>(bytes.data() + 8, 0x20000);
        Wire::Store(bytes.data() + 16, size);
        return bytes;
    };
    const Bytes table = entry(0x01000000, 0x01010000, 10) + entry(0x01020003, 0x01010400, 20) +
                        entry(0x09000000, 0x01010001, 30) + // of buffers
                        entry(0x09000000, 0x02000000, 40) + // a schema nobody knows
                        entry(0x09000000, 0x01010000, 0) + Bytes(63);
    const auto found = CLProtocol::DeviceDescriptions({table.data(), table.size()});
    ASSERT_EQ(found.size(), 3U);
    EXPECT_EQ(found[0].size, 20U);
    EXPECT_TRUE(found[0].zipped);
    EXPECT_EQ(found[0].address, 0x20000U);
    EXPECT_EQ(found[1].size, 10U);
    EXPECT_FALSE(found[1].zipped);
    EXPECT_EQ(found[2].size, 40U);
}

TEST(GenCpManifest, Sha1) {
    const auto hex = [](const std::string& text) {
        const CLProtocol::Sha1Digest digest = CLProtocol::Sha1(text.data(), text.size());
        return Bytes(digest.begin(), digest.end());
    };
    EXPECT_EQ(hex("abc"), FromHex("A9993E364706816ABA3E25717850C26C9CD0D89D"));
    EXPECT_EQ(hex(""), FromHex("DA39A3EE5E6B4B0D3255BFEF95601890AFD80709"));
    EXPECT_EQ(hex("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
              FromHex("84983E441C3BD26EBAAE4AA1F95129E5E54670F1"));
    EXPECT_EQ(hex(std::string(1000000, 'a')), FromHex("34AA973CD4C4DAA4F61EEB2BDBAD27316534016F"));
}

TEST(CDeviceID, SurvivesAsText) {
    using CLProtocol::CDeviceID;
    const CDeviceID id("Cam #1\n", "0042  ");
    EXPECT_EQ(id.ToString(), "GenCP#Cam _1_#0042");
    EXPECT_EQ(CDeviceID::FromString(id.ToString()).GetShortDeviceID(), "Cam _1_(0042)");
    EXPECT_EQ(CDeviceID("Cam", "").GetShortDeviceID(), "Cam");
    EXPECT_EQ(CDeviceID::FromString("").GetShortDeviceID(), "GenCP camera");
}

} // namespace
} // namespace VX3::Test
