// The virtual transport end to end: manager, interface, camera, features, frames.
#include "simulated/VirtualManager.h"

#include "support/FakeDevice.h"

#include <gtest/gtest.h>

#include <set>

using namespace VX3;
using namespace VX3::Testing;
using namespace std::chrono_literals;
using std::chrono::steady_clock;

namespace {

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
    }

    IConfigurer& Features() { return *camera->GetConfigurer(); }
    long Get(const char* name) { return Features().GetNodeValue(name).AsInteger(); }

    VirtualManager manager{"virtual"};
    std::shared_ptr<IDevice> interface;
    std::shared_ptr<IDevice> camera;
};

// What a stream delivered.
class Frames {
public:
    ImageCallback Callback() {
        return [this](std::shared_ptr<IImage> image, IDevice*, unsigned int, unsigned int, void*) {
            const ImageInfo* info = image->GetImageInfo();
            MutexLock lock(mutex_);
            sizes_.insert({info->width, info->height});
            last_ = {info->width, info->height};
            ++count_;
        };
    }
    using Size = std::pair<unsigned int, unsigned int>;
    int Count() {
        MutexLock lock(mutex_);
        return count_;
    }
    Size Last() {
        MutexLock lock(mutex_);
        return last_;
    }
    std::set<Size> Sizes() {
        MutexLock lock(mutex_);
        return sizes_;
    }

private:
    Mutex mutex_;
    std::set<Size> sizes_ VX3_GUARDED_BY(mutex_);
    Size last_ VX3_GUARDED_BY(mutex_){};
    int count_ VX3_GUARDED_BY(mutex_) = 0;
};

} // namespace

TEST(VirtualTransport, IsOneInterfaceWithTwoCameras) {
    VirtualCamera virtualCamera;
    EXPECT_EQ(virtualCamera.manager.GetDevices(IntfDevType::Virtual), 1);
    EXPECT_EQ(virtualCamera.interface->Name(), "Virtual Interface 1");
    EXPECT_EQ(virtualCamera.interface->TypeId(), 0x10001U);
    const auto cameras = virtualCamera.interface->SubDevices();
    ASSERT_EQ(cameras.size(), 2U);
    EXPECT_EQ(cameras[0].lock()->Name(), "Virtual Device #1");
    EXPECT_EQ(cameras[1].lock()->Name(), "Virtual Device #2");
    EXPECT_EQ(cameras[0].lock()->Parent(), virtualCamera.interface.get());
}

TEST(VirtualTransport, DescribesItself) {
    VirtualCamera virtualCamera;
    IDevice& camera = *virtualCamera.camera;
    ASSERT_NE(camera.GetConfigurer(), nullptr);
    EXPECT_EQ(camera.VendorName(), "Vendor unknown");
    EXPECT_EQ(camera.ModelName(), "Test Device");
    EXPECT_EQ(camera.DeviceVersion(), "Version 1.00");
    EXPECT_EQ(camera.SerialNumber(), "123456789013456");
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
    IConfigurer& features = camera.Features();
    EXPECT_EQ(features.SetNodeValue("Width", 642U), Status::Ok);
    EXPECT_EQ(camera.Get("Width"), 640) << "on the increment grid";
    EXPECT_EQ(features.SetNodeValue("Height", 1000000U), Status::Ok);
    EXPECT_EQ(camera.Get("Height"), camera.Get("HeightMax")) << "clamped";
    EXPECT_EQ(camera.Get("PayloadSize"), 640 * camera.Get("HeightMax"));
    EXPECT_EQ(camera.camera->GetStream(0)->PayloadSize(), 640U * camera.Get("HeightMax"));
    EXPECT_EQ(features.SetNodeValue("SensorWidth", 1U), Status::NodeFailed);
    EXPECT_EQ(features.SetNodeValue("DeviceModelName", std::string("x")), Status::NodeFailed);
    EXPECT_EQ(features.SetNodeValue("NoSuchFeature", 1U), Status::NotFound);

    EXPECT_EQ(features.SetNodeValue("AcquisitionFrameRate", 25.0), Status::Ok);
    EXPECT_EQ(camera.Get("FrameTime"), 40);
    EXPECT_EQ(features.SetNodeValue("AcquisitionFrameRate", 30.0), Status::Ok);
    EXPECT_EQ(camera.Get("FrameTime"), 33);
    EXPECT_NEAR(features.GetNodeValue("AcquisitionFrameRate").AsFloat(), 30.3, 0.01);
    EXPECT_EQ(features.SetNodeValue("FrameTime", 0U), Status::Ok);
    EXPECT_NEAR(features.GetNodeValue("AcquisitionFrameRate").AsFloat(), 1000.0, 0.01);
}

TEST(VirtualTransport, StreamsAndStopsAtAnyPace) {
    VirtualCamera camera;
    IStream* stream = camera.camera->GetStream(0);
    for (const unsigned int frameTime : {0U, 5U, 60000U}) {
        ASSERT_EQ(camera.Features().SetNodeValue("FrameTime", frameTime), Status::Ok);
        Frames frames;
        ASSERT_EQ(stream->Open(3, nullptr), Status::Ok);
        ASSERT_EQ(stream->Start(frames.Callback(), nullptr, 3, nullptr), Status::Ok);
        EXPECT_EQ(camera.Get("TLParamsLocked"), 1);
        EXPECT_EQ(camera.camera->DeviceState(), DEVICE_STATE::Acquiring);
        if (frameTime < 1000) {
            EXPECT_TRUE(Eventually([&] { return frames.Count() >= 20; }));
        }
        const auto stop = steady_clock::now();
        EXPECT_EQ(stream->Stop(), Status::Ok);
        EXPECT_EQ(stream->Close(), Status::Ok);
        EXPECT_LT(steady_clock::now() - stop, 2s) << "frame time " << frameTime;
        EXPECT_EQ(camera.Get("TLParamsLocked"), 0);
        EXPECT_EQ(camera.camera->DeviceState(), DEVICE_STATE::Connected);
    }
}

TEST(VirtualTransport, SizesChangeWholeWhileStreaming) {
    VirtualCamera camera;
    IStream* stream = camera.camera->GetStream(0);
    EXPECT_EQ(camera.Features().SetNodeValue("FrameTime", 0U), Status::Ok);
    Frames frames;
    EXPECT_EQ(stream->Open(3, nullptr), Status::Ok);
    EXPECT_EQ(stream->Start(frames.Callback(), nullptr, 3, nullptr), Status::Ok);
    for (int round = 0; round < 20; ++round) {
        const unsigned int width = round % 2 == 0 ? 640 : 32;
        const unsigned int height = round % 2 == 0 ? 480 : 64;
        EXPECT_EQ(camera.Features().SetNodeValue("Width", width), Status::Ok);
        EXPECT_EQ(camera.Features().SetNodeValue("Height", height), Status::Ok);
        ASSERT_TRUE(Eventually([&] { return frames.Last() == Frames::Size(width, height); }));
    }
    stream->Stop();
    stream->Close(); // the queue is delivered until then
    // Each register takes effect by itself, so the mixed sizes may be seen between two writes, and nothing
    // else.
    const std::set<Frames::Size> possible{{400, 400}, {640, 400}, {640, 480}, {32, 480}, {32, 64}, {640, 64}};
    for (const auto& size : frames.Sizes())
        EXPECT_TRUE(possible.count(size)) << size.first << " x " << size.second;
}

TEST(VirtualTransport, FramesMayOutliveTheTransport) {
    std::shared_ptr<IImage> kept;
    {
        VirtualCamera camera;
        IStream* stream = camera.camera->GetStream(0);
        EXPECT_EQ(camera.Features().SetNodeValue("FrameTime", 1U), Status::Ok);
        EXPECT_EQ(stream->Open(3, nullptr), Status::Ok);
        EXPECT_EQ(stream->Start({}, nullptr, 3, nullptr), Status::Ok);
        kept = stream->Snap(5000, SnapMode::Default);
        ASSERT_NE(kept, nullptr);
        camera.interface.reset(); // still held by the manager; destroyed with it, while frames flow
    }
    EXPECT_EQ(kept->GetImageInfo()->width, 400U);
    EXPECT_NE(kept->GetImageBuff(399), nullptr);
}
