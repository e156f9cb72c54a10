// Pools of buffers and of images: classes, ceilings, rings, foreign and lying requests, many threads.
#include "image/AbsBuffer.h"
#include "image/AbsImage.h"
#include "image/BufferCreator.h"
#include "image/DefaultPools.h"
#include "image/ImagePoolRecycle.h"
#include "image/ImagePoolRingA.h"
#include "image/SimpleBufferPool.h"
#include "support/LogCapture.h"
#include "support/TestImages.h"
#include "support/Threads.h"
#include "vx3/core/IntfDevType.h"
#include "vx3/core/LastFailure.h"
#include "vx3/core/Status.h"

#include <array>
#include <atomic>
#include <cstring>
#include <deque>
#include <gtest/gtest.h>
#include <random>

namespace VX3::Test {
namespace {

constexpr std::uint64_t KiB = 1U << 10;
constexpr std::uint64_t MiB = 1U << 20;

// A header whose data buffer has exactly `mebibytes` (a power of two).
ImageInfo HeaderOf(unsigned int mebibytes) {
    return Header(1024, 1024 * mebibytes - 100);
}

std::uint64_t MakeAndDrop(IImagePool& pool, const ImageInfo& info) {
    return pool.Create(&info, nullptr, 0)->BufferID();
}

// An image that no pool made.
std::unique_ptr<IImage> Foreign(const ImageInfo& info) {
    return std::make_unique<AbsImage>(&info, nullptr, 0U);
}

TEST(SimpleBuffers, RoundUpAndAreNotKept) {
    SimpleBufferPool pool(nullptr);
    EXPECT_EQ(pool.Name(), "SimpleBufferPool");
    EXPECT_EQ(pool.ObjType(), TypeIds::BufferPool);
    EXPECT_TRUE(pool.IsBlockSizeAvailable(UINT32_MAX));
    auto block = pool.NewBuffer(1000);
    EXPECT_EQ(std::pair(block->capacity, block->size), std::pair(1024U, 1000U));
    EXPECT_EQ(pool.UsingSize(), 1024U);
    EXPECT_EQ(pool.NewBuffer(1)->id, block->id + 1);
    EXPECT_EQ(pool.FreeBuffer(std::move(block)), Ok);
    EXPECT_NE(block, nullptr) << "left to the caller";
    EXPECT_EQ(pool.UsingSize(), 1U);
    EXPECT_EQ(pool.FreeBuffer(std::make_unique<BaseBuffer>(4096U, 4096U, 0U, nullptr)), Ok);
    EXPECT_EQ(pool.UsingSize(), 0U) << "never below";
    EXPECT_EQ(pool.FreeBuffer(nullptr), NotAvailable);
    EXPECT_GE(pool.NewBuffer(0x80000001U)->capacity, 0x80000001U) << "beyond the last power of two";
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
    EXPECT_EQ(std::pair(pool.CurrentSize(), pool.UsingSize()), std::pair(2 * KiB, 0 * KiB));
    const auto first = pool.NewBuffer(513);
    EXPECT_EQ(std::pair(first->id, first->size), std::pair(idB, 513U));
    EXPECT_EQ(pool.NewBuffer(1024)->id, idA);
    EXPECT_EQ(pool.CurrentSize(), 0U);
    EXPECT_EQ(pool.NewBuffer(512)->id, idB + 1) << "another class: a fresh one";
}

TEST(RecycledBuffers, CeilingPreallocatedAndForeignBlocks) {
    const std::pair<unsigned long long, unsigned int> ceilings[] = {{0, 0}, {4096, 1}, {5000, 2}};
    for (const auto& [poolSize, kept] : ceilings) { // tested before adding
        RecycleBufferPool pool(poolSize, 0, 0, nullptr);
        std::unique_ptr<BaseBuffer> blocks[] = {pool.NewBuffer(4096), pool.NewBuffer(4096),
                                                pool.NewBuffer(4096)};
        for (auto& block : blocks)
            EXPECT_EQ(pool.FreeBuffer(std::move(block)), Ok);
        EXPECT_EQ(pool.CurrentSize(), kept * 4096ULL) << poolSize;
    }
    RecycleBufferPool pool(0, 3000, 4, "pre");
    EXPECT_EQ(pool.CurrentSize(), 4U * 4096U);
    EXPECT_EQ(pool.NewBuffer(4000)->id, 0U);
    EXPECT_EQ(RecycleBufferPool(0, 0, 4, "none").CurrentSize(), 0U);
    for (const unsigned int capacity : {0U, 1000U, 4096U}) {
        auto empty = std::make_unique<BaseBuffer>(capacity, capacity, 0U, nullptr);
        EXPECT_EQ(pool.FreeBuffer(std::move(empty)), NotAvailable) << capacity;
        EXPECT_NE(empty, nullptr);
    }
}

TEST(RingBuffers, RotateWhoeverHoldsThem) {
    UniqueBuffPool pool(100, 3, nullptr);
    EXPECT_EQ(pool.PoolSize(), 300U);
    EXPECT_FALSE(pool.IsBlockSizeAvailable(101));
    EXPECT_EQ(pool.NewBuffer(101), nullptr);
    std::vector<std::unique_ptr<BaseBuffer>> blocks;
    for (unsigned int i = 0; i < 7; ++i) {
        blocks.push_back(pool.NewBuffer(60));
        EXPECT_EQ(std::pair(blocks[i]->id, blocks[i]->capacity), std::pair(i % 3, 60U));
        EXPECT_EQ(blocks[i]->data.get(), blocks[0]->data.get() + i % 3 * 100);
        EXPECT_EQ(blocks[i]->data[59], 0);
    }
    for (auto& block : blocks) {
        EXPECT_EQ(pool.FreeBuffer(std::move(block)), Ok);
        EXPECT_EQ(block->data, nullptr) << "the arena stays"; // NOLINT
    }
    EXPECT_EQ(UniqueBuffPool(100, 0, "none").NewBuffer(1), nullptr);
    std::array<std::atomic<int>, 3> turns{};
    OnThreads(4, [&](unsigned int) {
        for (int i = 0; i < 300; ++i) {
            auto block = pool.NewBuffer(64);
            pool.FreeBuffer(std::move(block));
            ++turns.at(block->id);
        }
    });
    for (const auto& count : turns)
        EXPECT_EQ(count, 400) << "each slot comes up equally often";
    EXPECT_EQ(pool.UsingSize(), 0U);
}

TEST(Buffers, FallBackToTheDefaultPoolAndKeepTheirOwnAlive) {
    auto ring = std::make_shared<UniqueBuffPool>(16, 2, "small ring");
    const LogCapture log;
    const std::uint64_t used = DefaultSimpleBufferPool()->UsingSize();
    {
        const AbsBuffer buffer(100, ring);
        EXPECT_EQ(buffer.BlockSize(), 128U);
        EXPECT_EQ(DefaultSimpleBufferPool()->UsingSize(), used + 128);
        EXPECT_EQ(buffer.ObjType(), TypeIds::Buffer);
    }
    EXPECT_EQ(DefaultSimpleBufferPool()->UsingSize(), used);
    EXPECT_EQ(
        log.Count(
            "Warning: Get a Null Buffer from small ring, will trying to use DefaultSimpleBufferPool...: the "
            "pool has no block of 100 bytes"),
        1U);
    EXPECT_EQ(AbsBuffer(0, DefaultRecycleBufferPool()).BlockSize(), 0U);
    EXPECT_EQ(BufferCreator::Create(5, nullptr)->BlockSize(), 8U);
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
    EXPECT_EQ(HistogramBufferPool()->Name() + ProfileBufferPool()->Name(),
              "Histogram buffer poolHistogram buffer pool");
    EXPECT_EQ(HistogramBufferPool()->CurrentSize(), 256U * 0x40000ULL);
    EXPECT_EQ(ProfileBufferPool()->CurrentSize(), 0U);
}

TEST(RecyclePool, KeepsFromOneMebibyteAndGivesTheOldestOfTheClassANewHeader) {
    const auto pool = ImagePoolFactory::CreateRecycleImagePool(1 << 30, "pool");
    EXPECT_EQ(std::pair(pool->PoolType(), pool->ObjType()), std::pair(2U, TypeIds::ImagePool));
    const ImageInfo small = Header(640, 480);
    MakeAndDrop(*pool, small);
    EXPECT_EQ(pool->PoolSize(), 0U);
    auto inner = Foreign(small);
    EXPECT_EQ(pool->Release(std::move(inner)), NotAvailable);
    EXPECT_NE(inner, nullptr); // NOLINT: not taken
    EXPECT_EQ(pool->Release(nullptr), Ok);
    // Requests below 1 MiB are served from the smallest class that is kept.
    const std::uint64_t id = MakeAndDrop(*pool, HeaderOf(1));
    EXPECT_EQ(pool->Create(&small, nullptr, 0)->BufferID(), id);

    const std::uint64_t kept = pool->PoolSize();
    const ImageInfo info = Header(1920, 1080);
    auto a = pool->Create(&info, nullptr, 0);
    auto b = pool->Create(&info, nullptr, 0);
    const std::uint64_t idA = a->BufferID();
    const std::uint64_t idB = b->BufferID();
    b.reset();
    a.reset();
    EXPECT_EQ(pool->PoolSize(), kept + 8 * MiB);
    const std::vector<unsigned char> bytes(100, 0x5A);
    ImageInfo next = Header(1500, 1500);
    next.blockId = 9;
    const auto first = pool->Create(&next, bytes.data(), 100);
    EXPECT_EQ(first->BufferID(), idB);
    EXPECT_EQ(std::memcmp(first->GetImageInfo(), &next, sizeof(next)), 0);
    EXPECT_EQ(first->GetImageBuff()[99], 0x5A);
    EXPECT_EQ(pool->PoolSize(), kept + 4 * MiB);
    EXPECT_EQ(pool->Create(&info, nullptr, 0)->BufferID(), idA);
}

TEST(RecyclePool, EvictsWhatWasReleasedLongestAgoInAnyClass) {
    const auto pool = ImagePoolFactory::CreateRecycleImagePool(7 * MiB, "pool");
    const ImageInfo one = HeaderOf(1);
    const ImageInfo two = HeaderOf(2);
    const ImageInfo four = HeaderOf(4);
    const std::uint64_t idTwo = MakeAndDrop(*pool, two);
    const std::uint64_t idOne = MakeAndDrop(*pool, one);
    const std::uint64_t idFour = MakeAndDrop(*pool, four);
    EXPECT_EQ(pool->PoolSize(), 7 * MiB);
    // The 2 MiB image is taken and released again: now the 1 MiB image is the oldest.
    EXPECT_EQ(MakeAndDrop(*pool, two), idTwo);
    const auto spareOne = pool->Create(&one, nullptr, 0);
    EXPECT_EQ(spareOne->BufferID(), idOne);
    auto spareTwo = Foreign(two);
    const std::uint64_t idSpare = spareTwo->BufferID();
    EXPECT_EQ(pool->Release(std::move(spareTwo)), Ok); // 8 MiB: the 4 MiB image goes
    EXPECT_EQ(pool->PoolSize(), 4 * MiB);
    const auto first = pool->Create(&two, nullptr, 0);
    const auto second = pool->Create(&two, nullptr, 0);
    EXPECT_EQ(std::pair(first->BufferID(), second->BufferID()), std::pair(idTwo, idSpare));
    EXPECT_NE(MakeAndDrop(*pool, four), idFour);
    const auto none = ImagePoolFactory::CreateRecycleImagePool(0, "none");
    MakeAndDrop(*none, one);
    EXPECT_EQ(none->PoolSize(), 0U) << "without room the released image goes itself";
}

TEST(ImagePools, RefuseHeadersThatLieAndOutliveTheirOwners) {
    auto recycle = ImagePoolFactory::CreateRecycleImagePool(1 << 30, "pool");
    auto ring = ImagePoolFactory::CreateRingAImagePool(1 << 21, 1 << 20, 64, "ring");
    ImageInfo lies[] = {Header(65536, 65536), Header(UINT32_MAX, 1, RGBa16), Header(50000, 50000),
                        Header(10, 10), Header(10, 10)};
    lies[3].extraInfoSize = UINT32_MAX - 20;
    lies[4].headerVersion = 3;
    for (const ImageInfo& info : lies) {
        EXPECT_EQ(recycle->Create(&info, nullptr, 0), nullptr);
        EXPECT_EQ(ring->Create(&info, nullptr, 0), nullptr);
    }
    EXPECT_EQ(recycle->Create(nullptr, nullptr, 0), nullptr);
    const ImageInfo info = HeaderOf(1);
    const auto image = recycle->Create(&info, nullptr, 0);
    const auto slot = ring->Create(&info, nullptr, 0);
    recycle.reset();
    ring.reset();
    std::memset(image->GetImageBuff(), 1, image->GetImageInfo()->ImageDataSize());
    std::memset(slot->GetImageBuff(), 1, slot->GetImageInfo()->ImageDataSize());
}

TEST(RingPool, RotatesAndKnowsItsImages) {
    const auto ring = ImagePoolFactory::CreateRingAImagePool(3000, 1000, 64, nullptr);
    EXPECT_EQ(ring->Name(), "ImagePoolRingA");
    EXPECT_EQ(std::pair(ring->PoolType(), ring->PoolSize()), std::pair(3U, std::uint64_t(0)));
    const ImageInfo info = Header(20, 20);
    std::vector<std::unique_ptr<IImage>> images;
    for (unsigned int i = 0; i < 5; ++i) {
        images.push_back(ring->Create(&info, nullptr, 0));
        EXPECT_EQ(images.back()->MiscValue(), i % 3);
    }
    EXPECT_EQ(images[0]->GetImageBuff(), images[3]->GetImageBuff());
    EXPECT_EQ(std::memcmp(images[4]->GetImageInfo(), &info, sizeof(info)), 0);
    EXPECT_EQ(images[4]->UpdateImageInfo(&info), Ok);
    EXPECT_EQ(images[4]->UpdateImageInfoC(20, 20, Mono8), NotFound) << "there is no slack in a slot";
    auto foreign = Foreign(info);
    foreign->SetMiscValue(3);
    EXPECT_EQ(ring->Release(std::move(foreign)), WrongState);
    foreign->SetMiscValue(2); // NOLINT: never taken
    EXPECT_EQ(ring->Release(std::move(foreign)), Ok);
    EXPECT_EQ(ring->Release(nullptr), NotFound);
}

TEST(RingPool, ImagesNameTheSlotThatTheyLieIn) {
    const auto ring = ImagePoolFactory::CreateRingAImagePool(4000, 1000, 64, "ring");
    const ImageInfo info = Header(20, 20);
    std::vector<const unsigned char*> slots;
    for (unsigned int i = 0; i < 4; ++i)
        slots.push_back(ring->Create(&info, nullptr, 0)->GetImageBuff());
    std::atomic<int> wrong{0};
    OnThreads(4, [&](unsigned int) {
        for (int i = 0; i < 20000; ++i) {
            const auto image = ring->Create(&info, nullptr, 0);
            wrong += image->GetImageBuff() != slots.at(image->MiscValue()) ? 1 : 0;
        }
    });
    EXPECT_EQ(wrong, 0);
}

TEST(RingPool, AnArenaThatIsNotToBeHadIsSaid) {
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // whose allocators end the program
    ClearLastFailure();
    EXPECT_EQ(ImagePoolFactory::CreateRingAImagePool(1ULL << 50, 1U << 30, 64, "huge"), nullptr);
    EXPECT_EQ(LastFailure().code, Status::NoBuffer);
#endif
    EXPECT_NE(ImagePoolFactory::CreateRingAImagePool(1ULL << 31, 1, 64, "many slots"), nullptr);
}

TEST(RingPool, RefusesWhatItsSlotsCannotHold) {
    const auto ring = ImagePoolFactory::CreateRingAImagePool(3000, 1000, 64, "ring");
    ImageInfo info = Header(10, 100);
    EXPECT_NE(ring->Create(&info, nullptr, 0), nullptr);
    info.dataOffset = 1;
    EXPECT_EQ(ring->Create(&info, nullptr, 0), nullptr);
    info = Header(9, 100);
    info.dataOffset = 64;
    info.extraInfoSize = 300; // more than the preallocated headers
    const auto image = ring->Create(&info, nullptr, 0);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->GetExtraInfoBuff()[299], 0);
    std::memset(image->GetImageBuff(), 1, info.ImageDataSize());
    info = Header(1, 1);
    for (const unsigned int blockSize : {1000U, 0U})
        EXPECT_EQ(
            ImagePoolFactory::CreateRingAImagePool(999, blockSize, 64, "none")->Create(&info, nullptr, 0),
            nullptr);
}

// Each block and image is marked by its holder and must still carry the mark when it is given back: nobody
// else got it, while the ceilings force evictions.
TEST(PoolThreads, WhatIsRecycledHasOneHolder) {
    constexpr std::uint64_t Ceiling = 64 * 1024;
    const auto buffers = std::make_shared<RecycleBufferPool>(Ceiling, 0, 0, "shared");
    const auto images = std::make_shared<ImagePoolRecycle>(9 * MiB, "shared");
    std::atomic<int> clashes{0};
    OnThreads(4, [&](unsigned int t) {
        std::minstd_rand random(t + 1);
        std::deque<std::unique_ptr<IBuffer>> blocks;
        std::deque<std::unique_ptr<IImage>> held;
        for (unsigned int i = 0; i < 3000; ++i) {
            blocks.push_back(BufferCreator::Create(1024U << random() % 4, buffers));
            std::memset(blocks.back()->Pointer(), static_cast<int>(t), blocks.back()->BlockSize());
            if (blocks.size() == 6) {
                const IBuffer& oldest = *blocks.front();
                clashes += oldest.Pointer()[0] != t || oldest.Pointer()[oldest.BlockSize() - 1] != t;
                blocks.pop_front();
            }
            if (i % 8 != 0)
                continue;
            ImageInfo info = HeaderOf(1U << random() % 3);
            info.blockId = t * 10000U + i;
            held.push_back(images->Create(&info, nullptr, 0));
            held.back()->GetImageBuff()[0] = static_cast<unsigned char>(t);
            held.back()->SetMiscValue(t * 10000U + i);
            if (held.size() == 4) {
                const IImage& oldest = *held.front();
                clashes +=
                    oldest.GetImageBuff()[0] != t || oldest.GetImageInfo()->blockId != oldest.MiscValue();
                held.pop_front();
            }
        }
    });
    EXPECT_EQ(clashes, 0);
    EXPECT_EQ(buffers->UsingSize(), 0U);
    EXPECT_LT(buffers->CurrentSize(), Ceiling + 8 * 1024) << "by one block at most";
    EXPECT_LE(images->PoolSize(), 9 * MiB + 4 * 4 * MiB);
    EXPECT_GT(images->PoolSize(), 0U);
    // What the pool says it keeps is what comes out of it.
    std::vector<std::unique_ptr<IImage>> out;
    for (const unsigned int size : {1U, 2U, 4U}) {
        const ImageInfo info = HeaderOf(size);
        for (std::uint64_t before = 0; before != images->PoolSize();) {
            before = images->PoolSize();
            out.push_back(images->Create(&info, nullptr, 0));
        }
    }
    EXPECT_EQ(images->PoolSize(), 0U);
}

} // namespace
} // namespace VX3::Test
