// The whole road of a frame, from a simulated camera through device and stream to the client's callback.
#include "device/InterfaceDevAbs.h"
#include "gev/GevDevice.h"
#include "support/TestCamera.h"
#include "support/Threads.h"
#include "vx3/image/IImage.h"

#include <atomic>
#include <chrono>
#include <cstring>
#include <gtest/gtest.h>

namespace VX3::Test {
namespace {

using namespace Simulated;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// What a client's callback counts; it runs on the delivery thread alone.
struct Client {
    std::atomic<unsigned> frames{0};
    std::atomic<unsigned> wrong{0}; // not the pixels, the size or the order the camera sent
    std::atomic<std::uint64_t> last{0};
    std::uint32_t width = 0;

    ImageCallback Callback() {
        return [this](std::shared_ptr<IImage> image, IDevice*, unsigned, unsigned, void*) {
            const ImageInfo& info = *image->GetImageInfo();
            const std::size_t bytes = info.ImageDataSize();
            const bool right =
                info.lostPackets == 0 && info.width == width && info.blockId > last &&
                std::memcmp(image->GetImageBuff(), TestCamera::ExpectedData(info.blockId, bytes), bytes) == 0;
            wrong += right ? 0 : 1;
            last = info.blockId;
            ++frames;
        };
    }
};

class GevStreaming : public testing::Test {
protected:
    void Prepare(const CameraConfig& config) {
        camera = std::make_unique<TestCamera>(config);
        // Keeps its heartbeat time-out of 3 s.
        camera->AddAckRule({AckFault::ErrorStatus, Gvcp::Command::WriteReg, Bootstrap::HeartbeatTimeout});
        device = std::make_shared<GevDevice>("camera", TestCamera::HostParam(), camera->DiscoveryAck(),
                                             nullptr, true, camera->GvcpPort());
        ASSERT_EQ(device->Connect(), Status::Ok);
    }
    void Script(std::uint64_t frames, double framesPerSecond, unsigned channel = 0) {
        StreamScript script;
        script.frames = frames;
        script.framesPerSecond = framesPerSecond;
        camera->SetStreamScript(script, channel);
    }
    void Start(Client& client, unsigned channel = 0) {
        IStream* stream = device->GetStream(channel);
        ASSERT_NE(stream, nullptr);
        client.width = camera->Register(CameraRegister::Width);
        client.last = 0;
        client.frames = 0;
        ASSERT_EQ(stream->Open(0, nullptr), Status::Ok);
        ASSERT_GE(stream->Start(client.Callback(), nullptr, 0, nullptr), 0);
    }
    void StopAndClose(unsigned channel = 0) {
        IStream* stream = device->GetStream(channel);
        EXPECT_GE(stream->Stop(), 0);
        EXPECT_GE(stream->Close(), 0);
    }

    std::unique_ptr<TestCamera> camera;
    std::shared_ptr<GevDevice> device;
};

TEST_F(GevStreaming, FramesArriveAndTheNextStreamMayHaveAnotherSize) {
    Prepare({});
    Client client;
    for (const std::uint32_t width : {640U, 1280U, 320U}) {
        ASSERT_EQ(device->GetConfigurer()->SetNodeValue("Width", width), Status::Ok);
        Script(50, 500);
        Start(client);
        EXPECT_EQ(camera->Register(CameraRegister::ParamsLocked), 1U);
        EXPECT_LT(device->GetConfigurer()->SetNodeValue("Width", 64U), 0) << "locked while streaming";
        EXPECT_TRUE(Eventually([&] { return client.frames == 50; }, 5s)) << client.frames;
        EXPECT_EQ(device->DeviceState(), DEVICE_STATE::Acquiring);
        StopAndClose();
        EXPECT_EQ(client.wrong, 0U);
        EXPECT_EQ(camera->Register(Bootstrap::StreamPort), 0U);
        EXPECT_EQ(camera->Register(CameraRegister::ParamsLocked), 0U);
    }
    EXPECT_EQ(device->DeviceState(), DEVICE_STATE::Connected);
}

TEST_F(GevStreaming, ChannelsStreamSideBySide) {
    CameraConfig config;
    config.streamChannels = 2;
    Prepare(config);
    Client clients[2];
    Script(0, 200, 0);
    Script(0, 100, 1);
    Start(clients[0], 0);
    Start(clients[1], 1);
    EXPECT_TRUE(Eventually([&] { return clients[0].frames > 40 && clients[1].frames > 20; }, 5s));
    StopAndClose(0);
    StopAndClose(1);
    EXPECT_EQ(clients[0].wrong + clients[1].wrong, 0U);
}

TEST_F(GevStreaming, ACameraThatVanishesMidStreamIsLostClosedAndOpenedAgain) {
    Prepare({});
    Client client;
    Script(0, 200);
    Start(client);
    EXPECT_TRUE(Eventually([&] { return client.frames > 20; }, 5s));
    camera->Vanish();
    // The camera's heartbeat time-out, then one read with its retry.
    EXPECT_TRUE(Eventually([&] { return device->DeviceState() == DEVICE_STATE::Lost; }, 8s));
    const auto start = Clock::now();
    EXPECT_EQ(device->DisConnect(), Status::Ok); // stops and closes the stream
    EXPECT_LT(Clock::now() - start, 1s) << "a lost camera is not waited for";
    EXPECT_EQ(client.wrong, 0U);

    camera->Return(true);
    device = std::make_shared<GevDevice>("camera", TestCamera::HostParam(), camera->DiscoveryAck(), nullptr,
                                         true, camera->GvcpPort());
    ASSERT_EQ(device->Connect(), Status::Ok);
    Script(20, 200);
    Start(client);
    EXPECT_TRUE(Eventually([&] { return client.frames == 20; }, 5s));
    device.reset(); // while the stream is open
    EXPECT_EQ(client.wrong, 0U);
    EXPECT_FALSE(camera->Controlled());
}

} // namespace
} // namespace VX3::Test
