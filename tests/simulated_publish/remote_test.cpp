// A published camera and the remote device that opens it, over the loopback interface.
#include "PublishedLab.h"
#include "gev/control/GevCmdHelper.h"
#include "gev/net/OwnPorts.h"
#include "remote/RemoteDevice.h"
#include "remote/RemoteInterfaceDev.h"
#include "simulated/publish/GevSimuDeviceList.h"
#include "support/Threads.h"
#include "vx3/genicam/IConfigurer.h"
#include "vx3/simulated/Camera.h"
#include "vx3/simulated/Publish.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstring>

namespace VX3::Test {
namespace {

using namespace std::chrono_literals;

constexpr NET_PARAM LoopbackHost{0x7F000001, 0xFF000000, 0, 0xFFFFFFFF};

// Counts images, and compares them with the camera's pattern: each must be one of its frames, whole.
struct Receiver {
    ImageCallback Callback() {
        return [this](const std::shared_ptr<IImage>& image, IDevice*, unsigned, unsigned, void*) {
            const ImageInfo& info = *image->GetImageInfo();
            const std::uint64_t stamp = std::uint64_t{info.timestampHigh} << 32 | info.timestampLow;
            ordered = ordered && stamp > lastStamp;
            lastStamp = stamp;
            const std::size_t size = info.ImageDataSize();
            const auto is = [&](std::uint64_t id) {
                return std::memcmp(std::as_const(*image).GetImageBuff(),
                                   Simulated::Camera::ExpectedData(id, size), size) == 0;
            };
            // The frame's number is not told: the next ones, or the first of a stream that starts again.
            bool found = false;
            for (const std::uint64_t first : {lastFrame, std::uint64_t{1}})
                for (std::uint64_t id = first; !found && id < first + 3000; ++id)
                    if ((found = is(id)))
                        lastFrame = id;
            wrong += found && info.lostPackets == 0 ? 0 : 1;
            ++images;
        };
    }

    std::atomic<unsigned> images{0};
    std::atomic<unsigned> wrong{0};
    std::atomic<bool> ordered{true};
    std::uint64_t lastStamp = 0;
    std::uint64_t lastFrame = 1;
};

// A free pair of ports for every test, below those that the system gives out; another run of the tests may be
// under way.
std::uint16_t NextPort() {
    static std::uint16_t next = static_cast<std::uint16_t>(20000 + ::getpid() % 5000 * 2);
    return next = static_cast<std::uint16_t>(next + 2);
}

class RemoteTest : public testing::Test {
protected:
    void Publish(std::shared_ptr<IDevice> device, PublishOptions options = {}) {
        camera = std::move(device);
        options.port = port;
        options.address = 0x7F000001;
        ASSERT_EQ(VX3::Publish(camera, options), Status::Ok);
    }
    ~RemoteTest() override {
        if (camera)
            VX3::Withdraw(*camera);
    }
    std::shared_ptr<RemoteDevice> Find(const NET_PARAM& host = LoopbackHost) {
        std::atomic<std::uint16_t> counter{1};
        GevCmdHelper asker(host, {0x7F000001, 0xFF000000, 0, 0xFFFFFFFF}, 1000, counter, port);
        const auto acks = asker.Discovery();
        if (acks.size() != 1)
            return nullptr;
        return std::make_shared<RemoteDevice>("remote", host, acks.front(), nullptr, port, true);
    }
    StatusCode Stream(RemoteDevice& device, Receiver& receiver) {
        const auto stream = device.ShareStream(0);
        if (!stream || Failed(stream->Open(8, nullptr)))
            return Status::NotFound;
        return stream->Start(receiver.Callback(), nullptr, 0, nullptr);
    }

    const std::uint16_t port = NextPort();
    std::shared_ptr<IDevice> camera;
};

TEST_F(RemoteTest, FeaturesAndImagesAreTheCameras) {
    Publish(SmallCamera(200));
    const auto remote = Find();
    ASSERT_NE(remote, nullptr);
    EXPECT_EQ(remote->UniqueName(), "remote@127.0.0.1-255.0.0.0-0.0.0.0:" + std::to_string(port));
    ASSERT_EQ(remote->Connect(), Status::Ok);
    EXPECT_EQ(remote->FeaturesFailure(), "");
    const auto features = remote->ShareConfigurer();
    ASSERT_NE(features, nullptr);
    EXPECT_EQ(features->GetNodeValue("Width").AsInteger(), 100);
    EXPECT_EQ(features->GetNodeValue("PixelFormat").AsInteger(), 0x01080001);
    EXPECT_EQ(features->GetNodeValue("DeviceModelName").AsString(), "Pattern");
    EXPECT_EQ(features->SetNodeValue("AcquisitionFrameRate", 250.0), Status::Ok);
    EXPECT_EQ(features->GetNodeValue("AcquisitionFrameRate").AsFloat(), 250.0);
    ASSERT_EQ(camera->Connect(), Status::Ok);
    EXPECT_EQ(camera->ShareConfigurer()->GetNodeValue("AcquisitionFrameRate").AsFloat(), 250.0);
    EXPECT_EQ(features->GetNodeValue("GevHeartbeatTimeout").AsInteger(), 9000) << "the server's";
    EXPECT_FALSE(remote->ShareStream(0)->IsConfigurable());

    Receiver receiver;
    ASSERT_EQ(Stream(*remote, receiver), Status::Ok);
    EXPECT_TRUE(Eventually([&] { return receiver.images >= 100; }, 5s));
    EXPECT_EQ(receiver.wrong, 0U);
    EXPECT_TRUE(receiver.ordered);
    PublishState state;
    ASSERT_EQ(GetPublishState(*camera, state), Status::Ok);
    EXPECT_EQ(state.streams, 1U);
    EXPECT_GE(state.frames, 100U);
    EXPECT_NE(state.controller.port, 0U);

    const auto stream = remote->ShareStream(0);
    ASSERT_EQ(stream->Pause(), Status::Ok);
    std::this_thread::sleep_for(200ms);
    const unsigned paused = receiver.images;
    std::this_thread::sleep_for(300ms);
    EXPECT_EQ(receiver.images, paused) << "nobody starts what was paused";
    ASSERT_EQ(stream->Restart(), Status::Ok);
    EXPECT_TRUE(Eventually([&] { return receiver.images >= paused + 20; }, 2s));
    EXPECT_EQ(remote->SendText("pause 7"), Status::FromGvcp(Gvcp::AckStatus::Error))
        << "there is no such stream";
    ASSERT_EQ(stream->Stop(), Status::Ok);
    EXPECT_FALSE(camera->ShareStream(0)->IsStreaming());
    ASSERT_EQ(remote->DisConnect(), Status::Ok);
    ASSERT_EQ(GetPublishState(*camera, state), Status::Ok);
    EXPECT_EQ(state.controller.port, 0U);
}

TEST_F(RemoteTest, LocalAndRemoteUserKeepTheirPictures) {
    Publish(SmallCamera(200));
    ASSERT_EQ(camera->Connect(), Status::Ok);
    const auto local = camera->ShareStream(0);
    Receiver here;
    ASSERT_EQ(local->Open(8, nullptr), Status::Ok);
    ASSERT_EQ(local->Start(here.Callback(), nullptr, 0, nullptr), Status::Ok);
    Receiver there;
    const auto remote = Find();
    ASSERT_NE(remote, nullptr);
    ASSERT_EQ(remote->Connect(), Status::Ok);
    ASSERT_EQ(Stream(*remote, there), Status::Ok);
    EXPECT_TRUE(Eventually([&] { return there.images >= 20 && here.images >= 20; }, 5s));
    // Each leaves, and comes back, while the other goes on.
    const auto goesOn = [](const Receiver& receiver) {
        const unsigned before = receiver.images;
        return Eventually([&] { return receiver.images >= before + 10; }, 500ms);
    };
    ASSERT_EQ(remote->ShareStream(0)->Stop(), Status::Ok);
    EXPECT_TRUE(goesOn(here));
    ASSERT_EQ(remote->ShareStream(0)->Start(there.Callback(), nullptr, 0, nullptr), Status::Ok);
    EXPECT_TRUE(goesOn(there));
    ASSERT_EQ(local->Stop(), Status::Ok);
    EXPECT_TRUE(goesOn(there));
    ASSERT_EQ(local->Start(here.Callback(), nullptr, 0, nullptr), Status::Ok);
    EXPECT_TRUE(goesOn(here));
    ASSERT_EQ(remote->DisConnect(), Status::Ok);
    EXPECT_TRUE(goesOn(here));
    EXPECT_EQ(here.wrong + there.wrong, 0U);
    ASSERT_EQ(VX3::Withdraw(*camera), Status::Ok);
    EXPECT_TRUE(goesOn(here)) << "what is no longer published is still the local user's";
    EXPECT_EQ(VX3::Withdraw(*camera), Status::NotFound);
}

TEST_F(RemoteTest, LostPacketsAreAskedForAndComeAgain) {
    PublishOptions options;
    options.faults.dropProbability = 0.05;
    ImageCameraConfig config;
    config.framesPerSecond = 60;
    Publish(MakeImageCamera(config), options); // 640 x 480: 34 to 211 packets
    const auto remote = Find();
    ASSERT_NE(remote, nullptr);
    ASSERT_EQ(remote->Connect(), Status::Ok);
    ASSERT_EQ(remote->ShareConfigurer()->SetNodeValue("GevSCPSPacketSize", 1500), Status::Ok);
    Receiver receiver;
    ASSERT_EQ(Stream(*remote, receiver), Status::Ok);
    EXPECT_TRUE(Eventually([&] { return receiver.images >= 100; }, 10s));
    EXPECT_EQ(receiver.wrong, 0U) << "every packet came in the end";
    PublishState state;
    ASSERT_EQ(GetPublishState(*camera, state), Status::Ok);
    EXPECT_GT(state.packetsResent, 100U);
}

TEST_F(RemoteTest, AHostThatDiesLosesTheCamera) {
    Publish(SmallCamera(100));
    const auto dead = Find();
    ASSERT_NE(dead, nullptr);
    std::atomic<std::uint16_t> counter{100};
    {
        // It takes control, asks for a short heartbeat and a stream, and is never heard of again.
        GevCmdHelper host(LoopbackHost, {0x7F000001, 0, 0, 0xFFFFFFFF}, 1000, counter, port);
        ASSERT_FALSE(Failed(host.WriteRegister(0x0A00, 2)));
        ASSERT_FALSE(Failed(host.WriteRegister(0x0938, 1500)));
        ASSERT_FALSE(Failed(host.WriteRegister(0x0D18, 0x7F000001)));
        ASSERT_FALSE(Failed(host.WriteRegister(0x0D00, 9)));
    }
    EXPECT_TRUE(
        Eventually([&] { return camera->ShareStream(0) && camera->ShareStream(0)->IsStreaming(); }, 2s));
    EXPECT_TRUE(Eventually([&] { return !camera->IsConnected(); }, 3s)) << "nobody uses it any more";
    ASSERT_EQ(dead->Connect(), Status::Ok) << "and the next host may have it";
}

TEST(Published, FourAtMostAndEachOnce) {
    std::vector<std::shared_ptr<IDevice>> cameras;
    auto& list = GevSimuDeviceList::Instance();
    for (unsigned i = 0; i < 4; ++i) {
        ImageCameraConfig config;
        config.serial = std::to_string(i);
        cameras.push_back(MakeImageCamera(config));
        const unsigned slot = list.FindEmptyAndinsertSimuDevice(cameras.back());
        if (slot == GevSimuDeviceList::NoSlot)
            GTEST_SKIP() << "another program of this machine publishes";
        EXPECT_EQ(slot, i);
        EXPECT_EQ(list.Find(cameras.back()->UniqueName())->GvcpPort(), 56000 + 2 * i);
    }
    EXPECT_EQ(Publish(cameras[0]), Status::WrongState);
    EXPECT_EQ(list.FindEmptyAndinsertSimuDevice(SmallCamera()), GevSimuDeviceList::NoSlot);
    EXPECT_EQ(Publish(SmallCamera()), Status::NoBuffer);
    EXPECT_EQ(Publish(nullptr), Status::NotSupported);
    EXPECT_FALSE(list.FindAndDestroySimuDevice("nothing"));
    EXPECT_TRUE(list.FindAndDestroySimuDevice(cameras[1]->UniqueName()));
    EXPECT_EQ(list.FindEmptyAndinsertSimuDevice(cameras[1]), 1U) << "the first slot that is free";
    for (const auto& camera : cameras)
        EXPECT_EQ(Withdraw(*camera), Status::Ok);
}

// The loopback interface, which enumeration never lists, on two ports of choice.
class Loop : public GevInterfaceDev {
public:
    explicit Loop(std::vector<std::uint16_t> ports)
        : GevInterfaceDev("lo", "", "lo", 0, 0), ports_(std::move(ports)) {
        SetNameRule(ModelSerialIp);
    }
    ~Loop() override { Shutdown(); }
    using GevInterfaceDev::EnumSubDevices;

protected:
    std::vector<std::uint16_t> Ports() const override { return ports_; }
    std::shared_ptr<IDevice> MakeDevice(const std::string& name, const GevDiscovered& found,
                                        bool noFilter) override {
        return std::make_shared<RemoteDevice>(name, found.host, found.ack, this, found.port, noFilter,
                                              StateOf(found.control));
    }

private:
    const std::vector<std::uint16_t> ports_;
};

TEST(RemoteInterface, FindsCamerasThatAreAlikeButNotItsOwnProcesss) {
    std::vector<std::shared_ptr<GevSimuDevice>> published;
    std::vector<std::shared_ptr<IDevice>> cameras;
    const std::vector<std::uint16_t> ports{NextPort(), NextPort()};
    PublishOptions options;
    options.address = 0x7F000001;
    for (const std::uint16_t port : ports) {
        cameras.push_back(SmallCamera());
        published.push_back(
            CreateGevSimuDevice(port, static_cast<std::uint16_t>(port + 1), cameras.back(), options));
        ASSERT_EQ(published.back()->StartMonitor(), Status::Ok);
    }
    Loop interface(ports);
    EXPECT_TRUE(interface.EnumSubDevices(LoopbackHost, 0x7F000001).empty())
        << "what this process publishes itself";
    for (const std::uint16_t port : ports)
        OwnPorts::Remove(port); // as if another process did
    const auto start = std::chrono::steady_clock::now();
    const auto found = interface.EnumSubDevices(LoopbackHost, 0x7F000001);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 1500ms) << "all ports at once";
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found.front()->Name(), "Pattern(000001)@127.0.0.1");
    EXPECT_EQ(found.front()->Name(), found.back()->Name());
    EXPECT_NE(found.front()->UniqueName(), found.back()->UniqueName());
    EXPECT_EQ(found.front()->DeviceState(), DEVICE_STATE::Available);
    const auto info = found.front()->GetInfo();
    EXPECT_TRUE(std::any_of(info.begin(), info.end(), [](const auto& entry) {
        return entry.first == "Published";
    })) << "marked as this host's";
}

TEST(RemoteInterface, CamerasAreNotAddedByAddress) {
    RemoteInterfaceDev interface("lo", "", "lo", 0, 0);
    EXPECT_EQ(interface.AddSubDevice("127.0.0.1"), Status::NotSupported);
}

} // namespace
} // namespace VX3::Test
