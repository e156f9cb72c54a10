// Managers and interface devices: what they find, report and keep.
#include "device/ManagerAll.h"
#include "support/FakeDevice.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace VX3::Test {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;

std::shared_ptr<FakeDevice> Camera(const char* name, DEVICE_STATE state = DEVICE_STATE::Available,
                                   IDevice* parent = nullptr) {
    auto camera = std::make_shared<FakeDevice>(name, parent);
    camera->SetInitialState(state);
    return camera;
}

// "1 a b; 2 c" for event 1 with a and b, event 2 with c.
std::string Text(const SubDeviceEvents& events) {
    std::string text;
    for (const auto& [event, devices] : events) {
        text += (text.empty() ? "" : "; ") + std::to_string(static_cast<unsigned int>(event));
        for (const auto& device : devices)
            text += " " + device->Name();
    }
    return text;
}

std::string Names(IDevice& device) {
    std::string text;
    for (const auto& weak : device.SubDevices())
        if (const auto camera = weak.lock())
            text += (text.empty() ? "" : " ") + camera->Name();
    return text;
}

TEST(SubDeviceMatching, ReportsFoundLostAndChangedInOrder) {
    FakeInterface interface;
    const auto a = Camera("a");
    EXPECT_EQ(Text(interface.UpdateSubDevicesA({a, Camera("b"), Camera("c")}, false)), "1 a b c");
    EXPECT_EQ(Text(interface.UpdateSubDevicesA({Camera("c"), Camera("b"), Camera("a")}, false)), "");
    EXPECT_EQ(Names(interface), "a b c");
    EXPECT_EQ(interface.SubDevices().front().lock(), a) << "a stable camera stays the same object";

    const auto changed = Camera("b", DEVICE_STATE::Controlled);
    EXPECT_EQ(
        Text(interface.UpdateSubDevicesA({Camera("d"), changed, Camera("c", DEVICE_STATE::GenTL)}, false)),
        "2 a; 3 b; 1 d");
    EXPECT_EQ(Names(interface), "c b d");
    EXPECT_EQ(interface.SubDevices()[1].lock(), changed) << "the new object replaces the old one";
}

TEST(SubDeviceMatching, AConnectedCameraIsKeptUntilItsHeartbeatFails) {
    FakeInterface interface;
    const auto camera = Camera("a");
    interface.UpdateSubDevicesA({camera}, false);
    ASSERT_EQ(camera->Connect(), Status::Ok);
    EXPECT_EQ(Text(interface.UpdateSubDevicesA({Camera("a", DEVICE_STATE::Controlled)}, false)), "")
        << "it is us who control it";
    EXPECT_EQ(Text(interface.UpdateSubDevicesA({}, false)), "") << "a missed answer";
    EXPECT_EQ(Names(interface), "a");
    camera->ReportLost();
    const auto again = Camera("a");
    EXPECT_EQ(Text(interface.UpdateSubDevicesA({again}, false)), "2 a; 1 a")
        << "both in the round that hears it";
    EXPECT_EQ(interface.SubDevices().front().lock(), again);

    // Only states that were read are compared.
    const auto unread = Camera("u", DEVICE_STATE::Unknown);
    interface.UpdateSubDevicesA({again, unread}, false);
    EXPECT_EQ(Text(interface.UpdateSubDevicesA(
                  {Camera("a", DEVICE_STATE::Unknown), Camera("u", DEVICE_STATE::Controlled)}, false)),
              "");
    EXPECT_EQ(unread->DeviceState(), DEVICE_STATE::Controlled) << "known now";
    EXPECT_EQ(again->DeviceState(), DEVICE_STATE::Available);

    const auto strict = Camera("s");
    interface.UpdateSubDevicesA({strict}, false);
    EXPECT_EQ(strict->Connect(), Status::Ok);
    EXPECT_EQ(Text(interface.UpdateSubDevicesA({}, true)), "2 s");
}

TEST(Monitor, RunsAtOnceThenByOffsetAndPeriodAndOnRequest) {
    auto interface = std::make_shared<FakeInterface>();
    interface->SetReachable({Camera("a"), Camera("b")});
    std::atomic<int> events{0};
    CallLog log;
    const auto callback = [&](IDevice* device, SubDeviceEvents list) {
        EXPECT_EQ(device, interface.get());
        log.Add(Text(list));
        ++events;
    };
    const auto start = steady_clock::now();
    ASSERT_EQ(interface->MonitorSubDevices(true, 60000, 59700, callback), Status::Ok);
    EXPECT_EQ(interface->MonitorSubDevices(true, 10, 0, callback), Status::Generic);
    ASSERT_TRUE(Eventually([&] { return events == 1; }));
    EXPECT_EQ(interface->lastTimeout, 5000U);
    EXPECT_LT(steady_clock::now() - start, 250ms) << "the first round does not wait";
    ASSERT_TRUE(Eventually([&] { return interface->rounds == 2; }));
    EXPECT_GE(steady_clock::now() - start, 300ms) << "the second comes after period - offset";

    interface->SetReachable({Camera("b")});
    const auto request = steady_clock::now();
    EXPECT_EQ(interface->SubDeviceLost(nullptr), Status::Ok);
    ASSERT_TRUE(Eventually([&] { return events == 2; }));
    EXPECT_LT(steady_clock::now() - request, 1s);
    EXPECT_EQ(log.Take(), (std::vector<std::string>{"1 a b", "2 a"}));

    const auto stop = steady_clock::now();
    EXPECT_EQ(interface->MonitorSubDevices(false, 0, 0, {}), Status::Ok);
    EXPECT_EQ(interface->MonitorSubDevices(false, 0, 0, {}), Status::Ok);
    EXPECT_LT(steady_clock::now() - stop, 1s);
    const int rounds = interface->rounds;
    ASSERT_EQ(interface->MonitorSubDevices(true, 60000, 59800, callback), Status::Ok);
    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(interface->rounds, rounds) << "a restarted monitor waits first";
    EXPECT_TRUE(Eventually([&] { return interface->rounds > rounds; }));
}

TEST(Monitor, TheCallbackMayStopItAndDropTheInterface) {
    auto interface = std::make_shared<FakeInterface>();
    interface->SetReachable({Camera("a")});
    std::weak_ptr<FakeInterface> watched = interface;
    std::atomic<bool> go{false};
    std::atomic<bool> done{false};
    interface->MonitorSubDevices(true, 10, 0, [&](IDevice* device, SubDeviceEvents) {
        while (!go)
            std::this_thread::yield();
        EXPECT_EQ(device->MonitorSubDevices(false, 0, 0, {}), Status::Ok);
        interface.reset();
        done = true;
    });
    go = true;
    ASSERT_TRUE(Eventually([&] { return done.load(); }));
    EXPECT_TRUE(watched.expired());
}

TEST(Monitor, HeartbeatsReportIntoAnInterfaceThatIsGoingAway) {
    for (int round = 0; round < 30; ++round) {
        auto interface = std::make_shared<FakeInterface>();
        const auto camera = Camera("a", DEVICE_STATE::Available, interface.get());
        EXPECT_EQ(camera->Connect(), Status::Ok);
        interface->SetReachable({camera});
        interface->MonitorSubDevices(true, 1, 0, {});
        std::thread heartbeat([&] {
            for (int i = 0; i < 200; ++i)
                camera->ReportLost();
        });
        interface.reset();
        heartbeat.join();
        EXPECT_EQ(camera->Parent(), nullptr);
    }
}

std::vector<std::shared_ptr<IDevice>> Devices(const std::vector<std::string>& names) {
    std::vector<std::shared_ptr<IDevice>> devices;
    for (const std::string& name : names)
        devices.push_back(std::make_shared<FakeDevice>(name.c_str()));
    return devices;
}

TransportEntry Entry(IntfDevType family, const std::vector<std::string>& interfaces,
                     StatusCode status = Status::Ok) {
    return {family, "Fake", [=](const char* name) {
                return std::make_unique<FakeManager>(family, name, Devices(interfaces), status);
            }};
}

TransportTable Table() {
    return {Entry(IntfDevType::Virtual, {"v0"}), Entry(IntfDevType::GigEVision, {"g0", "g1", "g2"}),
            Entry(IntfDevType::GenCP, {}, Status::NotAvailable), Entry(IntfDevType::Remote, {"r0", ""})};
}

TEST(ManagerAll, BuildsTheRequestedFamiliesInTableOrderAndEnumeratesOnce) {
    ManagerAll manager(1024 | 2, nullptr, Table());
    EXPECT_EQ(manager.DeviceTypeSupported(),
              (std::vector<IntfDevType>{IntfDevType::GigEVision, IntfDevType::Remote}));
    EXPECT_EQ(manager.TypeId(), 0x060000FFU);
    EXPECT_EQ(manager.ObjType(), 0x06000000U);
    EXPECT_EQ(manager.Name(), "");
    EXPECT_EQ(manager.GetDevices(IntfDevType::All), 5);

    ManagerAll nothing(4 | 16 | 64 | 256, "none", Table());
    EXPECT_TRUE(nothing.DeviceTypeSupported().empty());
    EXPECT_EQ(nothing.GetDevice(0, IntfDevType::All), nullptr);
}

TEST(ManagerAll, CountsAndSelectsAcrossFamilies) {
    ManagerAll manager(65535, "all", Table());
    EXPECT_EQ(manager.EnumDevices(), 6) << "the family that fails counts as 0";
    EXPECT_EQ(manager.GetDevices(IntfDevType::GigEVision), 3);
    EXPECT_EQ(manager.GetDevices(IntfDevType::Usb3Vision), 0);
    const std::tuple<unsigned int, IntfDevType, const char*> selections[] = {
        {0, IntfDevType::All, "v0"},        {3, IntfDevType::All, "g2"},
        {4, IntfDevType::All, "r0"},        {6, IntfDevType::All, nullptr},
        {2, IntfDevType::GigEVision, "g2"}, {3, IntfDevType::GigEVision, nullptr},
        {0, IntfDevType::Uvc, nullptr}};
    for (const auto& [index, type, name] : selections) {
        const auto device = manager.GetDevice(index, type);
        EXPECT_EQ(device ? device->Name() : "none", name != nullptr ? name : "none") << index;
        EXPECT_EQ(manager.DeviceName(index, type), name != nullptr ? name : "") << index;
    }
    EXPECT_EQ(manager.GetDevice("r0")->Name(), "r0");
    EXPECT_NE(manager.GetDevice(""), nullptr) << "one device has an empty name";
    EXPECT_EQ(manager.GetDevice("R0"), nullptr);
}

TEST(ManagerAbs, AnswersForItsOwnFamilyOnly) {
    FakeManager manager(IntfDevType::Usb3Vision, "usb", Devices({"a", "b"}));
    EXPECT_EQ(manager.TypeId(), 0x06000003U);
    EXPECT_EQ(FakeManager(IntfDevType::GenCP, "cl", {}).TypeId(), 0x06000000U);
    EXPECT_EQ(manager.EnumDevices(), 2);
    EXPECT_EQ(manager.GetDevices(IntfDevType::GigEVision), 0);
    EXPECT_EQ(manager.GetDevice(0, IntfDevType::GigEVision), nullptr);
    const auto kept = manager.GetDevice(1, IntfDevType::Usb3Vision);
    ASSERT_NE(kept, nullptr);

    std::vector<std::shared_ptr<IDevice>> none;
    EXPECT_EQ(manager.UpdateDevices(none, IntfDevType::GigEVision), Status::WrongState);
    EXPECT_EQ(manager.GetDevices(IntfDevType::All), 2);
    EXPECT_EQ(manager.UpdateDevices(none, IntfDevType::Usb3Vision), 0);
    EXPECT_EQ(kept->Name(), "b") << "a device that is held outlives the list";
}

} // namespace
} // namespace VX3::Test
