// Cameras behind a producer: found and lost, opened, described, their registers and events.
#include "support/LogCapture.h"
#include "support/ProducerLab.h"
#include "support/Threads.h"
#include "vx3/core/LastFailure.h"

#include <gtest/gtest.h>

#include <chrono>

namespace VX3::Test {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;

long long Integer(IDevice& device, const char* feature) {
    const auto configurer = device.ShareConfigurer();
    return configurer ? configurer->GetNodeValue(feature).AsInteger() : -1;
}

TEST(GenTLCamera, SaysWhoItIsAndItsFeaturesWork) {
    GenTLLab lab;
    const auto camera = lab.Camera(1);
    ASSERT_TRUE(camera);
    EXPECT_EQ(std::tuple(camera->Name(), camera->UniqueName(), camera->VendorName(), camera->ModelName()),
              std::tuple("Test camera 1", "camera-1", "Vendor", "Model 1"));
    EXPECT_EQ(
        std::tuple(camera->SerialNumber(), camera->DeviceVersion(), camera->UserName(), camera->DeviceType()),
        std::tuple("SN1", "1.2", "", 0x30040U));
    EXPECT_EQ(camera->DeviceState(), DEVICE_STATE::GenTL);
    ASSERT_EQ(camera->Connect(), Status::Ok);
    EXPECT_EQ(camera->FeaturesFailure(), "");
    EXPECT_EQ(camera->StreamCnt(), 1U);
    EXPECT_EQ(Integer(*camera, "Width"), 64);
    EXPECT_EQ(camera->GetConfigurer()->SetNodeValue("Width", 128), Status::Ok);
    EXPECT_EQ(Integer(*camera, "PayloadSize"), 128 * 48);

    unsigned char bytes[8]{};
    EXPECT_EQ(camera->ReadPort(0x100, bytes, 8), 8);
    EXPECT_EQ(bytes[0], 128);
    EXPECT_EQ(camera->ReadPort(0x5000, bytes, 4), -1015) << "the producer's own code";
    EXPECT_NE(LastFailure().text.find("GC_ERR_INVALID_ADDRESS"), std::string::npos);
    lab.Producer().Set("short", "2");
    EXPECT_EQ(camera->ReadPort(0x100, bytes, 4), 2);
    GenICam::NodeValue locked;
    EXPECT_EQ(camera->GetConfigurer()->ReadNodeValue("TLParamsLocked", locked), Status::Malformed)
        << "half a register is none";
    lab.Producer().Set("short", "100");
    std::string url;
    EXPECT_EQ(camera->GetXmlUrl(url), Status::Ok);
    EXPECT_EQ(url.substr(0, 23), "Local:camera.xml;10000;");
    EXPECT_EQ(url.find('?'), std::string::npos);
    EXPECT_EQ(camera->DisConnect(), Status::Ok);
    EXPECT_EQ(camera->ReadPort(0x100, bytes, 4), Status::NotConnected);
}

TEST(GenTLCamera, TakesTheBestAccessAndNeverReadOnlyForControl) {
    GenTLLab lab;
    const auto camera = lab.Camera();
    ASSERT_EQ(camera->Connect(), Status::Ok);
    const auto other = std::make_shared<GenTLRemotableDevice>(lab.Interface().Interface()->Producer(),
                                                              "camera-0", "the same", &lab.Interface());
    EXPECT_EQ(other->Connect(), -1004) << "held by another";
    EXPECT_EQ(camera->DisConnect(), Status::Ok);
    lab.Producer().Set("access.refused", "4");
    ASSERT_EQ(camera->Connect(), Status::Ok) << "control, where there is no exclusive access";
    EXPECT_EQ(camera->DisConnect(), Status::Ok);
    lab.Producer().Set("access.refused", "34");
    EXPECT_EQ(camera->Connect(), -1003);
    EXPECT_EQ(camera->DeviceState(), DEVICE_STATE::Available);
    ASSERT_EQ(camera->Connect(DeviceAccess::Monitor), Status::Ok);
    EXPECT_FALSE(camera->IsWritable());
    EXPECT_EQ(Integer(*camera, "Width"), 64);
    EXPECT_NE(camera->GetConfigurer()->SetNodeValue("Width", 100), Status::Ok);

    const auto stray = std::make_shared<GenTLRemotableDevice>(lab.Interface().Interface()->Producer(),
                                                              "camera-1", "stray", nullptr);
    EXPECT_EQ(stray->Connect(), Status::NotAvailable);
    const auto missing = std::make_shared<GenTLRemotableDevice>(lab.Interface().Interface()->Producer(),
                                                                "nobody", "nobody", &lab.Interface());
    EXPECT_EQ(missing->Connect(), -1007);
}

TEST(GenTLCamera, WritingToTheSleepAddressOnlyWaits) {
    GenTLLab lab;
    const auto camera = lab.Camera();
    ASSERT_EQ(camera->Connect(), Status::Ok);
    const long long writes = lab.Producer().Calls("GCWritePort");
    const std::uint32_t wait[2] = {200, 0};
    const auto start = steady_clock::now();
    EXPECT_EQ(camera->WritePort(0x80000000, reinterpret_cast<const unsigned char*>(wait), 4), Status::Ok);
    EXPECT_GE(steady_clock::now() - start, 200ms);
    EXPECT_LT(steady_clock::now() - start, 1s);
    EXPECT_EQ(lab.Producer().Calls("GCWritePort"), writes);
    EXPECT_EQ(camera->WritePort(0x80000000, reinterpret_cast<const unsigned char*>(wait), 8), -1015);
    EXPECT_EQ(lab.Producer().Calls("GCWritePort"), writes + 1);
    const std::uint32_t hour = 3600000;
    std::thread sleeper([&] {
        EXPECT_EQ(camera->WritePort(0x80000000, reinterpret_cast<const unsigned char*>(&hour), 4),
                  Status::NotConnected);
    });
    std::this_thread::sleep_for(50ms);
    camera->DisConnect();
    sleeper.join();
    EXPECT_LT(steady_clock::now() - start, 5s) << "it ends with the connection";
}

TEST(GenTLCamera, DescriptionsAreTriedInTheirOrder) {
    const auto features = [](const ProducerSettings& settings) {
        GenTLLab lab(settings);
        const auto camera = lab.Camera();
        EXPECT_EQ(camera->Connect(), Status::Ok) << "connected all the same";
        return Integer(*camera, "Width") == 64 ? "" : camera->FeaturesFailure();
    };
    EXPECT_EQ(features(ProducerSettings{{"pad", "1000"}}), "") << "zeros behind the text";
    ProducerSettings lies{{"url.0", "http://example.org/camera.xml"},
                          {"url.1", "file:///no/such.xml"},
                          {"url.2", "local:camera.xml;10000;7FFFFFFF"},
                          {"url.3", "local:broken.xml;10000;100"}};
    EXPECT_NE(features(lies).find("Description"), std::string::npos) << features(lies);
    TempDir folder;
    GenTLLab source;
    std::string url;
    const auto camera = source.Camera();
    ASSERT_EQ(camera->Connect(), Status::Ok);
    const IXmlData* xml = camera->GetConfigurer()->GetXmlData();
    std::ofstream(folder / "a camera.xml")
        << std::string(reinterpret_cast<const char*>(xml->GetXmlData()), xml->GetXmlDataSize());
    lies["url.4"] = "FILE://" + folder.Path() + "/a%20camera.xml?SchemaVersion=1.1.0";
    EXPECT_EQ(features(lies), "");
    GenTLLab beside(ProducerSettings{{"url.0", "file:beside.xml"}});
    std::filesystem::copy_file(folder / "a camera.xml", beside.Folder() / "beside.xml");
    ASSERT_EQ(beside.Camera()->Connect(), Status::Ok);
    EXPECT_EQ(Integer(*beside.Camera(), "Width"), 64) << "beside the producer";
}

TEST(GenTLCamera, IsFoundLostAndFoundAgain) {
    GenTLLab lab;
    const auto camera = lab.Camera(1);
    ASSERT_EQ(camera->Connect(), Status::Ok);
    EXPECT_TRUE(lab.Look().empty()) << "nothing changed";
    EXPECT_EQ(lab.Camera(1), camera);
    lab.Producer().Set("fail.IFGetNumDevices", "-1010");
    EXPECT_TRUE(lab.Look().empty()) << "who was not heard may be there all the same";
    lab.Producer().Set("fail.IFGetNumDevices", "0");
    lab.Producer().Set("devices.claimed", "4000000000");
    EXPECT_TRUE(lab.Look().empty());
    lab.Producer().Set("devices.claimed", "2");

    lab.Producer().Set("cameras", "1");
    lab.Producer().Set("devices.claimed", "1");
    lab.Producer().Set("unplug", "1");
    SubDeviceEvents events = lab.Look();
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events.front().first, SUB_DEVICE_EVENT::Lost);
    EXPECT_EQ(events.front().second.front(), camera);
    EXPECT_EQ(camera->DeviceState(), DEVICE_STATE::Lost);
    unsigned char bytes[4];
    EXPECT_EQ(camera->ReadPort(0x100, bytes, 4), Status::DeviceLost);
    EXPECT_EQ(camera->DisConnect(), Status::Ok);

    lab.Producer().Set("plug", "1");
    lab.Producer().Set("cameras", "2");
    lab.Producer().Set("devices.claimed", "2");
    events = lab.Look();
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events.front().first, SUB_DEVICE_EVENT::Found);
    EXPECT_NE(lab.Camera(1), camera);
    EXPECT_EQ(lab.Camera(1)->Connect(), Status::Ok);
}

TEST(GenTLCamera, WithIdsLongerThanAnyBufferWorks) {
    GenTLLab lab(ProducerSettings{{"id.length", "3000"}, {"displayname", "evil\x1B[2Jname"}});
    const auto camera = lab.Camera();
    ASSERT_TRUE(camera);
    EXPECT_EQ(camera->UniqueName().size(), 3000U);
    EXPECT_EQ(camera->Name(), "evil?[2Jname");
    EXPECT_EQ(camera->Connect(), Status::Ok);
}

TEST(GenTLCamera, WhoseProducerHangsCostsABoundedTime) {
    GenTLLab lab;
    const auto camera = lab.Camera();
    ASSERT_EQ(camera->Connect(), Status::Ok);
    LogCapture log;
    lab.Producer().Set("hang.GCReadPort", "60000");
    const auto start = steady_clock::now();
    unsigned char bytes[4];
    EXPECT_EQ(camera->ReadPort(0x100, bytes, 4), Status::TimeOut);
    EXPECT_LT(steady_clock::now() - start, 11s);
    EXPECT_TRUE(Eventually([&] { return log.Has("test.cti: GCReadPort has not returned for 10"); }));
    EXPECT_EQ(camera->ReadPort(0x100, bytes, 4), Status::TimeOut);
    EXPECT_EQ(camera->DisConnect(), Status::Ok);
    EXPECT_LT(steady_clock::now() - start, 13s) << "nothing more is asked of it";
    lab.Producer().Set("hang.GCReadPort", "0");
    lab.Producer().Set("release", "1");
    EXPECT_TRUE(Eventually([&] { return log.Has("GCReadPort has returned after all"); }));
    EXPECT_TRUE(Eventually([&] { return camera->Connect() == Status::Ok; }))
        << "it was closed after the call";
}

TEST(GenTLCamera, EventsReachItsFeatures) {
    GenTLLab lab(ProducerSettings{{"events", "1"}});
    LogCapture log;
    const auto camera = lab.Camera();
    ASSERT_EQ(camera->Connect(), Status::Ok);
    EXPECT_EQ(Integer(*camera, "Temperature"), 42);
    const std::uint32_t hotter = 99;
    ASSERT_EQ(camera->WritePort(0x11C, reinterpret_cast<const unsigned char*>(&hotter), 4), 4);
    EXPECT_EQ(Integer(*camera, "Temperature"), 42) << "cached";
    lab.Producer().Fire(GenTL::EVENT_FEATURE_INVALIDATE, "Temperature", "");
    EXPECT_TRUE(Eventually([&] { return Integer(*camera, "Temperature") == 99; }));
    lab.Producer().Fire(GenTL::EVENT_FEATURE_CHANGE, "TLParamsLocked", "1");
    EXPECT_TRUE(Eventually([&] { return Integer(*camera, "TLParamsLocked") == 1; }));
    lab.Producer().Fire(GenTL::EVENT_ERROR, "-1010", "the link is down");
    EXPECT_TRUE(Eventually(
        [&] { return log.Has("GC_ERR_IO: communication failed (GenTL -1010): the link is down"); }));
    lab.Producer().Fire(GenTL::EVENT_FEATURE_INVALIDATE, "NoSuchFeature", "");
    const auto start = steady_clock::now();
    EXPECT_EQ(camera->DisConnect(), Status::Ok);
    EXPECT_LT(steady_clock::now() - start, 400ms) << "the waits were ended";
}

TEST(GenTLCamera, TwoUsersAreToldExactlyHowThingsStand) {
    GenTLLab lab;
    const auto camera = lab.Camera();
    EXPECT_EQ(camera->DisConnect(), Status::NotConnected);
    EXPECT_EQ(camera->Connect(), Status::Ok);
    EXPECT_EQ(camera->Connect(), Status::AlreadyConnected);
    EXPECT_EQ(camera->DisConnectRemotely(), Status::AlreadyConnected);
    EXPECT_EQ(camera->ConnectRemotely(), Status::Ok);
    EXPECT_EQ(camera->ConnectRemotely(), Status::AlreadyConnected);
    EXPECT_EQ(camera->DisConnect(), Status::Ok);
    EXPECT_TRUE(camera->IsConnected());
    EXPECT_EQ(lab.Producer().Calls("DevClose"), 0);
    EXPECT_EQ(camera->DisConnectRemotely(), Status::Ok);
    EXPECT_EQ(lab.Producer().Calls("DevClose"), 1);
    EXPECT_EQ(camera->ConnectRemotely(), Status::Ok);
    lab.End();
    EXPECT_EQ(lab.Producer().Calls("DevClose"), 2) << "the interface's end is every user's";
    EXPECT_EQ(camera->Connect(), Status::NotAvailable);
}

} // namespace
} // namespace VX3::Test
