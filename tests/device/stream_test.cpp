#include "support/FakeDevice.h"

#include <gtest/gtest.h>

#include <deque>

using namespace VX3;
using namespace VX3::Testing;
using namespace std::chrono_literals;
using std::chrono::steady_clock;

namespace {

// A callback that counts and remembers the newest block.
struct Receiver {
    ImageCallback Callback() {
        return [this](std::shared_ptr<IImage> image, IDevice*, unsigned int, unsigned int, void*) {
            lastBlock = image->GetImageInfo()->blockId;
            ++count;
            while (hold)
                std::this_thread::sleep_for(1ms);
        };
    }
    std::atomic<int> count{0};
    std::atomic<std::uint64_t> lastBlock{0};
    std::atomic<bool> hold{false};
};

std::shared_ptr<FakeStream> Streaming(const ImageCallback& callback) {
    auto stream = std::make_shared<FakeStream>(nullptr, 0);
    EXPECT_EQ(stream->Open(1, nullptr), Status::Ok);
    EXPECT_EQ(stream->Start(callback, nullptr, 0, nullptr), Status::Ok);
    return stream;
}

} // namespace

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
    auto device = std::make_shared<FakeDevice>("camera");
    FakeStream* stream = device->AddStream();
    EXPECT_EQ(device->Connect(), Status::Ok);
    int token = 0;
    std::atomic<int> count{0};
    EXPECT_EQ(stream->Open(1, nullptr), Status::Ok);
    const StatusCode started = stream->Start(
        [&](std::shared_ptr<IImage> image, IDevice* parent, unsigned int index, unsigned int misc,
            void* user) {
            EXPECT_EQ(parent, device.get());
            EXPECT_EQ(index, 0U);
            EXPECT_EQ(misc, image->MiscValue());
            EXPECT_EQ(user, &token);
            EXPECT_EQ(image->GetImageInfo()->blockId, static_cast<std::uint64_t>(++count));
            if (count == 2)
                throw std::runtime_error("a client's fault ends no thread");
        },
        &token, 0, nullptr);
    EXPECT_EQ(started, Status::Ok);
    for (std::uint64_t block = 1; block <= 50; ++block)
        stream->Insert(block);
    EXPECT_TRUE(Eventually([&] { return count == 50; }));
    EXPECT_GT(stream->Fps(), 0.0);
    EXPECT_LT(steady_clock::now() - stream->StartTimePoint(), 10s);
}

TEST(Stream, DropsAndCountsWhatASlowClientLeavesIn63Slots) {
    Receiver receiver;
    receiver.hold = true;
    const auto stream = Streaming(receiver.Callback());
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
    Receiver receiver;
    const auto stream = Streaming(receiver.Callback());
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

TEST(Stream, HistoryKeepsTheNewestThatQualify) {
    std::deque<Receiver> receivers; // a callback may still be returning when the next run begins
    FakeStream stream(nullptr, 0);
    EXPECT_EQ(stream.Open(1, nullptr), Status::Ok);
    const auto run = [&](unsigned int keep, FrameType type) {
        EXPECT_EQ(stream.SetHistoryFrames(keep, type), Status::Ok);
        Receiver& receiver = receivers.emplace_back();
        EXPECT_EQ(stream.Start(receiver.Callback(), nullptr, 0, nullptr), Status::Ok);
        for (std::uint64_t block = 1; block <= 8; ++block)
            stream.Insert(block, block % 2, block % 3 == 0);
        EXPECT_TRUE(Eventually([&] { return receiver.count == 8; }));
        EXPECT_EQ(stream.GetHistoryFrame(0), nullptr) << "not while streaming";
        stream.Stop();
        std::vector<std::uint64_t> kept;
        while (const auto frame = stream.GetHistoryFrame(static_cast<unsigned int>(kept.size())))
            kept.push_back(frame->GetImageInfo()->blockId);
        return kept;
    };
    using Blocks = std::vector<std::uint64_t>;
    EXPECT_EQ(run(5, FrameType::All), (Blocks{4, 5, 6, 7, 8}));
    EXPECT_EQ(run(3, FrameType::Resent), (Blocks{3, 5, 7}));
    EXPECT_EQ(run(9, FrameType::Incomplete), (Blocks{3, 6}));
    EXPECT_EQ(run(9, static_cast<FrameType>(4)), Blocks{});
    EXPECT_EQ(run(0, FrameType::All), Blocks{});
}

TEST(Stream, TheCallbackMayStopCloseAndReopen) {
    auto device = std::make_shared<FakeDevice>("camera");
    FakeStream* stream = device->AddStream();
    EXPECT_EQ(device->Connect(), Status::Ok);
    std::atomic<int> step{0};
    const auto callback = [&](std::shared_ptr<IImage>, IDevice*, unsigned int, unsigned int, void*) {
        EXPECT_EQ(stream->Stop(), Status::Ok);
        EXPECT_EQ(stream->Close(), Status::Ok);
        EXPECT_EQ(stream->Open(1, nullptr), Status::AlreadyOpen) << "this thread is still delivering";
        EXPECT_EQ(device->DisConnect(), Status::Ok);
        ++step;
    };
    for (int round = 1; round <= 20; ++round) {
        ASSERT_EQ(device->Connect(), Status::Ok);
        ASSERT_EQ(stream->Open(1, nullptr), Status::Ok) << "waits for the old delivery thread";
        ASSERT_EQ(stream->Start(callback, nullptr, 0, nullptr), Status::Ok);
        stream->Insert(1);
        stream->Insert(2); // waits behind the first, and nobody is called for it
        ASSERT_TRUE(Eventually([&] { return step == round; }));
    }
}

TEST(Stream, TheCallbackMayDropTheLastReferenceToItsCamera) {
    for (int round = 0; round < 20; ++round) {
        auto device = std::make_shared<FakeDevice>("camera");
        std::weak_ptr<FakeDevice> watched = device;
        FakeStream* stream = device->AddStream();
        EXPECT_EQ(device->Connect(), Status::Ok);
        EXPECT_EQ(stream->Open(1, nullptr), Status::Ok);
        std::atomic<bool> handedOver{false};
        std::atomic<bool> done{false};
        const StatusCode started = stream->Start(
            [&](std::shared_ptr<IImage>, IDevice*, unsigned int, unsigned int, void*) {
                while (!handedOver)
                    std::this_thread::yield();
                device.reset();
                done = true;
            },
            nullptr, 0, nullptr);
        EXPECT_EQ(started, Status::Ok);
        stream->Insert(1);
        handedOver = true;
        ASSERT_TRUE(Eventually([&] { return done.load(); }));
        EXPECT_TRUE(watched.expired());
    }
}

TEST(Stream, DisconnectWaitsForACallbackThatDisconnectsToo) {
    auto device = std::make_shared<FakeDevice>("camera");
    FakeStream* stream = device->AddStream();
    for (int round = 0; round < 30; ++round) {
        EXPECT_EQ(device->Connect(), Status::Ok);
        EXPECT_EQ(stream->Open(1, nullptr), Status::Ok);
        std::atomic<bool> entered{false};
        const StatusCode started = stream->Start(
            [&](std::shared_ptr<IImage>, IDevice* parent, unsigned int, unsigned int, void*) {
                entered = true;
                std::this_thread::sleep_for(2ms);
                const StatusCode status = parent->DisConnect();
                EXPECT_TRUE(status == Status::Ok || status == Status::WrongState);
            },
            nullptr, 0, nullptr);
        EXPECT_EQ(started, Status::Ok);
        stream->Insert(1);
        ASSERT_TRUE(Eventually([&] { return entered.load(); }));
        EXPECT_EQ(device->DisConnect(), Status::Ok);
        stream->Close();
    }
}
