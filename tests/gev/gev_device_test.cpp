#include "gev/GevDevice.h"

#include "device/InterfaceDevAbs.h"
#include "gev/control/GvspPacketSizeTester.h"
#include "support/TestCamera.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <gtest/gtest.h>
#include <thread>

namespace VX3 {
namespace {

using namespace Test;
using namespace Simulated;
using namespace std::chrono_literals;
using Gvcp::Command;
using Clock = std::chrono::steady_clock;

class Interface : public InterfaceDevAbs {
public:
    Interface() : InterfaceDevAbs(0x10002, "test interface") {}
    ~Interface() override { Shutdown(); }
    std::list<std::shared_ptr<IDevice>> EnumSubDevices(unsigned int) override { return {}; }
    StatusCode SubDeviceLost(IDevice* device) override {
        lost = device;
        return Status::Ok;
    }
    StatusCode ConnectP() override { return Status::Ok; }
    StatusCode DisConnectP() override { return Status::Ok; }
    std::atomic<IDevice*> lost{nullptr};
};

// The device with its control channel in reach.
class OpenDevice : public GevDevice {
public:
    using GevDevice::GevDevice;
    using GevDevice::Helper;
};

CameraConfig Quick(std::uint32_t streamChannels = 1) {
    CameraConfig config;
    config.userName = "bench";
    config.streamChannels = streamChannels;
    return config;
}

class GevDeviceTest : public testing::Test {
protected:
    std::shared_ptr<OpenDevice> Find(TestCamera& camera) {
        return std::make_shared<OpenDevice>("Simulated(SC-0001)", TestCamera::HostParam(),
                                            camera.DiscoveryAck(), &interface, true, camera.GvcpPort());
    }
    static bool WaitFor(const std::function<bool()>& condition, Clock::duration timeout) {
        const auto deadline = Clock::now() + timeout;
        while (!condition() && Clock::now() < deadline)
            std::this_thread::sleep_for(5ms);
        return condition();
    }
    Interface interface;
};

TEST_F(GevDeviceTest, TellsWhatDiscoveryToldAndWhoControls) {
    TestCamera camera(Quick());
    const auto device = Find(camera);
    EXPECT_EQ(device->DeviceType(), 0x30002U);
    EXPECT_EQ(device->DeviceState(), DEVICE_STATE::Available);
    EXPECT_EQ(device->SerialNumber(), "SC-0001");
    EXPECT_EQ(device->UserName(), "bench");
    const std::string unique = device->UniqueName();
    EXPECT_EQ(unique.find("Simulated(SC-0001)@127."), 0U);
    EXPECT_EQ(unique.substr(unique.size() - 18), "-255.0.0.0-0.0.0.0");
    EXPECT_EQ(device->GetInfo().front(), (std::pair<std::string, std::string>{"Manufacture", "VX3"}));
    GevDeviceAddress address;
    EXPECT_EQ(device->GetIpAddress(&address), Status::Ok);
    EXPECT_EQ(address.ip, camera.Ip());
    EXPECT_EQ(address.macHigh, 0x0200U);
    EXPECT_EQ(address.hostIp, 0x7F000001U);
    EXPECT_EQ(device->GetIpAddress(nullptr), Status::NotFound);

    camera.SetRegister(Bootstrap::ControlChannelPrivilege, 2);
    EXPECT_EQ(Find(camera)->DeviceState(), DEVICE_STATE::Controlled);
    camera.Vanish();
    EXPECT_EQ(Find(camera)->DeviceState(), DEVICE_STATE::Unreachable);
}

TEST_F(GevDeviceTest, ConnectTakesControlAndDisconnectGivesItBackPromptly) {
    CameraConfig config = Quick();
    config.pendingTimeoutMs = 700;
    TestCamera camera(config);
    const auto device = Find(camera);
    ASSERT_EQ(device->Connect(), Status::Ok);
    EXPECT_EQ(device->DeviceState(), DEVICE_STATE::Connected);
    EXPECT_EQ(camera.Register(Bootstrap::ControlChannelPrivilege), 2U);
    EXPECT_EQ(camera.Register(Bootstrap::HeartbeatTimeout), 9000U);
    EXPECT_EQ(device->Helper()->TimeoutMs(), 700U);
    EXPECT_EQ(device->StreamCnt(), 1U);

    // The largest packet that arrived is in force, also in the camera's feature.
    EXPECT_EQ(camera.Register(Bootstrap::StreamPacketSize) & Bootstrap::PacketSizeMask, 8960U);
    EXPECT_EQ(device->GetPacketSize(), 8960U);
    ASSERT_NE(device->GetConfigurer(), nullptr);
    EXPECT_EQ(device->GetConfigurer()->GetNodeValue("GevSCPSPacketSize").AsInteger(), 8960);
    EXPECT_EQ(device->GetConfigurer()->SetNodeValue("Width", 800U), Status::Ok);
    EXPECT_EQ(camera.Register(CameraRegister::Width), 800U);

    const auto start = Clock::now();
    EXPECT_EQ(device->DisConnect(), 4);
    EXPECT_LT(Clock::now() - start, 500ms) << "waited out a heartbeat period";
    EXPECT_EQ(camera.Register(Bootstrap::ControlChannelPrivilege), 0U);
    EXPECT_EQ(device->StreamCnt(), 0U);
    EXPECT_EQ(device->DeviceState(), DEVICE_STATE::Available);
    ASSERT_EQ(device->Connect(), Status::Ok) << "and again";
}

TEST_F(GevDeviceTest, StreamChannelsAreTakenAsReportedUpToFour) {
    const std::pair<std::uint32_t, unsigned> cases[] = {{0, 0}, {3, 3}, {4, 4}, {6, 1}};
    for (const auto& [reported, expected] : cases) {
        TestCamera camera(Quick(reported));
        const auto device = Find(camera);
        ASSERT_EQ(device->Connect(), Status::Ok);
        EXPECT_EQ(device->StreamCnt(), expected) << reported;
        EXPECT_EQ(device->Helper()->TimeoutMs(), 1000U) << "no pending time-out: keeps its own";
    }
}

TEST_F(GevDeviceTest, ASecondProgramIsDeniedAndDisturbsNothing) {
    TestCamera camera(Quick());
    const auto first = Find(camera);
    const auto second = Find(camera);
    ASSERT_EQ(first->Connect(), Status::Ok);
    const StatusCode denied = Status::FromGvcp(Gvcp::AckStatus::AccessDenied);
    EXPECT_EQ(second->Connect(), denied);
    EXPECT_FALSE(second->IsConnected());
    EXPECT_EQ(second->GetStream(0), nullptr);
    EXPECT_NE(StatusText(denied).find("denied"), std::string::npos) << StatusText(denied);
    EXPECT_EQ(camera.Register(Bootstrap::HeartbeatTimeout), 9000U);
    EXPECT_EQ(first->GetConfigurer()->SetNodeValue("Gain", 7U), Status::Ok);
}

TEST_F(GevDeviceTest, PortsCarryBytesAsOnTheWire) {
    TestCamera camera(Quick());
    const auto device = Find(camera);
    ASSERT_EQ(device->Connect(), Status::Ok);
    camera.ClearSeen();
    const unsigned char four[4] = {1, 2, 3, 4};
    EXPECT_EQ(device->WritePort(CameraRegister::Scratch, four, 4), 4);
    EXPECT_EQ(camera.Register(CameraRegister::Scratch), 0x01020304U);
    unsigned char back[8] = {};
    EXPECT_EQ(device->ReadPort(CameraRegister::Scratch, back, 4), 4);
    EXPECT_EQ(std::memcmp(back, four, 4), 0);
    const unsigned char eight[8] = {8, 7, 6, 5, 4, 3, 2, 1};
    EXPECT_EQ(device->WritePort(CameraRegister::Scratch, eight, 8), 8);
    EXPECT_EQ(device->ReadPort(CameraRegister::Scratch, back, 6), 6);
    EXPECT_EQ(std::memcmp(back, eight, 6), 0);
    std::vector<Command> commands;
    for (const SeenCommand& seen : camera.Seen())
        commands.push_back(seen.command);
    EXPECT_EQ(commands, (std::vector<Command>{Command::WriteReg, Command::ReadReg, Command::WriteMem,
                                              Command::ReadMem}));
    EXPECT_LT(device->ReadPort(0x7FFFFFFF0ULL, back, 4), 0);
}

TEST_F(GevDeviceTest, StreamParametersComeFromTheCamera) {
    CameraConfig config = Quick(2);
    config.pixelFormat = 0x01100007; // Mono16
    TestCamera camera(config);
    const auto device = Find(camera);
    GevStreamParam param;
    EXPECT_EQ(device->StreamParam(1, param), Status::Ok);
    EXPECT_EQ(param.bufferSize, 0U) << "not connected: no features yet";
    ASSERT_EQ(device->Connect(), Status::Ok);
    ASSERT_EQ(device->StreamParam(1, param), Status::Ok);
    EXPECT_EQ(param.host.ip, 0x7F000001U);
    EXPECT_EQ(param.camera.ip, camera.Ip());
    EXPECT_EQ(param.camera.mask, 0xFF000000U);
    EXPECT_EQ(param.packetSize, 1500U) << "channel 1 was not tested";
    EXPECT_EQ(param.bufferSize, 640U * 480U * 2U);
    EXPECT_EQ(param.channelIndex, 1U);
    EXPECT_EQ(param.resendSupported, 1U);
    camera.AddAckRule({AckFault::ErrorStatus, Command::ReadReg, Bootstrap::CurrentIp});
    EXPECT_EQ(device->StreamParam(0, param), Status::FromGvcp(Gvcp::AckStatus::Error));

    EXPECT_EQ(device->SetStreamDest(1, 0x7F000001, 5000), 4);
    EXPECT_EQ(camera.Register(Bootstrap::StreamRegister(Bootstrap::StreamPort, 1)), 5000U);
    EXPECT_EQ(camera.Register(Bootstrap::StreamRegister(Bootstrap::StreamDestination, 1)), 0x7F000001U);
    EXPECT_EQ(device->SetStreamDest(1, 0, 0), 4);
    EXPECT_EQ(camera.Register(Bootstrap::StreamRegister(Bootstrap::StreamPort, 1)), 0U);
    camera.SetRegister(Bootstrap::StreamPacketSize, 0);
    EXPECT_EQ(device->GetPacketSize(), 1500U);
}

TEST_F(GevDeviceTest, AFailedHeartbeatMarksTheDeviceLost) {
    TestCamera camera(Quick());
    const auto device = Find(camera);
    ASSERT_EQ(device->Connect(), Status::Ok);
    camera.Return(true); // rebooted behind our back: nobody in control any more
    EXPECT_TRUE(WaitFor([&] { return device->DeviceState() == DEVICE_STATE::Lost; }, 5s));
    EXPECT_TRUE(WaitFor([&] { return interface.lost == device.get(); }, 1s));
    EXPECT_TRUE(device->IsConnected()) << "until the client lets go of it";
    camera.ClearSeen();
    EXPECT_EQ(device->SetStreamDest(0, 0x7F000001, 0), Status::Ok);
    EXPECT_TRUE(camera.Seen().empty()) << "a lost device is not written to";
    (void)device->DisConnect();
    EXPECT_EQ(device->Connect(), Status::Ok) << "found again, opened again";
    EXPECT_EQ(device->DeviceState(), DEVICE_STATE::Connected);
}

TEST_F(GevDeviceTest, ACameraThatVanishesHoldsNothingUp) {
    TestCamera camera(Quick());
    auto device = Find(camera);
    ASSERT_EQ(device->Connect(), Status::Ok);
    camera.Vanish();
    unsigned char bytes[4];
    EXPECT_EQ(device->ReadPort(CameraRegister::Width, bytes, 4), Status::TimeOut);
    const auto start = Clock::now();
    (void)device->DisConnect();
    EXPECT_LT(Clock::now() - start, 5s);
    device.reset();
    TestCamera other(Quick());
    auto dropped = Find(other);
    ASSERT_EQ(dropped->Connect(), Status::Ok);
    dropped.reset(); // without a word: control is given back all the same
    EXPECT_FALSE(other.Controlled());
}

} // namespace
} // namespace VX3
