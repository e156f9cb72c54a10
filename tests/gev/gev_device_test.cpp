#include "gev/GevDevice.h"
#include "gev/control/GvspPacketSizeTester.h"
#include "support/FakeDevice.h"
#include "support/TestCamera.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <thread>

namespace VX3::Test {
namespace {

using namespace Simulated;
using namespace std::chrono_literals;
using Gvcp::Command;
using Clock = std::chrono::steady_clock;

class Interface : public FakeInterface {
public:
    StatusCode SubDeviceLost(IDevice* device) override {
        lost = device;
        return Status::Ok;
    }
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
    std::shared_ptr<OpenDevice> Find() {
        return std::make_shared<OpenDevice>("Simulated(SC-0001)", TestCamera::HostParam(),
                                            camera->DiscoveryAck(), &interface, true, camera->GvcpPort());
    }
    // Another camera in place of the one there was.
    void Replace(const CameraConfig& config) {
        device.reset();
        camera = std::make_unique<TestCamera>(config);
        device = Find();
    }
    void Connect() { ASSERT_EQ(device->Connect(), Status::Ok); }

    Interface interface;
    std::unique_ptr<TestCamera> camera = std::make_unique<TestCamera>(Quick());
    std::shared_ptr<OpenDevice> device = Find();
};

TEST_F(GevDeviceTest, TellsWhatDiscoveryToldAndAsksNothing) {
    EXPECT_EQ(device->DeviceType(), 0x30002U);
    EXPECT_EQ(device->DeviceState(), DEVICE_STATE::Unknown);
    EXPECT_EQ(device->SerialNumber(), "SC-0001");
    EXPECT_EQ(device->UserName(), "bench");
    const std::string unique = device->UniqueName();
    EXPECT_EQ(unique.find("Simulated(SC-0001)@127."), 0U);
    EXPECT_EQ(unique.substr(unique.size() - 18), "-255.0.0.0-0.0.0.0");
    EXPECT_EQ(device->GetInfo().front(), (std::pair<std::string, std::string>{"Manufacture", "VX3"}));
    GevDeviceAddress address;
    EXPECT_EQ(device->GetIpAddress(&address), Status::Ok);
    EXPECT_EQ(std::tuple(address.ip, address.macHigh, address.hostIp),
              std::tuple(camera->Ip(), 0x0200U, 0x7F000001U));
    EXPECT_EQ(device->GetIpAddress(nullptr), Status::NotFound);

    unsigned char bytes[4];
    EXPECT_EQ(device->ReadPort(CameraRegister::Width, bytes, 4), Status::NotConnected);
    EXPECT_EQ(device->WritePort(CameraRegister::Width, bytes, 4), Status::NotConnected);
    GevStreamParam param;
    EXPECT_EQ(device->StreamParam(0, param), Status::NotConnected);
    EXPECT_EQ(device->SetStreamDest(0, 0x7F000001, 5000), Status::NotConnected);
    EXPECT_EQ(device->GetPacketSize(), 1500U);
    EXPECT_TRUE(camera->Seen().empty());
}

TEST_F(GevDeviceTest, ConnectTakesControlAndDisconnectGivesItBackPromptly) {
    CameraConfig config = Quick();
    config.pendingTimeoutMs = 700;
    Replace(config);
    Connect();
    EXPECT_EQ(device->DeviceState(), DEVICE_STATE::Connected);
    EXPECT_EQ(camera->Register(Bootstrap::ControlChannelPrivilege), 2U);
    EXPECT_EQ(camera->Register(Bootstrap::HeartbeatTimeout), 9000U);
    EXPECT_EQ(device->Helper()->TimeoutMs(), 700U);
    EXPECT_EQ(device->StreamCnt(), 1U);

    // The largest packet that arrived is in force, also in the camera's feature.
    EXPECT_EQ(camera->Register(Bootstrap::StreamPacketSize) & Bootstrap::PacketSizeMask, 8960U);
    EXPECT_EQ(device->GetPacketSize(), 8960U);
    ASSERT_NE(device->GetConfigurer(), nullptr);
    EXPECT_EQ(device->GetConfigurer()->GetNodeValue("GevSCPSPacketSize").AsInteger(), 8960);
    EXPECT_EQ(device->GetConfigurer()->SetNodeValue("Width", 800U), Status::Ok);
    EXPECT_EQ(camera->Register(CameraRegister::Width), 800U);

    const auto start = Clock::now();
    const auto held = device->ShareStream(0);
    EXPECT_EQ(device->DisConnect(), Status::Ok);
    EXPECT_LT(Clock::now() - start, 500ms) << "waited out a heartbeat period";
    EXPECT_EQ(held->Open(1, nullptr), Status::NotConnected) << "a stream of that connection";
    EXPECT_EQ(camera->Register(Bootstrap::ControlChannelPrivilege), 0U);
    EXPECT_EQ(device->StreamCnt(), 0U);
    EXPECT_EQ(device->DeviceState(), DEVICE_STATE::Available);
    ASSERT_EQ(device->Connect(), Status::Ok) << "and again";
}

TEST_F(GevDeviceTest, StreamChannelsAreTakenAsReportedUpToFour) {
    const std::pair<std::uint32_t, unsigned> cases[] = {{0, 0}, {3, 3}, {4, 4}, {6, 1}};
    for (const auto& [reported, expected] : cases) {
        Replace(Quick(reported));
        Connect();
        EXPECT_EQ(device->StreamCnt(), expected) << reported;
        EXPECT_EQ(device->Helper()->TimeoutMs(), 1000U) << "no pending time-out: keeps its own";
    }
}

TEST_F(GevDeviceTest, ASecondProgramIsDeniedAndDisturbsNothing) {
    const auto second = Find();
    Connect();
    const StatusCode denied = Status::FromGvcp(Gvcp::AckStatus::AccessDenied);
    EXPECT_EQ(second->Connect(), denied);
    EXPECT_FALSE(second->IsConnected());
    EXPECT_EQ(second->GetStream(0), nullptr);
    EXPECT_NE(StatusText(denied).find("denied"), std::string::npos) << StatusText(denied);
    EXPECT_EQ(camera->Register(Bootstrap::HeartbeatTimeout), 9000U);
    EXPECT_EQ(device->GetConfigurer()->SetNodeValue("Gain", 7U), Status::Ok);
}

TEST_F(GevDeviceTest, PortsCarryBytesAsOnTheWire) {
    Connect();
    camera->ClearSeen();
    const unsigned char four[4] = {1, 2, 3, 4};
    EXPECT_EQ(device->WritePort(CameraRegister::Scratch, four, 4), 4);
    EXPECT_EQ(camera->Register(CameraRegister::Scratch), 0x01020304U);
    unsigned char back[8] = {};
    EXPECT_EQ(device->ReadPort(CameraRegister::Scratch, back, 4), 4);
    EXPECT_EQ(std::memcmp(back, four, 4), 0);
    const unsigned char eight[8] = {8, 7, 6, 5, 4, 3, 2, 1};
    EXPECT_EQ(device->WritePort(CameraRegister::Scratch, eight, 8), 8);
    EXPECT_EQ(device->ReadPort(CameraRegister::Scratch, back, 6), 6);
    EXPECT_EQ(std::memcmp(back, eight, 6), 0);
    std::vector<Command> commands;
    for (const SeenCommand& seen : camera->Seen())
        commands.push_back(seen.command);
    EXPECT_EQ(commands, (std::vector<Command>{Command::WriteReg, Command::ReadReg, Command::WriteMem,
                                              Command::ReadMem}));
    EXPECT_LT(device->ReadPort(0x7FFFFFFF0ULL, back, 4), 0);
}

TEST_F(GevDeviceTest, StreamParametersComeFromTheCamera) {
    CameraConfig config = Quick(2);
    config.pixelFormat = 0x01100007; // Mono16
    Replace(config);
    Connect();
    GevStreamParam param;
    ASSERT_EQ(device->StreamParam(1, param), Status::Ok);
    EXPECT_EQ(std::tuple(param.host.ip, param.camera.ip, param.camera.mask),
              std::tuple(0x7F000001U, camera->Ip(), 0xFF000000U));
    EXPECT_EQ(param.packetSize, 1500U) << "channel 1 was not tested";
    EXPECT_EQ(std::tuple(param.bufferSize, param.channelIndex, param.resendSupported),
              std::tuple(640U * 480U * 2U, 1U, 1U));
    camera->AddAckRule({AckFault::ErrorStatus, Command::ReadReg, Bootstrap::CurrentIp});
    EXPECT_EQ(device->StreamParam(0, param), Status::FromGvcp(Gvcp::AckStatus::Error));

    EXPECT_EQ(device->SetStreamDest(1, 0x7F000001, 5000), 4);
    EXPECT_EQ(camera->Register(Bootstrap::StreamRegister(Bootstrap::StreamPort, 1)), 5000U);
    EXPECT_EQ(camera->Register(Bootstrap::StreamRegister(Bootstrap::StreamDestination, 1)), 0x7F000001U);
    EXPECT_EQ(device->SetStreamDest(1, 0, 0), 4);
    EXPECT_EQ(camera->Register(Bootstrap::StreamRegister(Bootstrap::StreamPort, 1)), 0U);
    camera->SetRegister(Bootstrap::StreamPacketSize, 0);
    EXPECT_EQ(device->GetPacketSize(), 1500U);
}

TEST_F(GevDeviceTest, AFailedHeartbeatMarksTheDeviceLost) {
    Connect();
    camera->Return(true); // rebooted behind our back: nobody in control any more
    EXPECT_TRUE(Eventually([&] { return device->DeviceState() == DEVICE_STATE::Lost; }, 5s));
    EXPECT_TRUE(Eventually([&] { return interface.lost == device.get(); }, 1s));
    EXPECT_TRUE(device->IsConnected()) << "until the client lets go of it";
    camera->ClearSeen();
    EXPECT_EQ(device->SetStreamDest(0, 0x7F000001, 0), Status::Ok);
    unsigned char bytes[4];
    EXPECT_EQ(device->ReadPort(CameraRegister::Width, bytes, 4), Status::DeviceLost);
    const auto start = Clock::now();
    EXPECT_EQ(device->DisConnect(), Status::Ok);
    EXPECT_LT(Clock::now() - start, 500ms);
    EXPECT_TRUE(camera->Seen().empty()) << "a lost device is asked nothing";
    EXPECT_EQ(device->Connect(), Status::Ok) << "found again, opened again";
    EXPECT_EQ(device->DeviceState(), DEVICE_STATE::Connected);
}

TEST_F(GevDeviceTest, SurvivesALinkThatIsDownForLessThanTheHeartbeat) {
    // Keeps its heartbeat time-out of 3 s.
    camera->AddAckRule({AckFault::ErrorStatus, Command::WriteReg, Bootstrap::HeartbeatTimeout});
    Connect();
    camera->Vanish();
    std::this_thread::sleep_for(1500ms);
    camera->Return(false);
    camera->ClearSeen();
    EXPECT_TRUE(Eventually([&] { return !camera->Seen().empty(); }, 4s)) << "no heartbeat any more";
    EXPECT_EQ(device->DeviceState(), DEVICE_STATE::Connected);
    EXPECT_EQ(device->GetConfigurer()->SetNodeValue("Gain", 7U), Status::Ok);
    camera->Vanish();
    std::this_thread::sleep_for(2s);
    EXPECT_EQ(device->DeviceState(), DEVICE_STATE::Connected);
    EXPECT_TRUE(Eventually([&] { return device->DeviceState() == DEVICE_STATE::Lost; }, 6s));
}

TEST_F(GevDeviceTest, NoticesAnotherHostThatTookControl) {
    for (const bool tells : {true, false}) {
        CameraConfig config = Quick();
        config.tellsPrimaryApplication = tells;
        config.requiresControl = !tells; // refuses nobody, or whoever does not hold control
        Replace(config);
        Connect();
        std::atomic<std::uint16_t> counter{1};
        GevCmdHelper thief(TestCamera::HostParam(), camera->CameraParam(), 500, counter, camera->GvcpPort());
        if (tells)
            EXPECT_EQ(thief.WriteRegister(Bootstrap::ControlChannelPrivilege, 2), 4);
        else
            camera->AddAckRule({AckFault::ErrorStatus, Command::WriteReg, Bootstrap::ControlChannelPrivilege,
                                0, 1, Gvcp::AckStatus::AccessDenied});
        EXPECT_TRUE(Eventually([&] { return device->DeviceState() == DEVICE_STATE::Lost; }, 5s)) << tells;
    }
}

TEST_F(GevDeviceTest, ReadsBesideTheController) {
    const auto reader = Find();
    Connect();
    ASSERT_EQ(reader->Connect(DeviceAccess::Monitor), Status::Ok);
    EXPECT_EQ(reader->GetConfigurer()->GetNodeValue("Width").AsInteger(), 640);
    camera->ClearSeen();
    EXPECT_EQ(reader->GetConfigurer()->SetNodeValue("Width", 320U), Status::NodeFailed);
    const unsigned char four[4] = {};
    EXPECT_EQ(reader->WritePort(CameraRegister::Width, four, 4), Status::NotAvailable);
    for (const SeenCommand& seen : camera->Seen())
        EXPECT_TRUE(seen.command != Command::WriteReg || seen.address < Bootstrap::ManufacturerSpace);
    EXPECT_EQ(reader->StreamCnt(), 0U);
    EXPECT_EQ(reader->DisConnect(), Status::Ok);
    EXPECT_TRUE(camera->Controlled()) << "the controller keeps what it has";

    EXPECT_EQ(device->Helper()->WriteRegister(Bootstrap::ControlChannelPrivilege, 1), 4); // exclusive
    EXPECT_EQ(reader->Connect(DeviceAccess::Monitor), Status::FromGvcp(Gvcp::AckStatus::AccessDenied));
    EXPECT_FALSE(reader->IsConnected());
}

// Pending acknowledgements without end, to every command.
TEST_F(GevDeviceTest, PendingForEverHoldsNobody) {
    Connect();
    AckRule pending{AckFault::PendingFirst};
    pending.times = 1000;
    pending.ms = 60000;
    pending.delayMs = 60000;
    camera->AddAckRule(pending);
    for (const bool interrupted : {true, false}) { // by hand, and by DisConnect
        std::atomic<StatusCode> result{Status::Ok};
        std::thread reader([&] {
            unsigned char bytes[4];
            result = device->ReadPort(CameraRegister::Width, bytes, 4);
        });
        std::this_thread::sleep_for(300ms);
        const auto start = Clock::now();
        if (interrupted)
            device->Interrupt();
        else
            device->DisConnect();
        reader.join();
        EXPECT_EQ(result, Status::WrongState);
        EXPECT_LT(Clock::now() - start, interrupted ? 500ms : 3000ms);
    }
}

TEST_F(GevDeviceTest, ACameraThatVanishesHoldsNothingUp) {
    Connect();
    camera->Vanish();
    unsigned char bytes[4];
    EXPECT_EQ(device->ReadPort(CameraRegister::Width, bytes, 4), Status::TimeOut);
    const auto start = Clock::now();
    (void)device->DisConnect();
    EXPECT_LT(Clock::now() - start, 3s);
    Replace(Quick());
    Connect();
    device.reset(); // without a word: control is given back all the same
    EXPECT_FALSE(camera->Controlled());
}

} // namespace
} // namespace VX3::Test
