#include "gev/GevInterfaceDev.h"

#include "gev/GevManager.h"
#include "gev/net/NICEnumerator.h"
#include "support/TestCamera.h"
#include "support/Threads.h"
#include "vx3/core/Utilities.h"

#include <gtest/gtest.h>

#include <map>

namespace VX3::Test {
namespace {

using namespace Simulated;
using namespace std::chrono_literals;

// The loopback interface, which enumeration never lists; broadcasts stay unsent.
class Loopback : public GevInterfaceDev {
public:
    explicit Loopback(const std::string& id = "lo") : GevInterfaceDev("loop", "a loop", id, 0, 0) {}
    ~Loopback() override { Shutdown(); }
    using GevInterfaceDev::EnumSubDevices;
    std::list<std::shared_ptr<IDevice>>
    Discover(std::vector<GevDiscoveryRound::Question> questions) override {
        for (const auto& question : questions)
            ++rounds[question.target];
        const auto broadcast = [](const auto& question) { return question.target == 0; };
        questions.erase(std::remove_if(questions.begin(), questions.end(), broadcast), questions.end());
        return GevInterfaceDev::Discover(std::move(questions));
    }
    std::map<std::uint32_t, int> rounds;
};

// What a round finds out about cameras that are asked by address.
std::map<std::uint32_t, DEVICE_STATE> StatesOf(Loopback& interface,
                                               const std::vector<std::uint32_t>& addresses) {
    std::vector<GevDiscoveryRound::Question> questions;
    for (const std::uint32_t address : addresses)
        questions.push_back({TestCamera::HostParam(), address});
    std::map<std::uint32_t, DEVICE_STATE> states;
    for (const auto& device : interface.Discover(questions)) {
        GevDeviceAddress address;
        EXPECT_EQ(device->GetIpAddress(&address), Status::Ok);
        states[address.ip] = device->DeviceState();
    }
    return states;
}

TEST(GevInterfaceDev, NamesCamerasByItsRule) {
    GevDiscoveryInfo info;
    info.modelName = "CamA";
    info.serialNumber = "S123";
    info.currentIp = 0xC0A80114;
    EXPECT_EQ(GevInterfaceDev::DeviceName(info, 0), "CamA(S123)");
    EXPECT_EQ(GevInterfaceDev::DeviceName(info, 1), "CamA@192.168.1.20");
    EXPECT_EQ(GevInterfaceDev::DeviceName(info, 2), "CamA(S123)@192.168.1.20");
    EXPECT_EQ(GevInterfaceDev::DeviceName(info, 3), "CamA");
    EXPECT_EQ(GevInterfaceDev::DeviceName(info, 77), "CamA(S123)");
}

TEST(GevInterfaceDev, ReadsDottedAddresses) {
    EXPECT_EQ(GevInterfaceDev::ParseAddress("192.168.1.20"), 0xC0A80114U);
    EXPECT_EQ(GevInterfaceDev::ParseAddress("10"), 0x0A000000U);
    EXPECT_EQ(GevInterfaceDev::ParseAddress("1.2.3.4.5"), 0x01020304U);
    for (const char* none : {"", "0.0.0.0", "camera", "...", "."})
        EXPECT_EQ(GevInterfaceDev::ParseAddress(none), 0U) << none;
}

TEST(GevInterfaceDev, FindsACameraOnceHoweverOftenItAnswers) {
    CameraConfig config;
    config.serial = "0123456789ABCDEF"; // fills its field
    TestCamera camera(config);
    camera.AddAckRule({AckFault::Twice, Gvcp::Command::Discovery});
    Loopback interface;
    const auto found = interface.EnumSubDevices(TestCamera::HostParam(), camera.Ip());
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found.front()->Name(), "Simulated(0123456789ABCDEF)");
    EXPECT_EQ(found.front()->DeviceState(), DEVICE_STATE::Available);
    EXPECT_EQ(found.front()->Parent(), &interface);
    interface.SetNameRule(GevInterfaceDev::ModelSerialIp);
    EXPECT_EQ(interface.EnumSubDevices(TestCamera::HostParam(), camera.Ip()).front()->Name(),
              "Simulated(0123456789ABCDEF)@" + Ipv4Text(camera.Ip()));
    EXPECT_TRUE(interface.EnumSubDevices(NET_PARAM{}, camera.Ip()).empty());
}

TEST(GevInterfaceDev, SilentCamerasCostARoundNothingAndHideNobody) {
    Loopback interface;
    std::vector<std::unique_ptr<TestCamera>> cameras;
    std::vector<std::uint32_t> addresses;
    for (int i = 0; i < 20; ++i) {
        cameras.push_back(std::make_unique<TestCamera>());
        addresses.push_back(cameras.back()->Ip());
        if (i >= 4) // answer discovery, and nothing else
            cameras.back()->AddAckRule({AckFault::Silence, Gvcp::Command::ReadReg, {}, 0, 1000});
    }
    cameras[1]->SetRegister(Bootstrap::ControlChannelPrivilege, 2);
    cameras[2]->AddAckRule({AckFault::Silence, Gvcp::Command::ReadReg}); // once
    cameras[3]->AddAckRule(
        {AckFault::ErrorStatus, Gvcp::Command::ReadReg, {}, 0, 1, Gvcp::AckStatus::AccessDenied});
    const auto start = std::chrono::steady_clock::now();
    auto states = StatesOf(interface, addresses);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1800));
    ASSERT_EQ(states.size(), cameras.size());
    using S = DEVICE_STATE;
    const S expected[] = {S::Available, S::Controlled, S::Available, S::Controlled};
    for (std::size_t i = 0; i < addresses.size(); ++i)
        EXPECT_EQ(states[addresses[i]], i < 4 ? expected[i] : S::Unreachable) << i;
}

TEST(GevInterfaceDev, StoppingTheMonitorEndsItsRound) {
    TestCamera camera;
    Loopback interface;
    ASSERT_EQ(interface.AddSubDevice(Ipv4Text(camera.Ip())), Status::Ok);
    std::atomic<int> events{0};
    ASSERT_EQ(interface.MonitorSubDevices(true, 60000, 0, [&](IDevice*, SubDeviceEvents) { ++events; }),
              Status::Ok);
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(interface.MonitorSubDevices(false, 0, 0, {}), Status::Ok);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500));
    EXPECT_EQ(interface.FinishedRounds(), 0U);
    EXPECT_EQ(interface.SubDevices().size(), 1U) << "who was not heard yet is not lost";
    EXPECT_EQ(events, 0);
}

TEST(GevInterfaceDev, CamerasAddedByAddressStay) {
    TestCamera camera;
    Loopback interface;
    EXPECT_EQ(interface.AddSubDevice(""), Status::NotFound);
    EXPECT_EQ(interface.AddSubDevice("0.0.0.0"), Status::NotFound);
    EXPECT_EQ(Loopback("no-such-interface").AddSubDevice("10.0.0.1"), Status::NoIpAddress);
    const std::string address = Ipv4Text(camera.Ip());
    ASSERT_EQ(interface.AddSubDevice(address), Status::Ok);
    ASSERT_EQ(interface.SubDevices().size(), 1U);
    EXPECT_EQ(interface.AddSubDevice(address), Status::Ok);
    EXPECT_EQ(interface.SubDevices().size(), 1U) << "known: not added again";
    EXPECT_EQ(interface.rounds[camera.Ip()], 1);

    const auto device = interface.SubDevices().front().lock();
    (void)interface.UpdateSubDevicesA(interface.EnumSubDevices(5000), false);
    ASSERT_EQ(interface.SubDevices().size(), 1U) << "broadcasts do not reach it; later rounds ask for it";
    EXPECT_EQ(interface.SubDevices().front().lock(), device);
    camera.Vanish();
    (void)interface.UpdateSubDevicesA(interface.EnumSubDevices(5000), false);
    EXPECT_TRUE(interface.SubDevices().empty());
}

TEST(GevManager, MakesOneInterfaceDeviceANetworkInterface) {
    GevManager manager("GigE");
    const auto nics = NICEnumerator::EnumerateNICs();
    ASSERT_EQ(manager.EnumDevices(), static_cast<StatusCode>(nics.size()));
    EXPECT_EQ(manager.GetDevices(IntfDevType::GigEVision), static_cast<int>(nics.size()));
    for (unsigned int i = 0; i < nics.size(); ++i) {
        const auto device = manager.GetDevice(i, IntfDevType::All);
        EXPECT_EQ(device->UniqueName(), nics[i].name);
        EXPECT_EQ(device->DeviceType(), 0x10002U);
        EXPECT_TRUE(device->IsInterface());
        EXPECT_EQ(device->GetInfo().front().second, nics[i].name);
        EXPECT_EQ(device->Connect(), Status::Ok);
        EXPECT_EQ(device->DisConnect(), Status::Ok);
    }
}

} // namespace
} // namespace VX3::Test
