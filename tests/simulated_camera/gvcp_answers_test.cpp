// What the camera answers to commands, hostile ones included, from memory and with a clock of the test's own.
#include "gev/protocol/Bootstrap.h"
#include "simulated/camera/CameraTarget.h"
#include "simulated/camera/GvcpAnswers.h"

#include <gtest/gtest.h>
#include <random>

namespace VX3 {
namespace Test {
namespace {

using namespace Simulated;
using std::chrono::milliseconds;
namespace AckStatus = Gvcp::AckStatus;

constexpr NET_ENDPOINT Host{0x7F000001, 4000};
constexpr NET_ENDPOINT Other{0x7F000001, 4001}; // another program on the same host
using Bytes = std::vector<std::uint8_t>;

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
        const auto length = static_cast<unsigned>(static_cast<int>(payload.size()) + lengthOff);
        Bytes bytes = {0x42,
                       static_cast<std::uint8_t>(flags),
                       static_cast<std::uint8_t>(code >> 8),
                       static_cast<std::uint8_t>(code),
                       static_cast<std::uint8_t>(length >> 8),
                       static_cast<std::uint8_t>(length),
                       0,
                       9};
        bytes.insert(bytes.end(), payload.begin(), payload.end());
        return bytes;
    }
    static Bytes Word(std::uint32_t value) {
        Bytes bytes(4);
        Wire::Store(bytes.data(), value);
        return bytes;
    }
    static Bytes Words(std::uint32_t a, std::uint32_t b) {
        Bytes bytes = Word(a);
        const Bytes more = Word(b);
        bytes.insert(bytes.end(), more.begin(), more.end());
        return bytes;
    }
    static std::uint16_t StatusOf(const Bytes& ack) {
        return ack.size() < Gvcp::HeaderSize ? 0xDEAD : Wire::Load<std::uint16_t>(ack.data());
    }
    std::uint16_t Write(std::uint32_t address, std::uint32_t value, const NET_ENDPOINT& sender = Host) {
        return StatusOf(Ask(Command(0x0082, Words(address, value)), sender));
    }

    RegisterFile registers;
    StreamChannels streams;
    CameraTarget target{registers, streams};
    ControlPrivilege control{true};
    GvcpAnswers answers{target, control};
    GvcpAnswers::TimePoint now{std::chrono::seconds(100)};
};

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
        {"longer than it says", Command(0x0080, Word(0), 1, -4), AckStatus::InvalidHeader},
        {"shorter than it says", Command(0x0080, Word(0), 1, 400), AckStatus::InvalidHeader},
        {"read nothing", Command(0x0080, {}), AckStatus::InvalidParameter},
        {"read two registers", Command(0x0080, Words(0, 4)), AckStatus::InvalidParameter},
        {"read unaligned", Command(0x0080, Word(2)), AckStatus::BadAlignment},
        {"read outside", Command(0x0080, Word(end)), AckStatus::InvalidAddress},
        {"read far outside", Command(0x0080, Word(0xFFFFFFFC)), AckStatus::InvalidAddress},
        {"read the last", Command(0x0080, Word(end - 4)), AckStatus::Success},
        {"write half", Command(0x0082, Word(0xB000)), AckStatus::InvalidParameter},
        {"write unaligned", Command(0x0082, Words(0xB002, 1)), AckStatus::BadAlignment},
        {"write outside", Command(0x0082, Words(end, 1)), AckStatus::InvalidAddress},
        {"write an identity", Command(0x0082, Words(Bootstrap::MacLow, 1)), AckStatus::WriteProtect},
        {"write the description", Command(0x0082, Words(CameraRegister::Description, 1)),
         AckStatus::WriteProtect},
        {"read no memory command", Command(0x0084, Word(0)), AckStatus::InvalidParameter},
        {"read too much", Command(0x0084, Words(0, 540)), AckStatus::InvalidParameter},
        {"read over the end", Command(0x0084, Words(end - 4, 8)), AckStatus::InvalidAddress},
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

TEST_F(GvcpAnswersTest, AnyBytesAreSafe) {
    std::mt19937 random(5);
    const unsigned codes[] = {0x02, 0x04, 0x40, 0x80, 0x82, 0x84, 0x86, 0x8084, 0x8086};
    ASSERT_EQ(Write(Bootstrap::ControlChannelPrivilege, 2), AckStatus::Success);
    for (int i = 0; i < 20000; ++i) {
        Bytes payload(random() % 24);
        for (std::uint8_t& byte : payload)
            byte = static_cast<std::uint8_t>(random() % 4 == 0 ? random() : 0);
        const Bytes ack = Ask(Command(codes[random() % 9], payload, random(), random() % 8 == 0 ? 3 : 0));
        EXPECT_LE(ack.size(), Gvcp::MaxPacket);
    }
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
    (void)Ask(Command(0x0080, Word(0))); // any command of its own
    (void)Ask(Command(0x0080, Word(0)), Other);
    EXPECT_EQ(pass(499), 2U);
    (void)Ask(Command(0x0080, Word(0)), Other);
    EXPECT_EQ(pass(1), 0U);
    EXPECT_EQ(Write(Bootstrap::ControlChannelPrivilege, 2, Other), AckStatus::Success);
    EXPECT_EQ(Write(Bootstrap::ControlChannelPrivilege, 0, Other), AckStatus::Success);
    EXPECT_EQ(registers.Value(Bootstrap::ControlChannelPrivilege), 0U);
}

TEST_F(GvcpAnswersTest, DiscoveryAndForceIp) {
    const Bytes ack = Ask(Command(0x0002, {}));
    ASSERT_EQ(ack.size(), Gvcp::DiscoveryAckSize);
    EXPECT_EQ(std::string(ack.begin() + 8 + Bootstrap::ModelName, ack.begin() + 8 + Bootstrap::ModelName + 9),
              "Simulated");
    Bytes request(Gvcp::ForceIpSize);
    ASSERT_EQ(Gvcp::EncodeForceIp({request.data(), request.size()},
                                  {registers.Value(Bootstrap::MacHigh), registers.Value(Bootstrap::MacLow),
                                   0x0A000002, 0xFF000000, 0x0A000001}),
              request.size());
    EXPECT_EQ(StatusOf(Ask(request)), AckStatus::Success);
    EXPECT_EQ(registers.Value(Bootstrap::CurrentIp), 0x0A000002U);
    EXPECT_EQ(registers.Value(Bootstrap::CurrentGateway), 0x0A000001U);
}

} // namespace
} // namespace Test
} // namespace VX3
