#include "image/AbsBuffer.h"
#include "image/BufferCreator.h"
#include "image/DefaultPools.h"
#include "image/RecycleBufferPool.h"
#include "image/SimpleBufferPool.h"
#include "image/UniqueBuffPool.h"
#include "vx3/core/IntfDevType.h"
#include "vx3/core/Logger.h"
#include "vx3/core/Status.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <thread>

namespace VX3 {
namespace {

constexpr auto Ok = static_cast<unsigned int>(Status::Ok);

TEST(SimpleBuffers, RoundUpAndAreNotKept) {
    SimpleBufferPool pool(nullptr);
    EXPECT_EQ(pool.Name(), "SimpleBufferPool");
    EXPECT_EQ(pool.ObjType(), TypeIds::BufferPool);
    EXPECT_TRUE(pool.IsBlockSizeAvailable(UINT32_MAX));
    auto block = pool.NewBuffer(1000);
    EXPECT_EQ(block->capacity, 1024U);
    EXPECT_EQ(block->size, 1000U);
    EXPECT_EQ(pool.UsingSize(), 1024U);
    auto second = pool.NewBuffer(1);
    EXPECT_EQ(second->id, block->id + 1);
    EXPECT_EQ(pool.FreeBuffer(std::move(block)), Ok);
    EXPECT_NE(block, nullptr); // left to the caller
    EXPECT_EQ(pool.UsingSize(), 1U);
    auto foreign = std::make_unique<BaseBuffer>(4096U, 4096U, 0U, nullptr);
    EXPECT_EQ(pool.FreeBuffer(std::move(foreign)), Ok);
    EXPECT_EQ(pool.UsingSize(), 0U); // never below
    // Beyond the last power of two the block is still as large as it says.
    auto huge = pool.NewBuffer(0x80000001U);
    EXPECT_GE(huge->capacity, 0x80000001U);
}

TEST(RecycledBuffers, OldestOfTheClassComesBackFirst) {
    RecycleBufferPool pool(1U << 20, 0, 0, nullptr);
    EXPECT_EQ(pool.Name(), "RecycleBufferPool");
    EXPECT_EQ(pool.NewBuffer(0), nullptr);
    EXPECT_EQ(pool.NewBuffer(0x80000001U), nullptr);
    auto a = pool.NewBuffer(1000);
    auto b = pool.NewBuffer(600);
    const unsigned int idA = a->id;
    const unsigned int idB = b->id;
    EXPECT_EQ(pool.FreeBuffer(std::move(b)), Ok);
    EXPECT_EQ(b, nullptr); // NOLINT: taken
    EXPECT_EQ(pool.FreeBuffer(std::move(a)), Ok);
    EXPECT_EQ(pool.CurrentSize(), 2048U);
    EXPECT_EQ(pool.UsingSize(), 0U);
    auto first = pool.NewBuffer(513);
    EXPECT_EQ(first->id, idB);
    EXPECT_EQ(first->size, 513U);
    EXPECT_EQ(pool.NewBuffer(1024)->id, idA);
    EXPECT_EQ(pool.CurrentSize(), 0U);
    EXPECT_EQ(pool.NewBuffer(512)->id, idB + 1); // another class: a fresh one
}

TEST(RecycledBuffers, CeilingIsTestedBeforeAdding) {
    const auto keptOfThree = [](unsigned long long poolSize) {
        RecycleBufferPool pool(poolSize, 0, 0, nullptr);
        std::unique_ptr<BaseBuffer> blocks[] = {pool.NewBuffer(4096), pool.NewBuffer(4096),
                                                pool.NewBuffer(4096)};
        for (auto& block : blocks)
            EXPECT_EQ(pool.FreeBuffer(std::move(block)), Ok);
        return pool.CurrentSize() / 4096;
    };
    EXPECT_EQ(keptOfThree(0), 0U);
    EXPECT_EQ(keptOfThree(4096), 1U);
    EXPECT_EQ(keptOfThree(5000), 2U);
}

TEST(RecycledBuffers, PreallocatedAndForeignBlocks) {
    RecycleBufferPool pool(0, 3000, 4, "pre");
    EXPECT_EQ(pool.CurrentSize(), 4U * 4096U);
    EXPECT_EQ(pool.NewBuffer(4000)->id, 0U);
    EXPECT_EQ(RecycleBufferPool(0, 0, 4, "none").CurrentSize(), 0U);
    for (const unsigned int capacity : {0U, 1000U, 4096U}) {
        auto empty = std::make_unique<BaseBuffer>(capacity, capacity, 0U, nullptr);
        EXPECT_EQ(pool.FreeBuffer(std::move(empty)), static_cast<unsigned int>(Status::NotAvailable))
            << capacity;
        EXPECT_NE(empty, nullptr);
    }
}

TEST(RingBuffers, RotateWhoeverHoldsThem) {
    UniqueBuffPool pool(100, 3, nullptr);
    EXPECT_EQ(pool.PoolSize(), 300U);
    EXPECT_EQ(pool.CurrentSize(), 300U);
    EXPECT_FALSE(pool.IsBlockSizeAvailable(101));
    EXPECT_EQ(pool.NewBuffer(101), nullptr);
    std::vector<std::unique_ptr<BaseBuffer>> blocks;
    for (unsigned int i = 0; i < 7; ++i) {
        blocks.push_back(pool.NewBuffer(60));
        EXPECT_EQ(blocks.back()->id, i % 3);
        EXPECT_EQ(blocks.back()->capacity, 60U);
    }
    EXPECT_TRUE(
        std::all_of(blocks[2]->data.get(), blocks[2]->data.get() + 60, [](auto c) { return c == 0; }));
    EXPECT_EQ(blocks[0]->data.get(), blocks[3]->data.get());
    EXPECT_EQ(blocks[1]->data.get(), blocks[0]->data.get() + 100);
    for (auto& block : blocks) {
        EXPECT_EQ(pool.FreeBuffer(std::move(block)), Ok);
        EXPECT_EQ(block->data, nullptr); // NOLINT: the arena stays
    }
    EXPECT_EQ(pool.UsingSize(), 0U);
    EXPECT_EQ(UniqueBuffPool(100, 0, "none").NewBuffer(1), nullptr);
}

TEST(Buffers, FallBackToTheDefaultPoolAndSaySo) {
    const auto ring = std::make_shared<UniqueBuffPool>(10, 2, "small ring");
    const std::size_t before = VxLoggerGetLogItems().size();
    const std::uint64_t used = DefaultSimpleBufferPool()->UsingSize();
    {
        const AbsBuffer buffer(100, ring);
        EXPECT_EQ(buffer.BlockSize(), 128U);
        EXPECT_EQ(DefaultSimpleBufferPool()->UsingSize(), used + 128);
        EXPECT_EQ(buffer.ObjType(), TypeIds::Buffer);
    }
    EXPECT_EQ(DefaultSimpleBufferPool()->UsingSize(), used);
    ASSERT_EQ(VxLoggerGetLogItems().size(), before + 1);
    EXPECT_EQ(VxLoggerGetLogItems().back()->Level(), "Warning");
    EXPECT_EQ(VxLoggerGetLogItems().back()->Info(),
              "Get a Null Buffer from small ring, will trying to use DefaultSimpleBufferPool...");
    EXPECT_EQ(AbsBuffer(0, DefaultRecycleBufferPool()).BlockSize(), 0U);
    EXPECT_EQ(BufferCreator::Create(5, nullptr)->BlockSize(), 8U);
}

TEST(Buffers, KeepTheirPoolAlive) {
    auto ring = std::make_shared<UniqueBuffPool>(16, 1, "ring");
    const std::weak_ptr<UniqueBuffPool> watched = ring;
    auto buffer = BufferCreator::Create(16, std::move(ring));
    std::memset(buffer->Pointer(), 1, 16);
    EXPECT_FALSE(watched.expired());
    buffer.reset();
    EXPECT_TRUE(watched.expired());
}

TEST(Defaults, ExistUnderTheirNames) {
    EXPECT_EQ(DefaultSimpleBufferPool()->Name(), "System Default SimpleBufferPool");
    EXPECT_EQ(DefaultRecycleBufferPool()->Name(), "System Default RecycleBufferPool");
    EXPECT_EQ(DefaultRecycleBufferPool()->PoolSize(), 0x100000000ULL);
    EXPECT_EQ(HistogramBufferPool()->Name(), "Histogram buffer pool");
    EXPECT_EQ(HistogramBufferPool()->CurrentSize(), 256U * 0x40000ULL);
    EXPECT_EQ(ProfileBufferPool()->Name(), "Histogram buffer pool");
    EXPECT_EQ(ProfileBufferPool()->CurrentSize(), 0U);
}

// Each block is marked by its holder and must still carry the mark when it is given back: nobody else got it.
TEST(Threads, RecycledBlocksHaveOneHolder) {
    constexpr std::uint64_t Ceiling = 64 * 1024;
    const auto pool = std::make_shared<RecycleBufferPool>(Ceiling, 0, 0, "shared");
    std::vector<std::thread> threads;
    std::atomic<int> clashes{0};
    for (unsigned int t = 1; t <= 4; ++t)
        threads.emplace_back([&, t] {
            std::minstd_rand random(t);
            std::deque<std::unique_ptr<IBuffer>> held;
            for (int i = 0; i < 3000; ++i) {
                held.push_back(BufferCreator::Create(1024U << random() % 4, pool));
                std::memset(held.back()->Pointer(), static_cast<int>(t), held.back()->BlockSize());
                if (held.size() < 6)
                    continue;
                const IBuffer& oldest = *held.front();
                if (oldest.Pointer()[0] != t || oldest.Pointer()[oldest.BlockSize() - 1] != t)
                    ++clashes;
                held.pop_front();
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(clashes, 0);
    EXPECT_EQ(pool->UsingSize(), 0U);
    EXPECT_LT(pool->CurrentSize(), Ceiling + 8 * 1024); // by one block at most
}

TEST(Threads, RingSlotsAreHandedOutEvenly) {
    UniqueBuffPool pool(64, 7, "ring");
    std::vector<std::vector<unsigned int>> slots(4);
    std::vector<std::thread> threads;
    for (auto& mine : slots)
        threads.emplace_back([&] {
            for (int i = 0; i < 700; ++i) {
                auto block = pool.NewBuffer(64);
                mine.push_back(block->id);
                pool.FreeBuffer(std::move(block));
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    std::vector<int> count(7);
    for (const auto& mine : slots)
        for (const unsigned int slot : mine)
            ++count.at(slot);
    EXPECT_EQ(count, std::vector<int>(7, 400));
    EXPECT_EQ(pool.UsingSize(), 0U);
}

} // namespace
} // namespace VX3
