// One camera and its stream, shared by a local and a remote user.
#include "device/RemotableDevice.h"
#include "device/RemotableStream.h"
#include "device/StopForOne.h"
#include "support/FakeDevice.h"
#include "support/Threads.h"

#include <gtest/gtest.h>

#include <functional>

namespace VX3::Test {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;
using Calls = std::vector<std::string>;

class SharedStream final : public RemotableStream<FakeStream> {
public:
    using RemotableStream::RemotableStream;
    ~SharedStream() override { Shutdown(); }
};

class SharedDevice final : public RemotableDevice<FakeDevice> {
public:
    using RemotableDevice::RemotableDevice;
    ~SharedDevice() override { Shutdown(); }
};

// A camera with one stream, and what each of the two users has received.
struct Shared {
    ImageCallback Callback(unsigned int user) {
        return [this, user](std::shared_ptr<IImage> image, IDevice* from, unsigned int, unsigned int,
                            void* data) {
            EXPECT_EQ(from, device.get());
            EXPECT_EQ(data, &tokens[user]);
            order.Add((user == 0 ? "local " : "remote ") + std::to_string(image->GetImageInfo()->blockId));
            if (inside[user])
                inside[user]();
        };
    }
    StatusCode StartLocally() { return stream->Start(Callback(0), &tokens[0], 3, nullptr); }
    StatusCode StartRemotely() { return stream->StartRemotely(Callback(1), &tokens[1], 5, nullptr); }
    void RunBoth() {
        ASSERT_EQ(device->Connect(), Status::Ok);
        ASSERT_EQ(device->ConnectRemotely(), Status::Ok);
        ASSERT_EQ(stream->Open(4, nullptr), Status::Ok);
        ASSERT_EQ(StartLocally(), Status::Ok);
        ASSERT_EQ(StartRemotely(), Status::Ok);
        device->calls.Take();
    }
    // The users who get the image, in the order they are called.
    Calls Deliver(std::uint64_t block) {
        stream->Insert(block);
        const std::string number = " " + std::to_string(block);
        Calls all;
        Eventually(
            [&] {
                for (auto& call : order.Take())
                    all.push_back(std::move(call));
                return all.size() >= expected;
            },
            2s);
        std::this_thread::sleep_for(10ms); // nobody else
        for (auto& call : order.Take())
            all.push_back(std::move(call));
        for (auto& call : all)
            EXPECT_EQ(call.substr(call.find(' ')), number);
        for (auto& call : all)
            call.resize(call.find(' '));
        return all;
    }

    std::shared_ptr<SharedDevice> device = std::make_shared<SharedDevice>("camera");
    SharedStream* stream = device->AddStream<SharedStream>();
    CallLog order;
    std::size_t expected = 1;
    int tokens[2]{};
    std::function<void()> inside[2];
};

const Calls Both{"local", "remote"};

TEST(TwoUsers, OneConnectionCarriesBothAndEndsWithTheLast) {
    Shared camera;
    SharedDevice& device = *camera.device;
    EXPECT_EQ(device.MUSerDisConnect(0), Status::NotConnected);
    EXPECT_EQ(device.MUserConnect(2), Status::NotFound);
    device.connectStatus = Status::TimeOut;
    EXPECT_EQ(device.ConnectRemotely(), Status::TimeOut);
    EXPECT_FALSE(device.IsConnectedRemotely());
    device.connectStatus = Status::Ok;

    EXPECT_EQ(device.Connect(), Status::Ok);
    EXPECT_EQ(device.Connect(), Status::Ok) << "as on any device";
    EXPECT_EQ(device.MUserConnect(0), Status::AlreadyConnected);
    EXPECT_EQ(device.DisConnectRemotely(), Status::AlreadyConnected) << "the remote user was not";
    EXPECT_EQ(device.ConnectRemotely(), Status::Ok);
    EXPECT_EQ(device.ConnectRemotely(), Status::AlreadyConnected);
    EXPECT_EQ(device.Connect(DeviceAccess::Monitor), Status::WrongState);
    EXPECT_EQ(device.calls.Take(), (Calls{"connect", "connect", "post connect"})) << "one that failed, one";

    EXPECT_EQ(device.DisConnect(), Status::Ok);
    EXPECT_TRUE(device.IsConnected() && !device.IsConnectedLocally());
    EXPECT_EQ(device.MUSerDisConnect(0), Status::NotConnected);
    EXPECT_EQ(device.DisConnect(), Status::Ok);
    EXPECT_EQ(device.calls.Take(), Calls{}) << "the remote user is still there";
    EXPECT_EQ(device.DisConnectRemotely(), Status::Ok);
    EXPECT_FALSE(device.IsConnected());

    EXPECT_EQ(device.Connect(DeviceAccess::Monitor), Status::Ok);
    EXPECT_EQ(device.ConnectRemotely(), Status::WrongState) << "nobody can serve what may only be read";
    EXPECT_EQ(device.DisConnect(), Status::Ok);
}

TEST(TwoUsers, NobodyJoinsAConnectionWhoseCameraIsGone) {
    Shared camera;
    ASSERT_EQ(camera.device->ConnectRemotely(), Status::Ok);
    camera.device->ReportLost();
    EXPECT_EQ(camera.device->Connect(), Status::DeviceLost);
    EXPECT_FALSE(camera.device->IsConnectedLocally());
    EXPECT_EQ(camera.device->DisConnectRemotely(), Status::Ok);
    EXPECT_EQ(camera.device->Connect(), Status::Ok);
}

TEST(TwoUsers, BothGetEveryImageOfOneAcquisition) {
    Shared camera;
    SharedStream& stream = *camera.stream;
    camera.inside[0] = [] { throw std::runtime_error("the local user's fault"); };
    ASSERT_EQ(camera.device->ConnectRemotely(), Status::Ok);
    ASSERT_EQ(camera.StartRemotely(), Status::Ok);
    EXPECT_EQ(camera.StartRemotely(), Status::NotFound);
    EXPECT_EQ(camera.Deliver(1), Calls{"remote"});
    ASSERT_EQ(camera.device->Connect(), Status::Ok);
    EXPECT_EQ(camera.StartLocally(), Status::NotOpen) << "not by this user";
    EXPECT_FALSE(stream.IsStreamingLocally());
    ASSERT_EQ(stream.Open(4, nullptr), Status::Ok);
    EXPECT_EQ(stream.Open(4, nullptr), Status::AlreadyOpen);
    ASSERT_EQ(camera.StartLocally(), Status::Ok);
    EXPECT_EQ(camera.StartLocally(), Status::AlreadyStreaming);
    EXPECT_EQ(camera.device->calls.Take(),
              (Calls{"connect", "post connect", "open 5", "start 5", "acquisition start"}));
    camera.expected = 2;
    EXPECT_EQ(camera.Deliver(2), Both);

    EXPECT_EQ(stream.MUserStart({}, nullptr, 0, nullptr, 3), Status::NotFound);
    EXPECT_EQ(stream.MUserStop(3), Status::NotFound);
    EXPECT_EQ(stream.Close(), Status::StillStreaming);
    EXPECT_EQ(stream.Stop(), Status::Ok);
    EXPECT_EQ(stream.Stop(), Status::Ok);
    EXPECT_EQ(stream.Close(), Status::Ok) << "for the local user";
    EXPECT_EQ(stream.Close(), Status::NotOpen);
    camera.expected = 1;
    EXPECT_EQ(camera.Deliver(3), Calls{"remote"});
    EXPECT_EQ(camera.device->calls.Take(), Calls{}) << "acquisition went on";
    EXPECT_EQ(stream.StopRemotely(), Status::Ok);
    EXPECT_EQ(stream.StopRemotely(), Status::NotFound);
    EXPECT_FALSE(stream.IsOpened()) << "the last one closes";
}

// The operations underneath: a stop ends acquisition for both, and a restart goes on for whoever is left.
TEST(TwoUsers, AStopKeepsTheOtherUserForARestart) {
    Shared camera;
    camera.RunBoth();
    SharedStream& stream = *camera.stream;
    EXPECT_EQ(stream.MUserStop(0), Status::Ok);
    EXPECT_FALSE(stream.IsStreaming());
    EXPECT_TRUE(stream.IsStreamingRemotely());
    EXPECT_EQ(stream.MUserStop(0), Status::NotFound);
    EXPECT_EQ(stream.Restart(), Status::Ok);
    EXPECT_EQ(camera.device->calls.Take(),
              (Calls{"acquisition stop", "stop", "start 5", "acquisition start"}));
    EXPECT_EQ(camera.Deliver(1), Calls{"remote"});

    ASSERT_EQ(camera.StartLocally(), Status::Ok);
    EXPECT_EQ(stream.Pause(), Status::Ok);
    EXPECT_EQ(stream.Pause(), Status::NotFound);
    EXPECT_TRUE(stream.IsStreamingLocally() && stream.IsStreamingRemotely());
    EXPECT_EQ(stream.Restart(), Status::Ok);
    EXPECT_EQ(stream.Restart(), Status::Ok) << "it runs";
    camera.expected = 2;
    EXPECT_EQ(camera.Deliver(2), Both);

    stream.startStatus = Status::TimeOut;
    EXPECT_EQ(stream.Pause(), Status::Ok);
    EXPECT_EQ(stream.Restart(), Status::TimeOut);
    EXPECT_EQ(stream.MUserStop(1), Status::NotFound) << "it does not run, but he has left";
    EXPECT_FALSE(stream.IsStreamingRemotely());
    EXPECT_EQ(camera.StartRemotely(), Status::TimeOut);
    EXPECT_FALSE(stream.IsStreamingRemotely()) << "a start that failed leaves nobody behind";
    EXPECT_EQ(stream.Stop(), Status::Ok);
    EXPECT_EQ(stream.Restart(), Status::WrongState) << "for nobody";
}

TEST(TwoUsers, WhenOneLeavesTheOtherGoesOn) {
    for (const bool localLeaves : {true, false})
        for (const bool whole : {true, false}) { // disconnects, or stops only
            Shared camera;
            camera.RunBoth();
            const auto start = steady_clock::now();
            const StatusCode status =
                localLeaves ? whole ? camera.device->DisConnect() : StopForLocalUser(*camera.stream)
                : whole ? camera.device->DisConnectRemotely()
                            : StopForRemoteUser(*camera.stream);
            EXPECT_EQ(status, Status::Ok);
            EXPECT_LT(steady_clock::now() - start, 500ms);
            EXPECT_EQ(camera.Deliver(7), Calls{localLeaves ? "remote" : "local"});
            EXPECT_EQ(localLeaves ? camera.device->IsConnectedLocally()
                                  : camera.device->IsConnectedRemotely(),
                      !whole);
            EXPECT_EQ(localLeaves ? camera.device->DisConnectRemotely() : camera.device->DisConnect(),
                      Status::Ok);
            EXPECT_EQ(camera.device->IsConnected(), !whole);
        }
}

TEST(TwoUsers, ImagesThatWaitReachTheLastWhoStops) {
    Shared camera;
    ASSERT_EQ(camera.device->Connect(), Status::Ok);
    ASSERT_EQ(camera.stream->Open(1, nullptr), Status::Ok);
    std::atomic<bool> hold{true};
    std::atomic<int> delivered{0};
    camera.inside[0] = [&] {
        ++delivered;
        while (hold)
            std::this_thread::sleep_for(1ms);
    };
    ASSERT_EQ(camera.StartLocally(), Status::Ok);
    for (std::uint64_t block = 1; block <= 3; ++block)
        camera.stream->Insert(block);
    ASSERT_TRUE(Eventually([&] { return delivered == 1; }));
    EXPECT_EQ(camera.stream->Stop(), Status::Ok);
    hold = false;
    EXPECT_TRUE(Eventually([&] { return delivered == 3; }));
}

TEST(TwoUsers, WhoHasLeftIsCalledNoMore) {
    Shared camera;
    std::atomic<int> entered{0};
    std::atomic<bool> returned{false};
    camera.inside[1] = [&] {
        ++entered;
        std::this_thread::sleep_for(50ms);
        returned = true;
    };
    camera.RunBoth();
    camera.stream->Insert(1);
    ASSERT_TRUE(Eventually([&] { return entered == 1; }));
    EXPECT_EQ(camera.stream->StopRemotely(), Status::Ok);
    EXPECT_TRUE(returned) << "the stop waited for the call";
    EXPECT_EQ(camera.stream->Restart(), Status::Ok);
    camera.order.Take();
    EXPECT_EQ(camera.Deliver(2), Calls{"local"});
    EXPECT_EQ(entered, 1);
}

TEST(TwoUsers, LeaveInsideTheirCallbacks) {
    Shared camera;
    std::atomic<int> left{0};
    std::atomic<bool> localToo{false};
    camera.inside[1] = [&] {
        camera.device->DisConnectRemotely();
        ++left;
    };
    camera.inside[0] = [&] {
        if (!localToo)
            return;
        camera.device->DisConnect();
        ++left;
    };
    camera.RunBoth();
    camera.stream->Insert(1);
    ASSERT_TRUE(Eventually([&] { return left == 1; }));
    camera.order.Take();
    EXPECT_EQ(camera.Deliver(2), Calls{"local"});
    localToo = true;
    camera.stream->Insert(3);
    EXPECT_TRUE(Eventually([&] { return left == 2; }));
    EXPECT_FALSE(camera.device->IsConnected());
}

TEST(TwoUsers, EndsForBothWhenTheDeviceGoesAway) {
    Shared camera;
    camera.RunBoth();
    EXPECT_EQ(camera.device->DisConnectA(), Status::Ok);
    EXPECT_FALSE(camera.device->IsConnected() || camera.device->IsConnectedRemotely() ||
                 camera.stream->IsStreamingRemotely() || camera.stream->IsOpened());
    camera.RunBoth();
    camera.device.reset(); // stops, closes and joins whoever is there
}

// Both come and go at once, over and over.
TEST(TwoUsers, ComeAndGoAtTheSameTime) {
    Shared camera;
    std::atomic<bool> feeding{true};
    std::atomic<int> delivered{0};
    const auto count = [&](const std::shared_ptr<IImage>&, IDevice*, unsigned int, unsigned int, void*) {
        ++delivered;
    };
    std::thread feeder([&] {
        while (feeding) {
            if (camera.stream->IsStreaming())
                camera.stream->Insert(1);
            std::this_thread::sleep_for(100us);
        }
    });
    OnThreads(2, [&](unsigned int user) {
        for (int round = 0; round < 200; ++round) {
            if (user == 0) {
                EXPECT_EQ(camera.device->Connect(), Status::Ok);
                EXPECT_EQ(camera.stream->Open(1, nullptr), Status::Ok);
                EXPECT_EQ(camera.stream->Start(count, nullptr, 0, nullptr), Status::Ok);
                EXPECT_EQ(camera.stream->Stop(), Status::Ok);
                EXPECT_EQ(camera.device->DisConnect(), Status::Ok);
            } else {
                EXPECT_EQ(camera.device->ConnectRemotely(), Status::Ok);
                EXPECT_EQ(camera.stream->StartRemotely(count, nullptr, 1, nullptr), Status::Ok);
                EXPECT_EQ(camera.device->DisConnectRemotely(), Status::Ok);
            }
        }
    });
    feeding = false;
    feeder.join();
    EXPECT_FALSE(camera.device->IsConnected());
    EXPECT_FALSE(camera.stream->IsOpened());
}

} // namespace
} // namespace VX3::Test
