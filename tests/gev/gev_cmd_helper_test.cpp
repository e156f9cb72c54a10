#include "gev/control/GevCmdHelper.h"

#include "support/ScriptedCamera.h"

#include <arpa/inet.h>
#include <chrono>
#include <cstring>
#include <gtest/gtest.h>
#include <numeric>
#include <thread>
#include <vector>

namespace VX3 {
namespace {

using namespace Test;
using Gvcp::Command;
using Clock = std::chrono::steady_clock;

constexpr std::uint32_t quick = 200; // ms an attempt

class GevCmdHelperTest : public testing::Test {
protected:
    GevCmdHelperTest() { TakeControl(); }
    void TakeControl() {
        ASSERT_EQ(helper.WriteRegister(Bootstrap::ControlChannelPrivilege, 2), 4);
        camera.ClearSeen();
        counter = 1;
    }
    std::vector<SeenCommand> Seen() { return camera.Seen(); }

    ScriptedCamera camera;
    std::atomic<std::uint16_t> counter{1};
    GevCmdHelper helper{ScriptedCamera::HostParam(), camera.CameraParam(), quick, counter, camera.GvcpPort()};
};

TEST_F(GevCmdHelperTest, RegistersAndTheirRequestIds) {
    std::uint32_t value = 0;
    EXPECT_EQ(helper.ReadRegister(Bootstrap::HeartbeatTimeout, value), 4);
    EXPECT_EQ(value, 3000U);
    EXPECT_EQ(helper.WriteRegister(Bootstrap::HeartbeatTimeout, 9000), 4);
    EXPECT_EQ(camera.Register(Bootstrap::HeartbeatTimeout), 9000U);
    EXPECT_EQ(counter, 3);
    counter = 0xFFFF;
    EXPECT_EQ(helper.ReadRegister(0xFFFF00000000ULL | Bootstrap::HeartbeatTimeout, value), 4)
        << "low 32 bits travel";
    EXPECT_EQ(counter, 1) << "0 is never used";
    const auto seen = Seen();
    ASSERT_EQ(seen.size(), 3U);
    EXPECT_EQ(seen[0].header.reqId, 1);
    EXPECT_EQ(seen[1].header.reqId, 2);
    EXPECT_EQ(seen[2].header.reqId, 0xFFFF);
    EXPECT_EQ(seen[2].address, Bootstrap::HeartbeatTimeout);
}

TEST_F(GevCmdHelperTest, MemoryTravelsInChunks) {
    std::vector<std::uint8_t> data(1301);
    std::iota(data.begin(), data.end(), std::uint8_t{3});
    EXPECT_EQ(helper.WriteMemory(ScriptedAddress::Scratch, data.data(), data.size()), 1301);
    std::vector<std::uint8_t> back(1304, 0xEE);
    EXPECT_EQ(helper.ReadMemory(ScriptedAddress::Scratch, back.data(), 1300, true), 1300);
    EXPECT_TRUE(std::equal(data.begin(), data.begin() + 1300, back.begin()));
    EXPECT_EQ(back[1300], 0xEE) << "copied past what was asked";
    auto seen = Seen();
    ASSERT_EQ(seen.size(), 6U);
    EXPECT_EQ(seen[2].data.size(), 280U) << "277 bytes padded to whole words";
    EXPECT_EQ(seen[2].data[277], 0);
    EXPECT_EQ(seen[3].value, 512U);
    EXPECT_EQ(seen[5].value, 276U);
    EXPECT_EQ(seen[5].address, ScriptedAddress::Scratch + 1024U);

    camera.ClearSeen();
    std::uint8_t six[8] = {};
    EXPECT_EQ(helper.ReadMemory(ScriptedAddress::Scratch, six, 6, true), 6);
    EXPECT_EQ(helper.ReadMemory(ScriptedAddress::Scratch, six, 6, false), 6);
    EXPECT_EQ(helper.ReadMemoryEx(ScriptedAddress::Scratch, six, 6, true), 6);
    EXPECT_EQ(six[5], data[5]);
    EXPECT_EQ(six[6], 0);
    EXPECT_EQ(helper.WriteMemoryEx(ScriptedAddress::Scratch + 1, data.data(), 5), 5);
    EXPECT_EQ(helper.ReadMemory(0, six, 0, true), 0) << "nothing to do, nothing sent";
    seen = Seen();
    ASSERT_EQ(seen.size(), 4U);
    EXPECT_EQ(seen[0].value, 8U);
    EXPECT_EQ(seen[1].value, 6U);
    EXPECT_EQ(seen[2].header.command, Command::ReadMemEx);
    EXPECT_EQ(seen[2].header.length, 12);
    EXPECT_EQ(seen[3].header.length, 16);
}

TEST_F(GevCmdHelperTest, OneRetryWithTheSameIdThenTimeOut) {
    camera.AddAckRule({AckFault::Silence, Command::ReadReg});
    std::uint32_t value = 0;
    EXPECT_EQ(helper.ReadRegister(Bootstrap::HeartbeatTimeout, value), 4);
    ASSERT_EQ(Seen().size(), 2U);
    EXPECT_EQ(Seen()[0].header.reqId, Seen()[1].header.reqId);

    camera.ClearSeen();
    const std::uint16_t before = counter;
    camera.AddAckRule({AckFault::Silence, Command::ReadReg, {}, 0, 2});
    const auto start = Clock::now();
    EXPECT_EQ(helper.ReadRegister(Bootstrap::HeartbeatTimeout, value), Status::TimeOut);
    const auto elapsed = Clock::now() - start;
    EXPECT_GE(elapsed, std::chrono::milliseconds(2 * quick - 5));
    EXPECT_LT(elapsed, std::chrono::milliseconds(2 * quick + 300));
    EXPECT_EQ(Seen().size(), 2U);
    EXPECT_EQ(counter, before);
    EXPECT_EQ(helper.ReadRegister(Bootstrap::HeartbeatTimeout, value), 4) << "the conversation goes on";
}

TEST_F(GevCmdHelperTest, RefusalsAndWrongAnswersEndAtOnce) {
    struct Case {
        AckFault fault;
        StatusCode read, memory, write;
    };
    const StatusCode busy = Status::FromGvcp(Gvcp::AckStatus::Busy);
    const Case cases[] = {
        {AckFault::ErrorStatus, busy, busy, busy},
        {AckFault::WrongLength, Status::Malformed, Status::Malformed, Status::Malformed},
        {AckFault::CutShort, Status::Malformed, Status::Malformed, Status::Malformed},
        {AckFault::WrongAddress, 4, Status::Malformed, Status::IncompleteWrite},
        {AckFault::IncompleteIndex, 4, Status::Malformed, Status::IncompleteWrite},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(static_cast<int>(c.fault));
        const auto rule = [&](Command command) {
            AckRule r{c.fault, command};
            r.status = Gvcp::AckStatus::Busy;
            camera.AddAckRule(r);
        };
        std::uint32_t value = 0;
        std::uint8_t bytes[8];
        rule(Command::ReadReg);
        EXPECT_EQ(helper.ReadRegister(Bootstrap::HeartbeatTimeout, value), c.read);
        rule(Command::ReadMem);
        EXPECT_EQ(helper.ReadMemory(ScriptedAddress::Scratch, bytes, 8, true), c.memory);
        rule(Command::WriteReg);
        EXPECT_EQ(helper.WriteRegister(ScriptedAddress::Gain, 1), c.write);
    }
    EXPECT_EQ(Seen().size(), 15U) << "none of these is asked again";

    camera.AddAckRule({AckFault::IncompleteIndex, Command::WriteMem});
    const std::uint8_t five[5] = {};
    EXPECT_EQ(helper.WriteMemory(ScriptedAddress::Scratch, five, 5), Status::IncompleteWrite);
    EXPECT_EQ(helper.WriteMemory(ScriptedAddress::Description, five, 5),
              Status::FromGvcp(Gvcp::AckStatus::InvalidAddress));
}

TEST_F(GevCmdHelperTest, OthersAcknowledgementsAreIgnored) {
    std::uint32_t value = 0;
    for (const AckFault fault :
         {AckFault::StaleFirst, AckFault::ForeignFirst, AckFault::Twice, AckFault::StaleFirst}) {
        camera.AddAckRule({fault, Command::ReadReg});
        value = 0;
        EXPECT_EQ(helper.ReadRegister(Bootstrap::HeartbeatTimeout, value), 4);
        EXPECT_EQ(value, 3000U);
    }
    EXPECT_EQ(Seen().size(), 4U);
    camera.AddAckRule({AckFault::WrongCode, Command::ReadReg});
    EXPECT_EQ(helper.ReadRegister(Bootstrap::HeartbeatTimeout, value), 4);
    EXPECT_EQ(Seen().size(), 6U) << "an answer to something else is none: asked again after the time-out";
}

TEST_F(GevCmdHelperTest, PendingAcknowledgementExtendsTheWait) {
    std::uint32_t value = 0;
    AckRule rule{AckFault::PendingFirst, Command::ReadReg};
    rule.ms = 2000;
    rule.delayMs = 3 * quick;
    camera.AddAckRule(rule);
    EXPECT_EQ(helper.ReadRegister(Bootstrap::HeartbeatTimeout, value), 4);
    EXPECT_EQ(value, 3000U);
    EXPECT_EQ(Seen().size(), 1U);

    rule.ms = 100; // announced less than it takes
    rule.delayMs = 900;
    camera.AddAckRule(rule);
    const auto start = Clock::now();
    const std::uint16_t before = counter;
    EXPECT_EQ(helper.ReadRegister(Bootstrap::HeartbeatTimeout, value), Status::TimeOut);
    EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(800));
    EXPECT_EQ(counter, before);
}

TEST_F(GevCmdHelperTest, ASecondControllerIsDenied) {
    std::atomic<std::uint16_t> otherCounter{1};
    GevCmdHelper second(ScriptedCamera::HostParam(), camera.CameraParam(), quick, otherCounter,
                        camera.GvcpPort());
    const StatusCode denied = Status::FromGvcp(Gvcp::AckStatus::AccessDenied);
    EXPECT_EQ(second.WriteRegister(Bootstrap::ControlChannelPrivilege, 2), denied);
    EXPECT_EQ(second.WriteRegister(ScriptedAddress::Gain, 1), denied);
    EXPECT_EQ(otherCounter, 1) << "a refused exchange leaves the id";
    std::uint32_t value = 0;
    EXPECT_EQ(second.ReadRegister(Bootstrap::ControlChannelPrivilege, value), 4);
    EXPECT_EQ(value, 2U);
}

TEST_F(GevCmdHelperTest, ResendRequestsAreSentAndForgotten) {
    EXPECT_EQ(helper.ResendPacket(false, 0x1FFFF, 3, 0xFFFFFFFF, 0), 20);
    EXPECT_EQ(helper.ResendPacket(true, 0x1FFFF, 3, 0xFFFFFFFF, 0), 28);
    EXPECT_EQ(counter, 1);
    std::uint32_t value = 0;
    EXPECT_EQ(helper.ReadRegister(Bootstrap::HeartbeatTimeout, value), 4); // both have arrived before this
    const auto seen = Seen();
    ASSERT_EQ(seen.size(), 3U);
    EXPECT_EQ(seen[0].header.flags, 0x00);
    EXPECT_EQ(seen[1].header.flags, 0x10);
    EXPECT_EQ(seen[1].header.length, 20);
}

TEST_F(GevCmdHelperTest, ManyThreadsShareOneConversation) {
    std::vector<std::thread> threads;
    std::atomic<int> failures{0};
    for (std::uint32_t t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            const std::uint64_t address = ScriptedAddress::Scratch + 1024 * t;
            std::vector<std::uint8_t> data(700, static_cast<std::uint8_t>(t + 1));
            for (int i = 0; i < 50; ++i) {
                std::vector<std::uint8_t> back(700);
                const bool ok = helper.WriteMemory(address, data.data(), 700) == 700 &&
                                helper.ReadMemory(address, back.data(), 700, true) == 700 && back == data &&
                                helper.ResendPacket(false, 1, 1, 1, 0) == 20;
                failures += ok ? 0 : 1;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(failures, 0);
}

TEST(GevDiscovery, FindsACameraByItsAddressAndEndsInSilence) {
    ScriptedCamera camera;
    std::atomic<std::uint16_t> counter{1};
    GevCmdHelper helper(ScriptedCamera::HostParam(), camera.CameraParam(), 1000, counter, camera.GvcpPort());
    camera.AddAckRule({AckFault::CutShort, Command::Discovery});
    EXPECT_TRUE(helper.Discovery().empty()) << "254 bytes are no discovery acknowledgement";
    camera.AddAckRule({AckFault::Twice, Command::Discovery});
    const auto start = Clock::now();
    const auto acks = helper.Discovery();
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(990));
    ASSERT_EQ(acks.size(), 2U);
    GevDiscoveryInfo info;
    ASSERT_TRUE(DecodeDiscoveryAck(acks[0], info));
    EXPECT_EQ(info.modelName, "Scripted");
    EXPECT_EQ(info.currentIp, camera.Ip());
    EXPECT_EQ(counter, 1);
    EXPECT_EQ(camera.Seen()[0].header.reqId, 0xFFFF);
}

TEST(GevDiscovery, ForceIpReachesTheCameraWithThatMac) {
    ScriptedCamera camera;
    std::atomic<std::uint16_t> counter{1};
    GevCmdHelper helper(ScriptedCamera::HostParam(), camera.CameraParam(), 1000, counter, camera.GvcpPort());
    const GevDiscoveryInfo info = camera.DiscoveryInfo();
    EXPECT_EQ(helper.ForceIp(htonl(0x0A000002), htonl(0xFF000000), htonl(0x0A000001), htonl(info.macLow), 0),
              Status::TimeOut);
    EXPECT_EQ(helper.ForceIp(htonl(0x0A000002), htonl(0xFF000000), htonl(0x0A000001), htonl(info.macLow),
                             htonl(info.macHigh)),
              Status::Ok);
    EXPECT_EQ(camera.Register(Bootstrap::CurrentIp), 0x0A000002U);
    EXPECT_EQ(camera.Register(Bootstrap::CurrentGateway), 0x0A000001U);
}

} // namespace
} // namespace VX3
