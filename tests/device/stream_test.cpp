// Streams of images to clients, and the threads and queues under them.
#include "device/FpsCalculator.h"
#include "device/SyncQueue.h"
#include "device/ThreadEx.h"
#include "support/FakeDevice.h"
#include "support/Threads.h"

#include <gtest/gtest.h>

#include <memory>

namespace VX3::Test {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;

// A running stream without a camera, whose client counts, remembers the newest block and may hold.
struct Received {
    Received() {
        stream.Run([this](const ImageInfo& info, IDevice*) {
            lastBlock = info.blockId;
            ++count;
            while (hold)
                std::this_thread::sleep_for(1ms);
        });
    }
    std::atomic<int> count{0};
    std::atomic<std::uint64_t> lastBlock{0};
    std::atomic<bool> hold{false};
    FakeStream stream{nullptr, 0};
};

// A connected camera with one stream.
struct Streaming {
    Streaming() { EXPECT_EQ(device->Connect(), Status::Ok); }
    std::shared_ptr<FakeDevice> device = std::make_shared<FakeDevice>("camera");
    FakeStream* stream = device->AddStream();
};

TEST(Stream, RefusesCallsOutOfOrder) {
    FakeStream stream(nullptr, 3);
    EXPECT_EQ(stream.StreamIndex(), 3U);
    EXPECT_EQ(stream.Start({}, nullptr, 0, nullptr), Status::NotOpen);
    EXPECT_EQ(stream.Close(), Status::NotOpen);
    EXPECT_EQ(stream.Stop(), Status::Ok);
    EXPECT_EQ(stream.Pause(), Status::NotSupported);
    EXPECT_EQ(stream.Restart(), Status::NotSupported);
    EXPECT_EQ(stream.Snap(0, SnapMode::Default), nullptr);

    EXPECT_EQ(stream.Open(1, nullptr), Status::Ok);
    EXPECT_EQ(stream.Open(1, nullptr), Status::AlreadyOpen);
    stream.startStatus = Status::TimeOut;
    EXPECT_EQ(stream.Start({}, nullptr, 0, nullptr), Status::TimeOut);
    EXPECT_FALSE(stream.IsStreaming());
    stream.startStatus = Status::Ok;
    EXPECT_EQ(stream.Start({}, nullptr, 0, nullptr), Status::Ok);
    EXPECT_EQ(stream.Start({}, nullptr, 0, nullptr), Status::AlreadyStreaming);
    EXPECT_EQ(stream.Close(), Status::StillStreaming);
    EXPECT_EQ(stream.SetHistoryFrames(1, FrameType::All), Status::WrongState);
    EXPECT_EQ(stream.Stop(), Status::Ok);
    EXPECT_EQ(stream.Close(), Status::Ok);

    stream.openStatus = Status::NoBuffer;
    EXPECT_EQ(stream.Open(1, nullptr), Status::NoBuffer);
    EXPECT_TRUE(stream.IsOpened()) << "a failed open counts as open";
    EXPECT_EQ(stream.Close(), Status::Ok);
}

TEST(Stream, DeliversInOrderWithItsArguments) {
    const Streaming camera;
    FakeStream* stream = camera.stream;
    int token = 0;
    std::atomic<int> count{0};
    stream->Open(1, nullptr);
    stream->Start(
        [&](std::shared_ptr<IImage> image, IDevice* parent, unsigned int index, unsigned int misc,
            void* user) {
            EXPECT_EQ(parent, camera.device.get());
            EXPECT_EQ(index, 0U);
            EXPECT_EQ(misc, image->MiscValue());
            EXPECT_EQ(user, &token);
            EXPECT_EQ(image->GetImageInfo()->blockId, static_cast<std::uint64_t>(++count));
            if (count == 2)
                throw std::runtime_error("a client's fault ends no thread");
        },
        &token, 0, nullptr);
    for (std::uint64_t block = 1; block <= 50; ++block)
        stream->Insert(block);
    EXPECT_TRUE(Eventually([&] { return count == 50; }));
    EXPECT_GT(stream->Fps(), 0.0);
    EXPECT_LT(steady_clock::now() - stream->StartTimePoint(), 10s);
}

TEST(Stream, DropsAndCountsWhatASlowClientLeavesIn63Slots) {
    Received receiver;
    FakeStream* stream = &receiver.stream;
    receiver.hold = true;
    stream->Insert(0);
    ASSERT_TRUE(Eventually([&] { return receiver.count == 1; })) << "the client holds the first";
    for (std::uint64_t block = 1; block <= 63; ++block)
        stream->Insert(block);
    EXPECT_EQ(stream->GetStatistics()->droppedImages, 0U);
    stream->Insert(64);
    stream->Insert(65);
    const StreamAbs& constant = *stream;
    EXPECT_EQ(constant.GetStatistics().droppedImages, 2U);
    receiver.hold = false;
    EXPECT_TRUE(Eventually([&] { return receiver.count == 64; }));
    EXPECT_EQ(receiver.lastBlock, 63U) << "the newest were dropped";
}

TEST(Stream, SnapTakesTheNextImageAndEndsWithTheStream) {
    Received receiver;
    FakeStream* stream = &receiver.stream;
    const auto start = steady_clock::now();
    EXPECT_EQ(stream->Snap(100, SnapMode::Default), nullptr);
    EXPECT_GE(steady_clock::now() - start, 100ms);
    EXPECT_LT(steady_clock::now() - start, 2s);
    stream->Insert(1); // serves the request that timed out
    std::thread transport([&] {
        for (std::uint64_t block = 2; receiver.lastBlock < 20; ++block) {
            stream->Insert(block);
            std::this_thread::sleep_for(1ms);
        }
    });
    const auto image = stream->Snap(5000, SnapMode::Default);
    ASSERT_NE(image, nullptr);
    EXPECT_GE(image->GetImageInfo()->blockId, 2U) << "older images are not served";
    transport.join();

    std::thread stopper([&] {
        std::this_thread::sleep_for(30ms);
        stream->Stop();
    });
    const auto waiting = steady_clock::now();
    EXPECT_EQ(stream->Snap(60000, SnapMode::Default), nullptr);
    EXPECT_LT(steady_clock::now() - waiting, 10s) << "a stop ends the wait";
    stopper.join();
}

TEST(Stream, EveryThreadThatSnapsGetsTheNextImage) {
    Received receiver;
    FakeStream* stream = &receiver.stream;
    std::atomic<bool> done{false};
    std::thread transport([&] {
        for (std::uint64_t block = 1; !done; ++block) {
            stream->Insert(block);
            std::this_thread::sleep_for(1ms);
        }
    });
    std::atomic<int> seen{0};
    OnThreads(3, [&](unsigned int) {
        for (int i = 0; i < 50; ++i)
            seen += stream->Snap(5000, SnapMode::Default) != nullptr ? 1 : 0;
    });
    done = true;
    transport.join();
    EXPECT_EQ(seen, 150);
}

TEST(Stream, HistoryKeepsTheNewestThatQualify) {
    FakeStream stream(nullptr, 0);
    using Blocks = std::vector<std::uint64_t>;
    const std::tuple<unsigned int, FrameType, Blocks> runs[] = {{5, FrameType::All, {4, 5, 6, 7, 8}},
                                                                {3, FrameType::Resent, {3, 5, 7}},
                                                                {9, FrameType::Incomplete, {3, 6}},
                                                                {9, static_cast<FrameType>(4), {}},
                                                                {0, FrameType::All, {}}};
    for (const auto& [keep, type, expected] : runs) {
        EXPECT_EQ(stream.SetHistoryFrames(keep, type), Status::Ok);
        std::atomic<int> count{0};
        stream.Run([&](const ImageInfo&, IDevice*) { ++count; });
        for (std::uint64_t block = 1; block <= 8; ++block)
            stream.Insert(block, block % 2, block % 3 == 0);
        EXPECT_TRUE(Eventually([&] { return count == 8; }));
        EXPECT_EQ(stream.GetHistoryFrame(0), nullptr) << "not while streaming";
        stream.Stop();
        Blocks kept;
        while (const auto frame = stream.GetHistoryFrame(static_cast<unsigned int>(kept.size())))
            kept.push_back(frame->GetImageInfo()->blockId);
        EXPECT_EQ(kept, expected);
        stream.Close(); // waits for a callback that may still be returning
    }
}

TEST(Stream, TheCallbackMayStopCloseAndReopen) {
    const Streaming camera;
    std::atomic<int> step{0};
    for (int round = 1; round <= 20; ++round) {
        ASSERT_EQ(camera.device->Connect(), Status::Ok);
        camera.stream->Run([&](const ImageInfo&, IDevice*) { // its opening waits for the old delivery thread
            EXPECT_EQ(camera.stream->Stop(), Status::Ok);
            EXPECT_EQ(camera.stream->Close(), Status::Ok);
            EXPECT_EQ(camera.stream->Open(1, nullptr), Status::AlreadyOpen)
                << "this thread is still delivering";
            EXPECT_EQ(camera.device->DisConnect(), Status::Ok);
            ++step;
        });
        camera.stream->Insert(1);
        camera.stream->Insert(2); // waits behind the first, and nobody is called for it
        ASSERT_TRUE(Eventually([&] { return step == round; }));
    }
}

TEST(Stream, TheCallbackMayDropTheLastReferenceToItsCamera) {
    for (int round = 0; round < 20; ++round) {
        Streaming camera;
        const std::weak_ptr<FakeDevice> watched = camera.device;
        std::atomic<bool> handedOver{false}, done{false};
        camera.stream->Run([&](const ImageInfo&, IDevice*) {
            while (!handedOver)
                std::this_thread::yield();
            camera.device.reset();
            done = true;
        });
        camera.stream->Insert(1);
        handedOver = true;
        ASSERT_TRUE(Eventually([&] { return done.load(); }));
        EXPECT_TRUE(watched.expired());
    }
}

TEST(Stream, DisconnectWaitsForACallbackThatDisconnectsToo) {
    const Streaming camera;
    for (int round = 0; round < 30; ++round) {
        EXPECT_EQ(camera.device->Connect(), Status::Ok);
        std::atomic<bool> entered{false};
        camera.stream->Run([&](const ImageInfo&, IDevice* parent) {
            entered = true;
            std::this_thread::sleep_for(2ms);
            const StatusCode status = parent->DisConnect();
            EXPECT_TRUE(status == Status::Ok || status == Status::WrongState);
        });
        camera.stream->Insert(1);
        ASSERT_TRUE(Eventually([&] { return entered.load(); }));
        EXPECT_EQ(camera.device->DisConnect(), Status::Ok);
        camera.stream->Close();
    }
}

TEST(ThreadEx, CompletionRunsOnlyWhenTheBodyEndedByItself) {
    std::atomic<int> completions{0};
    std::atomic<bool> leave{true};
    ThreadEx<int> thread(
        [&](const std::atomic<bool>& running, int step) {
            EXPECT_EQ(step, 7);
            while (running && !leave)
                std::this_thread::yield();
        },
        [&] { ++completions; });
    ASSERT_TRUE(thread.Start(7));
    ASSERT_TRUE(Eventually([&] { return completions == 1; }));
    leave = false;
    ASSERT_TRUE(Eventually([&] { return thread.Start(7); })) << "restarts once the body has ended";
    EXPECT_FALSE(thread.Start(7));
    thread.Stop();
    EXPECT_FALSE(thread.IsRunning());
    EXPECT_TRUE(thread.IsFinished());
    EXPECT_EQ(completions, 1);
}

TEST(ThreadEx, MayBeStoppedAndDestroyedOnItsOwnThread) {
    std::atomic<bool> ended{false};
    auto owner = std::make_shared<std::unique_ptr<ThreadEx<>>>();
    std::atomic<bool> handedOver{false};
    *owner = std::make_unique<ThreadEx<>>([&, owner](const std::atomic<bool>& running) {
        while (!handedOver)
            std::this_thread::yield();
        (*owner)->Stop();
        EXPECT_FALSE(running);
        owner->reset(); // lets this thread go
        EXPECT_FALSE(running) << "the flag outlives the owner";
        ended = true;
    });
    (*owner)->Start();
    owner.reset();
    handedOver = true;
    EXPECT_TRUE(Eventually([&] { return ended.load(); }));
}

TEST(ThreadEx, StopIsSafeFromManyThreads) {
    for (int round = 0; round < 50; ++round) {
        ThreadEx<> thread([](const std::atomic<bool>& running) {
            while (running)
                std::this_thread::yield();
        });
        thread.Start();
        OnThreads(2, [&](unsigned int) { thread.Stop(); });
        EXPECT_TRUE(thread.IsFinished());
    }
}

TEST(SyncQueue, HoldsOneLessThanItsSlotsInOrder) {
    SyncQueue<int, 4> queue;
    for (int lap = 0; lap < 3; ++lap) {
        for (int item = 1; item <= 4; ++item) {
            EXPECT_EQ(queue.IsFull(), item == 4);
            EXPECT_EQ(queue.Push(int(item)), item != 4);
        }
        int item = 0;
        for (int expected = 1; expected <= 3; ++expected) {
            ASSERT_TRUE(queue.Pop(item, 0ms));
            EXPECT_EQ(item, expected);
        }
        EXPECT_FALSE(queue.Pop(item, 0ms));
    }
}

TEST(SyncQueue, KeepsNothingAliveThatWasTakenOrCleared) {
    SyncQueue<std::shared_ptr<int>, 4> queue;
    for (const bool take : {true, false}) {
        auto item = std::make_shared<int>(1);
        const std::weak_ptr<int> watched = item;
        queue.Push(std::move(item));
        if (take)
            ASSERT_TRUE(queue.Pop(item, 0ms));
        else
            queue.Clear();
        item.reset();
        EXPECT_TRUE(watched.expired());
        EXPECT_EQ(queue.Size(), 0U);
    }
}

TEST(SyncQueue, WakeEndsAWaitEarly) {
    SyncQueue<int, 4> queue;
    std::atomic<bool> stop{false};
    const auto start = steady_clock::now();
    std::thread consumer([&] {
        int item = 0;
        EXPECT_FALSE(queue.Pop(item, 30s, [&] { return stop.load(); }));
    });
    std::this_thread::sleep_for(20ms);
    stop = true;
    queue.Wake();
    consumer.join();
    EXPECT_LT(steady_clock::now() - start, 5s);
    int item = 0;
    const auto empty = steady_clock::now();
    EXPECT_FALSE(queue.Pop(item, 50ms));
    EXPECT_GE(steady_clock::now() - empty, 50ms);
}

TEST(FpsCalculator, FollowsTheLastSecond) {
    constexpr std::uint64_t Second = FpsCalculator<128>::TicksPerSecond;
    FpsCalculator<128> fps;
    std::uint64_t now = 1000 * Second;
    EXPECT_EQ(fps.Get(), 0.0);
    for (int i = 0; i < 20; ++i)
        fps.Update(now += Second / 10);
    EXPECT_NEAR(fps.Get(), 10.0, 0.1);
    for (int i = 0; i < 500; ++i)
        fps.Update(now += Second / 1000); // more than 128 in a second: all of them count
    EXPECT_NEAR(fps.Get(), 1000.0, 2.0);
    fps.Update(now += 2 * Second); // nothing else within the second: the distance to the frame before
    EXPECT_NEAR(fps.Get(), 0.5, 0.001);
    fps.Update(now - 5 * Second); // the clock was set back
    EXPECT_LT(fps.Get(), 0.001);
    fps.Reset();
    EXPECT_EQ(fps.Get(), 0.0);
    fps.Update(now);
    fps.Update(now);
    EXPECT_EQ(fps.Get(), 0.0) << "two frames in one tick have no rate";
}

} // namespace
} // namespace VX3::Test
