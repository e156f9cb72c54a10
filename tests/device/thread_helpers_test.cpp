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

TEST(SyncQueue, LosesNothingBetweenThreads) {
    SyncQueue<int, 8> queue;
    constexpr int PerProducer = 20000;
    std::atomic<long> sum{0};
    std::atomic<int> taken{0};
    OnThreads(4, [&](unsigned int thread) {
        int item = 0;
        for (int i = 1; thread < 2 && i <= PerProducer; ++i)
            while (!queue.Push(int(i)))
                std::this_thread::yield();
        while (thread >= 2 && taken < 2 * PerProducer)
            if (queue.Pop(item, 5ms)) {
                sum += item;
                ++taken;
            }
    });
    EXPECT_EQ(sum, 2L * PerProducer * (PerProducer + 1) / 2);
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
