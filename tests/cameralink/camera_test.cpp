// CameraLink cameras as devices: found, connected, configured, lost and found again.
#include "cameralink/CLPortA.h"
#include "cameralink/GenCpDevice.h"
#include "cameralink/GenCpInterfaceDev.h"
#include "cameralink/GenCpManager.h"
#include "support/Footprint.h"
#include "support/GenCpCamera.h"
#include "support/LogCapture.h"
#include "support/MemoryOwner.h"
#include "support/Threads.h"
#include "vx3/core/LastFailure.h"

#include <gtest/gtest.h>

namespace VX3::Test {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

std::string Described() {
    const auto reg = [](const char* name, const char* address, const char* length, const char* access) {
        return std::string("<IntReg Name=\"") + name + "\"><Address>" + address + "</Address><Length>" +
               length + "</Length><AccessMode>" + access +
               "</AccessMode><pPort>Device</pPort><Cachable>NoCache</Cachable>"
               "<Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>";
    };
    return DescriptionOf(
        "<StringReg Name=\"DeviceVendorName\"><Address>0x4</Address><Length>64</Length><AccessMode>RO"
        "</AccessMode><pPort>Device</pPort></StringReg>" +
        reg("Gain", "0x40000", "4", "RW") + reg("Constant", "0x50000", "4", "RW") +
        reg("Nowhere", "0x60000", "4", "RW") + reg("StartReg", "0x40010", "4", "RW") +
        "<Command "
        "Name=\"AcquisitionStart\"><pValue>StartReg</pValue><CommandValue>1</CommandValue></Command>");
}

GenCpCameraData Camera(const std::string& serial = "S0042") {
    GenCpCameraData data;
    data.serial = serial;
    data.description = Described();
    return data;
}

std::shared_ptr<IDevice> FirstOf(GenCpInterfaceDev& interface) {
    const auto found = interface.EnumSubDevices(5000);
    return found.empty() ? nullptr : found.front();
}

GenCpFaults Silent() {
    GenCpFaults faults;
    faults.silent = true;
    return faults;
}

TEST(CLPortA, WhatNobodyImplementsSaysSo) {
    CLPortA port;
    for (const auto& call : std::vector<std::function<void()>>{
             [&] { port.SerialRead(nullptr, nullptr, 0); }, [&] { port.GetAccessMode(); },
             [&] { port.GetSupportedBaudRates(nullptr); }, [&] { port.GetDeviceBauderate(); },
             [&] { port.RetrievePortIDDeviceIDPairs(); }, [&] { port.MakeURLfromXMLID("a"); }})
        try {
            call();
            ADD_FAILURE();
        } catch (const char* text) {
            EXPECT_STREQ(text, "The method or operation is not implemented.");
        }
    unsigned char byte = 7;
    port.Read(&byte, 0, 1);
    EXPECT_EQ(byte, 7) << "no port, no transfer";
    EXPECT_EQ(port.Connect("/dev/none"), 0);
    EXPECT_FALSE(port.IsConnected());
    EXPECT_EQ(port.GetPrinicipalInterfaceType(), 11);
    EXPECT_EQ(port.GetXML(true), "");
}

TEST(GenCpInterface, TwoPortsWithACameraOnTheSecond) {
    GenCpCamera none;
    none.Set(Silent());
    GenCpCamera camera(Camera());
    GenCpInterfaceDev interface("GenCP Interface", none.Port() + "," + camera.Port());
    const auto start = Clock::now();
    const auto found = interface.EnumSubDevices(5000);
    EXPECT_LT(Clock::now() - start, milliseconds(5000));
    ASSERT_EQ(found.size(), 1U);
    const auto device = found.front();
    EXPECT_EQ(device->Name(), "Linea(S0042)");
    EXPECT_EQ(device->DevicePath(), camera.Port());
    EXPECT_EQ(device->DeviceType(), 0x30008U);
    EXPECT_EQ(device->ModelName() + device->SerialNumber(), "LineaS0042") << "without a connection";
    EXPECT_EQ(device->Parent(), &interface);
    camera.TakeCommands();
    none.TakeCommands();
    const auto later = Clock::now();
    EXPECT_EQ(interface.EnumSubDevices(5000), found);
    EXPECT_LT(Clock::now() - later, milliseconds(400));
    EXPECT_TRUE(camera.TakeCommands().empty()) << "a known port is not asked again";
}

TEST(GenCpInterface, PortsThatCannotBeAskedAreTold) {
    LogCapture log;
    GenCpCamera camera(Camera());
    GenCpDevice holder("holder", camera.Port(), "GenCP#Linea#S0042", nullptr);
    ASSERT_EQ(holder.Connect(), Status::Ok);
    GenCpInterfaceDev interface("GenCP Interface", camera.Port());
    EXPECT_EQ(FirstOf(interface), nullptr);
    EXPECT_EQ(FirstOf(interface), nullptr);
    EXPECT_EQ(log.Count("not asked for a camera: " + camera.Port() + ": in use by this program"), 1U);
    EXPECT_EQ(holder.Connect(), Status::Ok);
    GenCpDevice other("other", camera.Port(), "GenCP#Linea#S0042", nullptr);
    EXPECT_EQ(other.Connect(), Status::OpenFailed);
    EXPECT_EQ(other.Connect(DeviceAccess::Monitor), Status::OpenFailed);
    holder.DisConnect();
    EXPECT_EQ(other.Connect(DeviceAccess::Monitor), Status::Ok);
    unsigned char word[4] = {};
    EXPECT_EQ(other.ReadPort(0, word, 4), 4);
    EXPECT_EQ(other.WritePort(GenCpCamera::Scratch, word, 4), Status::NotAvailable);
}

TEST(GenCpInterface, FourCamerasAtOnce) {
    std::vector<std::unique_ptr<GenCpCamera>> cameras;
    std::string ports;
    for (const std::uint32_t rate : {9600U, 19200U, 115200U, 921600U}) {
        GenCpCameraData data = Camera(std::to_string(rate));
        data.rate = rate;
        data.zipped =
            false; // libzip asks for the time zone: the thread sanitizer does not see that lock of glibc's
        cameras.push_back(std::make_unique<GenCpCamera>(data));
        ports += cameras.back()->Port() + " ";
    }
    GenCpInterfaceDev interface("GenCP Interface", ports);
    const auto start = Clock::now();
    const auto found = interface.EnumSubDevices(5000);
    EXPECT_LT(Clock::now() - start, milliseconds(5000));
    ASSERT_EQ(found.size(), 4U);
    const std::vector<std::shared_ptr<IDevice>> devices(found.begin(), found.end());
    OnThreads(4, [&](unsigned int i) {
        for (unsigned int cycle = 0; cycle < 5; ++cycle) {
            ASSERT_EQ(devices[i]->Connect(), Status::Ok);
            EXPECT_EQ(devices[i]->GetConfigurer()->SetNodeValue("Gain", 100 * i + cycle), Status::Ok);
            EXPECT_EQ(cameras[i]->Register32(GenCpCamera::Scratch), 100 * i + cycle);
            EXPECT_EQ(devices[i]->DisConnect(), Status::Ok);
        }
    });
}

TEST(GenCpInterface, PortsAddedLater) {
    GenCpCamera one(Camera("1"));
    GenCpCamera two(Camera("2"));
    GenCpInterfaceDev interface("GenCP Interface", one.Port());
    EXPECT_NE(FirstOf(interface), nullptr);
    EXPECT_EQ(interface.AddSubDevice("10.0.0.1"), Status::NotSupported);
    EXPECT_EQ(interface.AddSubDevice(one.Port()), Status::NotFound) << "known";
    one.TakeCommands();
    EXPECT_EQ(interface.AddSubDevice(one.Port() + " " + two.Port()), Status::Ok);
    EXPECT_TRUE(one.TakeCommands().empty());
    ASSERT_EQ(interface.SubDevices().size(), 1U) << "added without a round";
    EXPECT_EQ(interface.SubDevices()[0].lock()->SerialNumber(), "2");
    EXPECT_EQ(interface.EnumSubDevices(300).size(), 2U);
}

TEST(GenCpDevice, FeaturesAndRefusals) {
    GenCpCamera camera(Camera());
    GenCpInterfaceDev interface("GenCP Interface", camera.Port());
    const auto device = FirstOf(interface);
    ASSERT_NE(device, nullptr);
    unsigned char word[4] = {};
    auto& raw = dynamic_cast<GenCpDevice&>(*device);
    EXPECT_EQ(raw.ReadPort(0, word, 4), Status::NotConnected);
    ASSERT_EQ(device->Connect(), Status::Ok);
    EXPECT_EQ(camera.Rate(), 921600U);
    EXPECT_EQ(device->FeaturesFailure(), "");
    EXPECT_EQ(device->VendorName(), "Works");
    IConfigurer& features = *device->GetConfigurer();
    EXPECT_EQ(features.GetXmlData()->GetXmlName(), "Linea_1.2.3.xml");
    EXPECT_EQ(features.SetNodeValue("Gain", 0x12345678U), Status::Ok);
    EXPECT_EQ(camera.Register32(GenCpCamera::Scratch), 0x12345678U);
    EXPECT_EQ(features.GetNodeValue("Gain").AsInteger(), 0x12345678);
    EXPECT_EQ(device->StartAcquisition(0), Status::Ok);
    EXPECT_EQ(camera.Register32(GenCpCamera::Scratch + 16), 1U);

    LogCapture log;
    EXPECT_TRUE(Failed(features.SetNodeValue("Constant", 1U)));
    EXPECT_TRUE(Failed(features.SetNodeValue("Nowhere", 1U)));
    EXPECT_EQ(raw.WritePort(GenCpCamera::ReadOnly, word, 4), Status::FromGvcp(0x8004));
    EXPECT_NE(LastFailure().text.find("write protected"), std::string::npos) << LastFailure().text;
    EXPECT_EQ(raw.ReadPort(0x60000, word, 4), Status::FromGvcp(0x8003));
    EXPECT_EQ(raw.ReadPort(0x1, word, 0), 0);
    EXPECT_EQ(log.Count("heart beat"), 0U) << "a camera that refuses is there";
    EXPECT_EQ(device->DeviceState(), DEVICE_STATE::Acquiring);
    EXPECT_EQ(features.GetNodeValue("Gain").AsInteger(), 0x12345678);
    EXPECT_EQ(device->DisConnect(), Status::Ok);
    EXPECT_FALSE(camera.HasControl());
    EXPECT_EQ(camera.Rate(), 9600U);
    EXPECT_EQ(raw.ReadPort(0, word, 4), Status::NotConnected);
}

TEST(GenCpDevice, WithoutADescription) {
    GenCpCamera camera;
    GenCpInterfaceDev interface("GenCP Interface", camera.Port());
    const auto device = FirstOf(interface);
    ASSERT_EQ(device->Connect(), Status::Ok);
    EXPECT_EQ(device->GetConfigurer(), nullptr);
    EXPECT_NE(device->FeaturesFailure(), "");
    EXPECT_EQ(device->StartAcquisition(0), Status::NotAvailable);
}

TEST(GenCpDevice, ASilentCameraIsLostOnceAndItsPortFree) {
    LogCapture log;
    GenCpCamera camera(Camera());
    GenCpInterfaceDev interface("GenCP Interface", camera.Port());
    const auto device = FirstOf(interface);
    ASSERT_EQ(device->Connect(), Status::Ok);
    camera.Set(Silent());
    auto& raw = dynamic_cast<GenCpDevice&>(*device);
    OnThreads(4, [&](unsigned int) {
        unsigned char word[4] = {};
        EXPECT_EQ(raw.ReadPort(0, word, 4), Status::DeviceLost);
    });
    EXPECT_EQ(log.Count("Linea(S0042) Device heart beat timeout!"), 1U);
    EXPECT_EQ(device->DeviceState(), DEVICE_STATE::Lost);
    camera.Set({});
    std::shared_ptr<IDevice> again;
    for (int round = 0; round < 20 && !again; ++round) // until the camera has given its host up
        again = FirstOf(interface);
    ASSERT_NE(again, nullptr) << "its port is asked again";
    EXPECT_NE(again, device);
    EXPECT_EQ(device->DisConnect(), Status::Ok);
    EXPECT_EQ(again->Connect(), Status::Ok);
}

TEST(GenCpDevice, TheHeartBeatsWhereNothingElseIsAsked) {
    GenCpCameraData data = Camera();
    data.heartbeatMs = 400;
    data.responseMs = 20;
    GenCpCamera camera(data);
    GenCpInterfaceDev interface("GenCP Interface", camera.Port());
    std::mutex mutex;
    std::string events;
    const auto note = [&](IDevice*, const SubDeviceEvents& list) {
        const std::lock_guard<std::mutex> lock(mutex);
        for (const auto& [event, devices] : list)
            events += std::to_string(static_cast<int>(event));
    };
    ASSERT_EQ(interface.MonitorSubDevices(true, 200, 0, note), Status::Ok);
    ASSERT_TRUE(Eventually([&] { return !interface.SubDevices().empty(); }));
    const auto device = interface.SubDevices().front().lock();
    ASSERT_EQ(device->Connect(), Status::Ok);
    std::this_thread::sleep_for(milliseconds(1200));
    EXPECT_TRUE(camera.HasControl());
    EXPECT_EQ(device->DeviceState(), DEVICE_STATE::Connected);
    camera.Set(Silent());
    EXPECT_TRUE(Eventually([&] { return device->DeviceState() == DEVICE_STATE::Lost; }));
    camera.Set({});
    EXPECT_TRUE(Eventually([&] {
        const std::lock_guard<std::mutex> lock(mutex);
        return events == "121"; // found, lost, found
    })) << events;
}

TEST(GenCpDevice, APulledAdapterEndsEverythingSoon) {
    auto camera = std::make_unique<GenCpCamera>(Camera());
    GenCpInterfaceDev interface("GenCP Interface", camera->Port());
    const auto device = FirstOf(interface);
    ASSERT_EQ(device->Connect(), Status::Ok);
    camera->Unplug();
    EXPECT_TRUE(Eventually([&] { return device->DeviceState() == DEVICE_STATE::Lost; }));
    const auto start = Clock::now();
    device->DisConnect();
    EXPECT_LT(Clock::now() - start, milliseconds(500));
    EXPECT_EQ(device->Connect(), Status::DeviceLost);
    EXPECT_EQ(FirstOf(interface), nullptr);
}

// What is still to be said to a camera that has fallen silent is bounded.
TEST(GenCpDevice, DisconnectingEndsAWait) {
    GenCpCamera camera(Camera());
    GenCpInterfaceDev interface("GenCP Interface", camera.Port());
    const auto device = FirstOf(interface);
    ASSERT_EQ(device->Connect(), Status::Ok);
    GenCpFaults faults;
    faults.pending = 1;
    faults.pendingMs = 20000;
    camera.Set(faults);
    std::thread client([&] {
        unsigned char word[4] = {};
        EXPECT_TRUE(Failed(dynamic_cast<GenCpDevice&>(*device).ReadPort(0, word, 4)));
    });
    std::this_thread::sleep_for(milliseconds(100));
    const auto start = Clock::now();
    device->DisConnect();
    EXPECT_LT(Clock::now() - start, milliseconds(2600));
    client.join();
}

TEST(GenCpDevice, TwoHundredConnectionsHoldNoMore) {
    GenCpCamera camera(Camera());
    GenCpInterfaceDev interface("GenCP Interface", camera.Port());
    const auto device = FirstOf(interface);
    Footprint before;
    for (int cycle = 0; cycle < 200; ++cycle) {
        ASSERT_EQ(device->Connect(), Status::Ok) << LastFailure().text;
        ASSERT_EQ(device->DisConnect(), Status::Ok);
        if (cycle == 50)
            before = Footprint::Now();
    }
    const Footprint after = Footprint::Now();
    EXPECT_EQ(after.descriptors, before.descriptors);
    EXPECT_EQ(after.threads, before.threads);
    EXPECT_LT(after.residentMiB, before.residentMiB + AllowedGrowthMiB);
}

TEST(GenCpManager, OneInterface) {
    GenCpManager manager("ManagerAll GenCP");
    EXPECT_EQ(manager.EnumDevices(), 1);
    const auto interface = manager.GetDevice("GenCP Interface");
    ASSERT_NE(interface, nullptr);
    EXPECT_EQ(interface->DeviceType(), 0x10008U);
    EXPECT_TRUE(interface->IsInterface());
}

} // namespace
} // namespace VX3::Test
