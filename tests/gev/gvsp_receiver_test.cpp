// The socket receiver against a simulated camera on loopback, with every method of reading the socket.
#include "gev/receive/GvspReceiver.h"

#include "gev/receive/ReceiveClock.h"
#include "image/ImagePoolRecycle.h"
#include "support/LogCapture.h"
#include "support/TestCamera.h"
#include "support/Threads.h"
#include "vx3/core/Utilities.h"
#include "vx3/image/IImagePool.h"

#include <atomic>
#include <chrono>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <thread>
#include <vector>

namespace VX3::Test {
namespace {

using namespace Simulated;

using std::chrono::milliseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;

#if defined(__has_feature)
#define VX3_HAS(feature) __has_feature(feature)
#else
#define VX3_HAS(feature) 0
#endif
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__) || VX3_HAS(thread_sanitizer) ||            \
    VX3_HAS(address_sanitizer)
constexpr bool Slowed = true;
#else
constexpr bool Slowed = false;
#endif

class CountingPool : public ImagePoolRecycle {
public:
    CountingPool() : ImagePoolRecycle(1ULL << 30, "test") {}
    std::unique_ptr<IImage> Create(const ImageInfo* info, const unsigned char* data,
                                   unsigned int len) override {
        ++created;
        return ImagePoolRecycle::Create(info, data, len);
    }
    std::atomic<unsigned> created{0};
};

// A receiver that checks every image against what the camera sent.
class Reception {
public:
    Reception(ReceiveMethod method, const CameraConfig& config)
        : camera(config),
          receiver({method, camera.GvcpPort(), 0}),
          frameBytes_(config.width * config.height) {
        param.host = TestCamera::HostParam();
        param.camera = camera.CameraParam();
        param.packetSize = config.packetSize;
        param.bufferSize = static_cast<std::uint32_t>(frameBytes_);
        param.resendSupported = 1;
        param.name = "test";
    }

    StatusCode Listen() {
        const StatusCode port = receiver.StartListen(
            param, pool, [this](std::unique_ptr<IImage>&& image, unsigned int) { Check(*image); }, 0);
        if (!Failed(port))
            EXPECT_TRUE(receiver.WaitUntilReady(seconds(5)));
        return port;
    }
    void Run(const StreamScript& script) {
        const StatusCode port = Listen();
        ASSERT_GT(port, 0);
        if (beforeStream)
            beforeStream(static_cast<std::uint32_t>(port));
        camera.SetStreamScript(script);
        camera.StartStream({TestCamera::HostParam().ip, static_cast<std::uint32_t>(port)});
        EXPECT_TRUE(camera.WaitStreamDone(seconds(120)));
        (void)Eventually([&] { return Counts().blocks + Counts().lostBlocks >= script.frames; }, seconds(3));
        if (afterStream)
            afterStream();
        EXPECT_EQ(receiver.StopListen(), Status::Ok);
    }
    Statistics Counts() { return receiver.GetStatistics()->Snapshot(); }

    TestCamera camera;
    std::shared_ptr<CountingPool> pool = std::make_shared<CountingPool>();
    GvspReceiver receiver;
    GevStreamParam param;
    std::uint64_t images = 0;
    std::uint64_t complete = 0;
    std::uint64_t broken = 0; // said to be complete, and not
    std::uint64_t disordered = 0;
    std::uint64_t forged = 0; // show what the camera did not send
    std::function<void(std::uint32_t port)> beforeStream;
    std::function<void()> afterStream;

    static constexpr std::uint8_t Forged = 0xEE;

private:
    void Check(const IImage& image) {
        const ImageInfo& info = *image.GetImageInfo();
        ++images;
        static const std::string lie(64, static_cast<char>(Forged));
        if (info.lostPackets == 0) {
            ++complete;
            if (std::memcmp(image.GetImageBuff(), TestCamera::ExpectedData(info.blockId, frameBytes_),
                            frameBytes_) != 0)
                ++broken;
        } else if (::memmem(image.GetImageBuff(), frameBytes_, lie.data(), lie.size()) != nullptr) {
            ++forged; // looked for where the whole is not compared: this is the receive thread
        }
        if (previous_ != 0 && info.blockId <= previous_ && !(previous_ == 65535 && info.blockId == 1))
            ++disordered;
        previous_ = info.blockId;
    }

    std::size_t frameBytes_;
    std::uint64_t previous_ = 0;
};

CameraConfig Megabyte(std::uint32_t packetSize = 1500) {
    CameraConfig config;
    config.width = 1024;
    config.height = 1024;
    config.packetSize = packetSize;
    return config;
}

class GvspReceiverMethods : public ::testing::TestWithParam<ReceiveMethod> {};

TEST_P(GvspReceiverMethods, ReorderingAndDuplicatesCostNothing) {
    Reception reception(GetParam(), Megabyte(9000));
    StreamScript script;
    script.frames = Slowed ? 50 : 500;
    script.bytesPerSecond = Slowed ? 3e7 : 4e8;
    script.reorderWindow = 32;
    script.reorderAcrossFrames = true;
    script.duplicateProbability = 0.02;
    script.firstBlockId = 65401; // and over the wrap
    reception.Run(script);
    EXPECT_EQ(reception.complete, script.frames);
    EXPECT_EQ(reception.broken + reception.disordered, 0U);
    // Nothing was lost; what is asked for is what a busy machine was slow to send.
    std::uint64_t asked = 0;
    for (const auto& [packet, times] : reception.camera.ResendRequests())
        asked += times;
    EXPECT_LE(asked, reception.camera.Counts().packets / 50);
}

TEST_P(GvspReceiverMethods, OnePercentOfLossIsMadeGoodAndOnlyTheCameraIsHeard) {
    Block lie; // of another camera: leaders of 8 x 8, and payload where packets belong
    lie.info.payloadType = Gvsp::PayloadType::Image;
    lie.info.image = {0x01080001, 8, 8, 0, 0, 0, 0};
    lie.data.push_back(SharedBytes::Of(std::vector<std::uint8_t>(1 << 20, Reception::Forged)));
    StreamScript lies;
    lies.frames = 5;
    lies.bytesPerSecond = 5e6;
    lies.blocks = {lie};
    for (const bool resend : {true, false}) {
        std::optional<LogCapture> log; // of every request, it would slow a full link down
        if (!resend)
            log.emplace();
        Reception reception(GetParam(), Megabyte());
        reception.param.resendSupported = resend ? 1 : 0;
        TestCamera stranger(Megabyte());
        stranger.SetStreamScript(lies);
        reception.beforeStream = [&](std::uint32_t port) {
            stranger.StartStream({TestCamera::HostParam().ip, port});
            EXPECT_TRUE(Eventually([&] { return reception.Counts().foreignPackets > 0; }));
        };
        reception.afterStream = [&] {
            EXPECT_TRUE(stranger.WaitStreamDone(seconds(10)));
            EXPECT_TRUE(
                Eventually([&] { return reception.Counts().foreignPackets == stranger.Counts().packets; }));
        };
        StreamScript script;
        script.frames = Slowed ? 20 : resend ? 500 : 100;
        script.bytesPerSecond = Slowed ? 2e7 : 1.2e8; // a full link of 1 Gbit/s
        script.dropProbability = 0.01;
        script.resendDropProbability = 0.01;
        reception.Run(script);
        EXPECT_EQ(reception.images, script.frames);
        EXPECT_EQ(reception.complete == script.frames, resend);
        EXPECT_EQ(reception.broken + reception.disordered + reception.forged, 0U);
        const Statistics counts = reception.Counts();
        EXPECT_EQ(counts.missingPackets + counts.incompleteBlocks + counts.lostBlocks == 0, resend);
        EXPECT_GE(counts.resentPackets, resend ? script.frames * 7 / 2 : 0);
        EXPECT_TRUE(!log || log->Count("a datagram from " + Ipv4Text(stranger.Ip()) + ":") == 1);
    }
}

INSTANTIATE_TEST_SUITE_P(Methods, GvspReceiverMethods,
                         ::testing::Values(ReceiveMethod::RecvFrom, ReceiveMethod::RecvMmsg,
                                           ReceiveMethod::Gro));

TEST(GvspReceiver, ExtendedIdsAndALostTailOfTheLastFrame) {
    Reception reception(ReceiveMethod::Best, Megabyte());
    StreamScript script;
    script.frames = 5;
    script.extendedIds = true;
    script.firstBlockId = 70000;
    script.bytesPerSecond = 5e7;
    const std::uint32_t last = (1024 * 1024 + 1451) / 1452 + 1;
    script.drop = {{70004, last - 1}, {70004, last}};
    reception.Run(script);
    EXPECT_EQ(reception.complete, 5U);
    EXPECT_EQ(reception.broken, 0U);
}

TEST(GvspReceiver, OpensThePathToACameraWithASourcePort) {
    CameraConfig config;
    config.reportsSourcePort = true;
    Reception reception(ReceiveMethod::RecvFrom, config);
    ASSERT_GT(reception.Listen(), 0);
    EXPECT_TRUE(Eventually([&] { return reception.camera.OpeningDatagram() == 21; }, seconds(2)));
    EXPECT_EQ(reception.receiver.StopListen(), Status::Ok);
    Reception without(ReceiveMethod::RecvFrom, CameraConfig{});
    ASSERT_GT(without.Listen(), 0);
    EXPECT_EQ(without.camera.OpeningDatagram(), 0U);
}

TEST(GvspReceiver, StartsOnceAndStopsPromptly) {
    Reception reception(ReceiveMethod::Best, CameraConfig{});
    EXPECT_EQ(reception.receiver.StopListen(), Status::Generic);
    EXPECT_EQ(reception.receiver.AllocOneBuff(), Status::WrongState);
    EXPECT_EQ(reception.receiver.ResetListen(), Status::WrongState);
    const auto start = steady_clock::now();
    EXPECT_FALSE(reception.receiver.WaitUntilReady(milliseconds(20)));
    EXPECT_GE(steady_clock::now() - start, milliseconds(20));
    ASSERT_GT(reception.Listen(), 0);
    EXPECT_EQ(reception.Listen(), Status::WrongState);
    const unsigned blocks = reception.pool->created;
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(reception.receiver.AllocOneBuff(), Status::Ok);
    EXPECT_EQ(reception.receiver.SetGvspParser(nullptr), Status::NotSupported);
    std::this_thread::sleep_for(milliseconds(100)); // deep in its wait
    EXPECT_EQ(reception.pool->created, blocks + 2);
    const auto before = steady_clock::now();
    EXPECT_EQ(reception.receiver.StopListen(), Status::Ok);
    EXPECT_LT(steady_clock::now() - before, milliseconds(100));
    ASSERT_GT(reception.Listen(), 0) << "and again";

    Reception nowhere(ReceiveMethod::Best, CameraConfig{});
    nowhere.param.host.ip = 0xC0000201; // not ours
    EXPECT_EQ(nowhere.Listen(), Status::Generic);
}

TEST(ReceiveClock, IsReadAfterAWaitAndOnceInSixteenDatagrams) {
    static int readings;
    readings = 0;
    ReceiveClock clock([] { return steady_clock::time_point(seconds(++readings)); });
    const std::pair<std::size_t, bool> calls[] = {{1, true}, {15, false}, {1, false}, {15, false},
                                                  {0, true}, {15, false}, {40, false}};
    const int expected[] = {2, 2, 3, 3, 4, 4, 5};
    for (std::size_t i = 0; i < std::size(calls); ++i) {
        EXPECT_EQ(clock.Advance(calls[i].first, calls[i].second).time_since_epoch(), seconds(expected[i]));
        EXPECT_EQ(clock.Now().time_since_epoch(), seconds(expected[i]));
    }
}

TEST(GvspReceiver, StoppingMidStreamEndsTheCallbacks) {
    for (int round = 0; round < 5; ++round) {
        Reception reception(ReceiveMethod::Best, CameraConfig{});
        const StatusCode port = reception.Listen();
        ASSERT_GT(port, 0);
        StreamScript script;
        script.bytesPerSecond = 1e8;
        reception.camera.SetStreamScript(script);
        reception.camera.StartStream({TestCamera::HostParam().ip, static_cast<std::uint32_t>(port)});
        std::this_thread::sleep_for(milliseconds(30));
        EXPECT_EQ(reception.receiver.StopListen(), Status::Ok);
        const std::uint64_t images = reception.images;
        std::this_thread::sleep_for(milliseconds(20));
        EXPECT_EQ(reception.images, images);
    }
}

TEST(StreamSocket, SaysWhatTheReceiveBufferLacks) {
    LogCapture log;
    StreamSocket socket;
    ASSERT_EQ(socket.Open(0x7F000001), Status::Ok);
    EXPECT_GT(socket.GrantedBytes(), 0U);
    GevStreamParam param;
    param.packetSize = 1500;
    param.bufferSize = 1000;
    socket.WarnIfTooSmall(param);
    EXPECT_EQ(log.Count("net.core.rmem_max"), 0U);
    param.bufferSize = 0xF0000000; // more than anybody grants
    socket.WarnIfTooSmall(param);
    EXPECT_EQ(log.Count("sysctl -w net.core.rmem_max="), 1U);
}

} // namespace
} // namespace VX3::Test
