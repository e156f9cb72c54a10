// The virtual transport end to end: manager, interface, camera, features, frames, in order and in any.
#include "simulated/VirtualInterfaceDev.h"
#include "simulated/VirtualManager.h"
#include "support/FakeDevice.h"
#include "support/Threads.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <random>
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

struct Counters {
    std::atomic<long> frames{0};
    std::atomic<long> started{0};
};

// Now and then the callback itself stops, closes or disconnects.
ImageCallback Callback(unsigned long random, Counters& counters) {
    return [random, &counters](std::shared_ptr<IImage> image, IDevice* device, unsigned int, unsigned int,
                               void*) {
        ++counters.frames;
        const auto choice = (random + image->GetImageInfo()->blockId) % 40;
        IStream* stream = device != nullptr && choice < 2 ? device->GetStream(0) : nullptr;
        if (stream != nullptr)
            choice == 0 ? stream->Stop() : stream->Close();
        else if (device != nullptr && choice == 2)
            device->DisConnect();
    };
}

void TakeSteps(IDevice& camera, unsigned int seed, Counters& counters) {
    std::mt19937 random(seed);
    using Action = std::function<void(IStream&)>;
    const Action open = [](IStream& stream) { stream.Open(2, nullptr); };
    const Action start = [&](IStream& stream) {
        counters.started += !Failed(stream.Start(Callback(random(), counters), nullptr, 2, nullptr));
    };
    const Action stop = [](IStream& stream) { stream.Stop(); };
    const Action close = [](IStream& stream) { stream.Close(); };
    const Action snap = [](IStream& stream) { stream.Snap(5, SnapMode::Default); };
    const Action* actions[] = {&open, &open, &start, &start, &start, &stop, &close, &snap};
    for (int step = 0; step < 300; ++step) {
        IStream* stream = camera.GetStream(0); // the plain pointer, on purpose
        const auto action = random() % 12;
        if (action < 2)
            camera.Connect();
        else if (action == 2)
            camera.DisConnect();
        else if (action == 3) {
            if (const auto configurer = camera.ShareConfigurer()) {
                configurer->SetNodeValue("FrameTime", static_cast<unsigned int>(random() % 2));
                configurer->SetNodeValue("Width", static_cast<unsigned int>(16 + random() % 400));
            }
        } else if (stream != nullptr)
            (*actions[action - 4])(*stream);
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 800)); // frames flow meanwhile
    }
}

// Two threads open, start, stop, close, connect, disconnect, snap and set features of one camera in random
// orders while frames flow. Nothing may deadlock, leak or touch freed memory, whatever the codes say.
TEST(RandomOrder, TwoThreadsThousandOrdersWhileFramesFlow) {
    Counters counters;
    for (unsigned int batch = 0; batch < 20; ++batch) {
        auto interface = std::make_shared<VirtualInterfaceDev>("virtual");
        const auto camera = interface->EnumSubDevices(0).front();
        camera->Connect();
        ASSERT_NE(camera->ShareConfigurer(), nullptr);
        camera->ShareConfigurer()->SetNodeValue("FrameTime", 0U);
        OnThreads(2, [&](unsigned int side) { TakeSteps(*camera, 1000 * batch + side, counters); });
        interface.reset(); // the camera may be in any state, and outlives its interface
    }
    EXPECT_GT(counters.started, 50);
    EXPECT_GT(counters.frames, 100);
}

} // namespace
} // namespace VX3::Test
