// The virtual transport end to end: manager, interface, camera, features, frames.
#include "simulated/VirtualManager.h"

#include "support/FakeDevice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace VX3::Test {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;

struct VirtualCamera {
    VirtualCamera() {
        EXPECT_EQ(manager.EnumDevices(), 1);
        interface = manager.GetDevice(0, IntfDevType::All);
        std::atomic<bool> found{false};
        interface->MonitorSubDevices(true, 60000, 0, [&](IDevice*, SubDeviceEvents events) {
            found = events.front().first == SUB_DEVICE_EVENT::Found;
        });
        EXPECT_TRUE(Eventually([&] { return found.load(); }));
        interface->MonitorSubDevices(false, 0, 0, {});
        camera = interface->SubDevices().at(0).lock();
        EXPECT_EQ(camera->Connect(), Status::Ok);
        stream = camera->GetStream(0);
    }

    IConfigurer& Features() { return *camera->GetConfigurer(); }
    long Get(const char* name) { return Features().GetNodeValue(name).AsInteger(); }
    template <typename T>
    StatusCode Set(const char* name, T value) {
        return Features().SetNodeValue(name, value);
    }

    VirtualManager manager{"virtual"};
    std::shared_ptr<IDevice> interface;
    std::shared_ptr<IDevice> camera;
    IStream* stream = nullptr;
};

TEST(VirtualTransport, IsOneInterfaceWithTwoCamerasThatDescribeThemselves) {
    VirtualCamera virtualCamera;
    EXPECT_EQ(virtualCamera.manager.GetDevices(IntfDevType::Virtual), 1);
    EXPECT_EQ(virtualCamera.interface->Name(), "Virtual Interface 1");
    EXPECT_EQ(virtualCamera.interface->TypeId(), 0x10001U);
    const auto cameras = virtualCamera.interface->SubDevices();
    ASSERT_EQ(cameras.size(), 2U);
    EXPECT_EQ(cameras[0].lock()->Name() + cameras[1].lock()->Name(), "Virtual Device #1Virtual Device #2");
    EXPECT_EQ(cameras[0].lock()->Parent(), virtualCamera.interface.get());
    IDevice& camera = *virtualCamera.camera;
    ASSERT_NE(camera.GetConfigurer(), nullptr);
    EXPECT_EQ(camera.VendorName() + "|" + camera.ModelName() + "|" + camera.DeviceVersion() + "|" +
                  camera.SerialNumber(),
              "Vendor unknown|Test Device|Version 1.00|123456789013456");
    EXPECT_EQ(virtualCamera.Get("PayloadSize"), 160000);
    EXPECT_EQ(virtualCamera.Features().GetXmlData()->GetXmlName(), "VirtualCamera01.xml");

    // Every feature of the tree can be read, or executed, and has a tool tip.
    const auto map = virtualCamera.Features().GetNodeMap();
    int features = 0;
    for (GenICam::INode* node : map->GetNodes()) {
        if (node == nullptr || !node->IsFeature())
            continue;
        ++features;
        EXPECT_TRUE(GenICam::IsAvailable(node->GetAccessMode())) << node->GetName();
        EXPECT_FALSE(node->GetToolTip().empty()) << node->GetName();
    }
    EXPECT_GE(features, 20);
}

TEST(VirtualTransport, FeaturesReachTheRegistersWithinTheirLimits) {
    VirtualCamera camera;
    EXPECT_EQ(camera.Set("Width", 642U), Status::Ok);
    EXPECT_EQ(camera.Get("Width"), 640) << "on the increment grid";
    EXPECT_EQ(camera.Set("Height", 1000000U), Status::Ok);
    EXPECT_EQ(camera.Get("Height"), camera.Get("HeightMax")) << "clamped";
    EXPECT_EQ(camera.Get("PayloadSize"), 640 * camera.Get("HeightMax"));
    EXPECT_EQ(camera.stream->PayloadSize(), camera.Get("PayloadSize"));
    EXPECT_EQ(camera.Set("SensorWidth", 1U), Status::NodeFailed);
    EXPECT_EQ(camera.Set("DeviceModelName", std::string("x")), Status::NodeFailed);
    const auto rate = [&] { return camera.Features().GetNodeValue("AcquisitionFrameRate").AsFloat(); };
    EXPECT_EQ(camera.Set("AcquisitionFrameRate", 30.0), Status::Ok);
    EXPECT_EQ(camera.Get("FrameTime"), 33);
    EXPECT_NEAR(rate(), 30.3, 0.01);
    EXPECT_EQ(camera.Set("FrameTime", 0U), Status::Ok);
    EXPECT_NEAR(rate(), 1000.0, 0.01);
}

// Each register takes effect by itself, so mixed sizes may be seen between two writes, and nothing else.
TEST(VirtualTransport, StreamsAndStopsAtAnyPaceWhileSizesChange) {
    VirtualCamera camera;
    const std::set<unsigned int> possible{400400, 640400, 640480,
                                          32480,  32064,  640064}; // 1000 * width + height
    for (const unsigned int frameTime : {0U, 5U, 60000U}) {
        ASSERT_EQ(camera.Set("FrameTime", frameTime), Status::Ok);
        std::atomic<unsigned int> last{0};
        const auto callback = [&](std::shared_ptr<IImage> image, IDevice*, unsigned int, unsigned int,
                                  void*) {
            last = 1000 * image->GetImageInfo()->width + image->GetImageInfo()->height;
            EXPECT_TRUE(possible.count(last)) << last;
        };
        ASSERT_EQ(camera.stream->Open(3, nullptr), Status::Ok);
        ASSERT_EQ(camera.stream->Start(callback, nullptr, 3, nullptr), Status::Ok);
        EXPECT_EQ(camera.Get("TLParamsLocked"), 1);
        EXPECT_EQ(camera.camera->DeviceState(), DEVICE_STATE::Acquiring);
        for (int round = 0; frameTime < 1000 && round < 10; ++round) {
            const unsigned int width = round % 2 == 0 ? 640 : 32;
            const unsigned int height = round % 2 == 0 ? 480 : 64;
            camera.Set("Width", width);
            camera.Set("Height", height);
            ASSERT_TRUE(Eventually([&] { return last == 1000 * width + height; }));
        }
        const auto stop = steady_clock::now();
        EXPECT_EQ(camera.stream->Stop(), Status::Ok);
        EXPECT_EQ(camera.stream->Close(), Status::Ok); // the queue is delivered until then
        EXPECT_LT(steady_clock::now() - stop, 2s) << "frame time " << frameTime;
        EXPECT_EQ(camera.Get("TLParamsLocked"), 0);
        EXPECT_EQ(camera.camera->DeviceState(), DEVICE_STATE::Connected);
    }
}

TEST(VirtualTransport, FramesMayOutliveTheTransport) {
    std::shared_ptr<IImage> kept;
    {
        VirtualCamera camera;
        camera.Set("FrameTime", 1U);
        camera.stream->Open(3, nullptr);
        camera.stream->Start({}, nullptr, 3, nullptr);
        kept = camera.stream->Snap(5000, SnapMode::Default);
        ASSERT_NE(kept, nullptr);
        camera.interface.reset(); // still held by the manager; destroyed with it, while frames flow
    }
    EXPECT_EQ(kept->GetImageInfo()->width, 400U);
    EXPECT_NE(kept->GetImageBuff(399), nullptr);
}

} // namespace
} // namespace VX3::Test
