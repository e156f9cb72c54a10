// The command client and the test of packet sizes.
#include "gev/control/GevCmdHelper.h"
#include "gev/control/GvspPacketSizeTester.h"
#include "gev/net/SocketPort.h"
#include "support/Hex.h"
#include "support/TestCamera.h"
#include "support/Threads.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <chrono>
#include <limits>
#include <numeric>
#include <thread>
#include <vector>

namespace VX3::Test {
namespace {

using namespace Simulated;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// The link is down for the first sends.
class CutPort : public SocketPort {
public:
    using SocketPort::SocketPort;
    StatusCode SendData(const void* bytes, std::size_t length) override {
        return cuts-- > 0 ? Status::Generic : SocketPort::SendData(bytes, length);
    }
    int cuts = 1;
};

constexpr std::uint32_t Localhost = 0x7F000001;
constexpr std::uint32_t TimeoutMs = 200; // an attempt

// A helper and its partner's end of the wire: what is answered lies in the helper's socket before it asks.
class GevCmdHelperTest : public testing::Test {
protected:
    GevCmdHelperTest() {
        (void)helper.ResendPacket(false, 1, 2, 3, 0); // tells the partner where to answer
        EXPECT_EQ(NextCommand().header.command, Gvcp::Command::PacketResend);
    }
    void Answer(const char* hex) {
        const Bytes packet = FromHex(hex);
        ASSERT_EQ(partner.SendData(packet.data(), packet.size()), static_cast<StatusCode>(packet.size()));
    }
    void AnswerMemory(std::uint16_t id, std::uint64_t address, std::size_t count) {
        Bytes data(count);
        std::iota(data.begin(), data.end(), static_cast<std::uint8_t>(address));
        const std::size_t size =
            Gvcp::EncodeReadMemAck({received, sizeof(received)}, false, id, {address, {data.data(), count}});
        ASSERT_EQ(partner.SendData(received, size), static_cast<StatusCode>(size));
    }
    // Fails with a header of zeros when there is none.
    Gvcp::CommandPacket NextCommand() {
        Gvcp::CommandPacket packet;
        const StatusCode size = partner.RecvData(received, sizeof(received), 2000);
        EXPECT_TRUE(size > 0 && Gvcp::DecodeCommand({received, static_cast<std::size_t>(size)}, packet));
        return packet;
    }

    SocketPort partner{0, 0, Localhost, 0};
    std::uint8_t received[Gvcp::MaxPacket];
    SocketPort* port =
        new SocketPort(Localhost, partner.GetLocalEndPoint().port, Localhost, 0); // the helper's
    std::atomic<std::uint16_t> counter{0xFFFF};
    GevCmdHelper helper{std::unique_ptr<ICommPort>(port), TimeoutMs, counter};
};

TEST(GevCmdHelper, ALinkThatIsDownIsTriedAgainLikeSilence) {
    TestCamera camera;
    std::atomic<std::uint16_t> counter{1};
    auto port = std::make_unique<CutPort>(camera.Ip(), camera.GvcpPort(), Localhost, 0);
    CutPort& cut = *port;
    GevCmdHelper helper(std::move(port), TimeoutMs, counter);
    std::uint32_t value = 0;
    const auto start = Clock::now();
    EXPECT_EQ(helper.ReadRegister(CameraRegister::Width, value), 4);
    EXPECT_GE(Clock::now() - start, milliseconds(TimeoutMs - 5)) << "no sooner than after a lost packet";
    EXPECT_EQ(value, 640U);
    cut.cuts = 2;
    EXPECT_EQ(helper.ReadRegister(CameraRegister::Width, value), Status::TimeOut);
}

TEST_F(GevCmdHelperTest, EveryAnswerUsesItsIdUpAndHasItsCode) {
    std::uint32_t value = 0;
    Answer("00000081 0004ffff 0000002a");
    EXPECT_EQ(helper.ReadRegister(1, value), 4);
    EXPECT_EQ(value, 42U);
    EXPECT_EQ(counter, 1) << "0 is never used";
    Answer("80070081 00000001");
    EXPECT_EQ(helper.ReadRegister(1, value), Status::FromGvcp(Gvcp::AckStatus::Busy));
    Answer("00000083 00040002 00000000");
    EXPECT_EQ(helper.WriteRegister(1, 1), Status::IncompleteWrite);
    Answer("00000081 00040003");
    EXPECT_EQ(helper.ReadRegister(1, value), Status::Malformed);
    EXPECT_EQ(value, 42U);
    EXPECT_EQ(counter, 4);

    EXPECT_EQ(helper.ReadMemory(0, received, std::size_t{1} << 32, true), Status::NotFound);
    EXPECT_EQ(helper.ReadMemory(0, received, 0, true), 0);
    for (int i = 0; i < 4; ++i)
        (void)NextCommand();
    const auto start = Clock::now();
    EXPECT_EQ(helper.ReadRegister(1, value), Status::TimeOut);
    EXPECT_GE(Clock::now() - start, milliseconds(2 * TimeoutMs - 5));
    EXPECT_LT(Clock::now() - start, milliseconds(2 * TimeoutMs + 1000));
    EXPECT_EQ(NextCommand().header.reqId, 4);
    EXPECT_EQ(NextCommand().header.reqId, 4);
    EXPECT_EQ(counter, 4) << "silence keeps it";

    helper.LimitTotal(100);
    const auto limited = Clock::now();
    EXPECT_EQ(helper.ReadRegister(1, value), Status::TimeOut);
    EXPECT_EQ(helper.ReadRegister(1, value), Status::TimeOut);
    EXPECT_LT(Clock::now() - limited, milliseconds(3 * TimeoutMs / 2)) << "both together";
    EXPECT_EQ(NextCommand().header.reqId, 4) << "sent all the same";

    port->Close();
    EXPECT_EQ(helper.ReadRegister(1, value), Status::PortNotOpen);
    EXPECT_EQ(helper.ResendPacket(true, 1, 2, 3, 0), Status::PortNotOpen);
}

TEST_F(GevCmdHelperTest, ReadsInChunksAndStopsAtARefusal) {
    std::vector<std::uint8_t> memory(1304, 0xEE);
    counter = 1;
    AnswerMemory(1, 0x100, 512);
    AnswerMemory(2, 0x300, 512);
    AnswerMemory(3, 0x500, 276);
    EXPECT_EQ(helper.ReadMemory(0x100, memory.data(), 1298, true), 1298);
    for (std::size_t i = 0; i < memory.size(); ++i)
        ASSERT_EQ(memory[i], i < 1298 ? static_cast<std::uint8_t>(i) : 0xEE) << i;
    for (const std::uint16_t count : {512, 512, 276}) {
        Gvcp::MemoryRequest request;
        EXPECT_TRUE(Gvcp::DecodeReadMem(NextCommand().payload, false, request));
        EXPECT_EQ(request.count, count) << "the last one in whole words";
    }
    AnswerMemory(4, 0x200, 512);
    Answer("80070085 00000005");
    EXPECT_EQ(helper.ReadMemory(0x200, memory.data() + 1, 1300, false),
              Status::FromGvcp(Gvcp::AckStatus::Busy));
    EXPECT_EQ(memory[512], 0xFF) << "what came before the refusal stays";
    EXPECT_EQ(memory[513], 0x01) << "and nothing else is written";
    EXPECT_EQ(counter, 6);
}

TEST_F(GevCmdHelperTest, CommandsOfTheCallersOwn) {
    const Bytes command = FromHex("42010080 0004ffff 00000001");
    std::uint8_t ack[32];
    Answer("00000081 0004ffff 0000002a");
    EXPECT_EQ(
        helper.TransceiveData({command.data(), command.size()}, 4, Gvcp::Ack::ReadReg, {ack, sizeof(ack)}),
        12);
    EXPECT_EQ(ack[11], 42);
    EXPECT_EQ(NextCommand().header.length, 4);
    Answer("00000081 00040001 0000002b");
    EXPECT_EQ(helper.ReceiveData({ack, sizeof(ack)}, 4, Gvcp::Ack::ReadReg), 12);
    EXPECT_EQ(ack[11], 43);
    EXPECT_EQ(helper.ReceiveData({ack, sizeof(ack)}, 4, Gvcp::Ack::ReadReg), Status::TimeOut);
    EXPECT_EQ(counter, 2);
    EXPECT_EQ(partner.RecvData(ack, sizeof(ack), 1), Status::TimeOut) << "nothing more was sent";
}

TEST_F(GevCmdHelperTest, PendingTimeIsWaitedForAndInterruptionEndsEveryWait) {
    std::uint32_t value = 0;
    Answer("00000089 00040063 0000ffff"); // five seconds of these are granted, but for the interruption
    std::thread waitsForTheAnswer([&] { EXPECT_EQ(helper.ReadRegister(1, value), Status::WrongState); });
    EXPECT_EQ(NextCommand().header.reqId, 0xFFFF);
    std::thread waitsForItsTurn([&] {
        std::uint8_t bytes[2000];
        EXPECT_EQ(helper.ReadMemory(1, bytes, sizeof(bytes), true), Status::WrongState);
    });
    std::this_thread::sleep_for(milliseconds(3 * TimeoutMs)); // longer than any attempt
    const auto start = Clock::now();
    helper.Interrupt();
    helper.Resume();
    waitsForTheAnswer.join();
    waitsForItsTurn.join();
    EXPECT_LT(Clock::now() - start, milliseconds(1000));
    EXPECT_EQ(counter, 1) << "one was sent, and its id names nothing else";

    helper.Interrupt();
    helper.Interrupt();
    EXPECT_EQ(helper.WriteRegister(1, 1), Status::WrongState);
    helper.Resume();
    helper.Resume();
    Answer("00000089 00040001 00007530");
    Answer("00000081 00040001 0000002c");
    EXPECT_EQ(helper.ReadRegister(1, value), 4);
    EXPECT_EQ(value, 44U);
}

class GevCameraTest : public testing::Test {
protected:
    TestCamera camera;
    std::atomic<std::uint16_t> counter{1};
    GevCmdHelper helper{TestCamera::HostParam(), camera.CameraParam(), 1000, counter, camera.GvcpPort()};
};

TEST_F(GevCameraTest, ManyThreadsShareOneConversation) {
    ASSERT_EQ(helper.WriteRegister(Bootstrap::ControlChannelPrivilege, 2), 4);
    OnThreads(4, [&](unsigned int thread) {
        const std::uint64_t address = CameraRegister::Scratch + 1024 * thread;
        Bytes data(701), back(701), backEx(701);
        std::iota(data.begin(), data.end(), static_cast<std::uint8_t>(37 * thread));
        for (int i = 0; i < 25; ++i) {
            EXPECT_EQ(helper.WriteMemory(address, data.data(), 701), 701);
            EXPECT_EQ(helper.ReadMemoryEx(address, backEx.data(), 701, true), 701);
            EXPECT_EQ(helper.WriteMemoryEx(address, data.data(), 701), 701);
            EXPECT_EQ(helper.ReadMemory(address, back.data(), 701, true), 701);
            EXPECT_TRUE(std::exchange(back, Bytes(701)) == data && std::exchange(backEx, Bytes(701)) == data);
            EXPECT_EQ(helper.ResendPacket(false, 1, 1, 1, 0), 20);
        }
    });
}

TEST_F(GevCameraTest, DiscoveryFindsItByItsAddressAndEndsInSilence) {
    camera.AddAckRule({AckFault::CutShort, Gvcp::Command::Discovery});
    EXPECT_TRUE(helper.Discovery().empty()) << "254 bytes are no discovery acknowledgement";
    camera.AddAckRule({AckFault::Twice, Gvcp::Command::Discovery});
    const auto start = Clock::now();
    const auto acks = helper.Discovery();
    EXPECT_GE(Clock::now() - start, milliseconds(990));
    ASSERT_EQ(acks.size(), 2U);
    GevDiscoveryInfo info;
    ASSERT_TRUE(DecodeDiscoveryAck(acks[0], info));
    EXPECT_EQ(info.modelName, "Simulated");
    EXPECT_EQ(info.currentIp, camera.Ip());
    EXPECT_EQ(counter, 1);
    EXPECT_EQ(camera.Seen()[0].reqId, 0xFFFF);
}

TEST_F(GevCameraTest, ForceIpReachesTheCameraWithThatMac) {
    const GevDiscoveryInfo info = camera.DiscoveryInfo();
    const auto force = [&](std::uint32_t macHigh) {
        return helper.ForceIp(htonl(0x0A000002), htonl(0xFF000000), htonl(0x0A000001), htonl(info.macLow),
                              macHigh);
    };
    EXPECT_EQ(force(0), Status::TimeOut);
    EXPECT_EQ(force(htonl(info.macHigh)), Status::Ok);
    EXPECT_EQ(camera.Register(Bootstrap::CurrentIp), 0x0A000002U);
    EXPECT_EQ(camera.Register(Bootstrap::CurrentGateway), 0x0A000001U);
}

struct Trial {
    std::int64_t size = 0;
    std::vector<std::uint32_t> tried; // packet sizes fired
    std::uint32_t finalSize = 0;
    std::uint32_t port = 0;
    std::uint32_t destination = 0;
};

Trial RunTest(const CameraConfig& config, std::int64_t max, std::int64_t min, std::int64_t inc) {
    TestCamera camera(config);
    std::atomic<std::uint16_t> counter{1};
    GevCmdHelper helper(TestCamera::HostParam(), camera.CameraParam(), 500, counter, camera.GvcpPort());
    (void)helper.WriteRegister(Bootstrap::ControlChannelPrivilege, 2);
    camera.ClearSeen();
    Trial trial;
    trial.size =
        GvspPacketSizeTester::TestPacketSize(helper, camera.Ip(), TestCamera::HostParam().ip, max, min, inc);
    for (const SeenCommand& seen : camera.Seen())
        if (seen.address == Bootstrap::StreamPacketSize && (seen.value & Bootstrap::FireTestPacket) != 0)
            trial.tried.push_back(seen.value & Bootstrap::PacketSizeMask);
    trial.finalSize = camera.Register(Bootstrap::StreamPacketSize);
    trial.port = camera.Register(Bootstrap::StreamPort);
    trial.destination = camera.Register(Bootstrap::StreamDestination);
    return trial;
}

TEST(GvspPacketSizeTester, RoundsDownOntoTheGrid) {
    EXPECT_EQ(GvspPacketSizeTester::GetValidPacketSize(8960, 576, 0), 8960);
    EXPECT_EQ(GvspPacketSizeTester::GetValidPacketSize(8963, 576, 4), 8960);
    EXPECT_EQ(GvspPacketSizeTester::GetValidPacketSize(1500, 220, 500), 1220);
    // Limits out of a broken description.
    (void)GvspPacketSizeTester::GetValidPacketSize(1500, std::numeric_limits<std::int64_t>::min(), -1);
    (void)GvspPacketSizeTester::GetValidPacketSize(1500, 0, std::numeric_limits<std::int64_t>::min());
}

TEST(GvspPacketSizeTester, SmallLimitsNeedNoTraffic) {
    const Trial small = RunTest({}, 1400, 576, 4);
    EXPECT_EQ(small.size, 1400);
    EXPECT_EQ(RunTest({}, 1999, 577, 4).size, 1497);
    EXPECT_EQ(RunTest({}, 1500, 577, 4).size, 1497) << "on the grid";
    EXPECT_TRUE(small.tried.empty());
}

TEST(GvspPacketSizeTester, TakesTheLargestThatArrivesAndDisablesTheChannel) {
    CameraConfig config;
    config.largestTestPacket = 7000;
    const Trial trial = RunTest(config, 9000, 576, 4);
    EXPECT_EQ(trial.size, 6960);
    EXPECT_EQ(trial.tried, (std::vector<std::uint32_t>{8960, 7960, 6960, 5960, 4960, 3960, 2960, 1960}))
        << "once the first is lost, all others are fired at once";
    EXPECT_EQ(trial.finalSize, 6960U | Bootstrap::DoNotFragment);
    EXPECT_EQ(trial.port, 0U);
    EXPECT_EQ(trial.destination, 0U);
    EXPECT_EQ(RunTest({}, 8000, 576, 4).tried, (std::vector<std::uint32_t>{7960}));
    EXPECT_EQ(RunTest({}, 8960, 576, 4).size, 8960) << "the limits themselves are tried";
    EXPECT_EQ(RunTest({}, 2000, 1960, 4).size, 1960);
}

TEST(GvspPacketSizeTester, ACameraWithoutTestPacketsGetsTheEthernetSize) {
    CameraConfig config;
    config.sendsTestPackets = false;
    const auto start = std::chrono::steady_clock::now();
    const Trial trial = RunTest(config, 9000, 576, 8);
    EXPECT_EQ(trial.size, 1496);
    EXPECT_EQ(trial.tried.size(), 8U);
    EXPECT_LT(Clock::now() - start, milliseconds(900)) << "two waits of 200 ms";
}

} // namespace
} // namespace VX3::Test
