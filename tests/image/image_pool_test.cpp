#include "image/AbsImage.h"
#include "image/ImagePoolRecycle.h"
#include "image/ImagePoolRingA.h"
#include "vx3/core/IntfDevType.h"
#include "vx3/core/Status.h"

#include <atomic>
#include <cstring>
#include <deque>
#include <gtest/gtest.h>
#include <random>
#include <thread>

namespace VX3 {
namespace {

constexpr auto Ok = static_cast<unsigned int>(Status::Ok);
constexpr std::uint64_t MiB = 1U << 20;

ImageInfo Header(unsigned int width, unsigned int height, PixelFormatValue format = Mono8) {
    ImageBaseInfo base;
    base.width = width;
    base.height = height;
    base.format = format;
    base.timestamp = 0x1234500000000ULL;
    return ImageInfoCreator::CreateImageInfo(base);
}

// A header whose data buffer has exactly `mebibytes` (a power of two).
ImageInfo HeaderOf(unsigned int mebibytes) {
    return Header(1024, 1024 * mebibytes - 100);
}

std::uint64_t MakeAndDrop(IImagePool& pool, const ImageInfo& info) {
    return pool.Create(&info, nullptr, 0)->BufferID();
}

TEST(RecyclePool, SmallImagesAreNotKept) {
    const auto pool = ImagePoolFactory::CreateRecycleImagePool(1 << 30, "pool");
    EXPECT_EQ(pool->PoolType(), 2U);
    EXPECT_EQ(pool->ObjType(), TypeIds::ImagePool);
    MakeAndDrop(*pool, Header(640, 480));
    EXPECT_EQ(pool->PoolSize(), 0U);
    auto small = Header(640, 480);
    auto inner = std::unique_ptr<IImage>(std::make_unique<AbsImage>(&small, nullptr, 0U));
    EXPECT_EQ(pool->Release(std::move(inner)), static_cast<unsigned int>(Status::NotAvailable));
    EXPECT_NE(inner, nullptr); // NOLINT: not taken
    EXPECT_EQ(pool->Release(nullptr), Ok);
    MakeAndDrop(*pool, Header(1920, 1080));
    EXPECT_EQ(pool->PoolSize(), 4 * MiB);
    // Requests below 1 MiB are served from the smallest class that is kept.
    const std::uint64_t id = MakeAndDrop(*pool, HeaderOf(1));
    EXPECT_EQ(pool->Create(&small, nullptr, 0)->BufferID(), id);
}

TEST(RecyclePool, OldestOfTheClassComesBackWithTheNewHeader) {
    const auto pool = ImagePoolFactory::CreateRecycleImagePool(1 << 30, "pool");
    const ImageInfo info = Header(1920, 1080);
    auto a = pool->Create(&info, nullptr, 0);
    auto b = pool->Create(&info, nullptr, 0);
    const std::uint64_t idA = a->BufferID();
    const std::uint64_t idB = b->BufferID();
    b.reset();
    a.reset();
    EXPECT_EQ(pool->PoolSize(), 8 * MiB);
    const std::vector<unsigned char> bytes(100, 0x5A);
    ImageInfo next = Header(1500, 1500);
    next.blockId = 9;
    const auto first = pool->Create(&next, bytes.data(), 100);
    EXPECT_EQ(first->BufferID(), idB);
    EXPECT_EQ(std::memcmp(first->GetImageInfo(), &next, sizeof(next)), 0);
    EXPECT_EQ(first->GetImageBuff()[99], 0x5A);
    EXPECT_EQ(pool->PoolSize(), 4 * MiB);
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
    auto spareOne = pool->Create(&one, nullptr, 0);
    EXPECT_EQ(spareOne->BufferID(), idOne);
    auto spareTwo = std::unique_ptr<IImage>(std::make_unique<AbsImage>(&two, nullptr, 0U));
    const std::uint64_t idSpare = spareTwo->BufferID();
    EXPECT_EQ(pool->Release(std::move(spareTwo)), Ok); // 8 MiB: the 4 MiB image goes
    EXPECT_EQ(pool->PoolSize(), 4 * MiB);
    auto first = pool->Create(&two, nullptr, 0);
    auto second = pool->Create(&two, nullptr, 0);
    EXPECT_EQ(first->BufferID(), idTwo);
    EXPECT_EQ(second->BufferID(), idSpare);
    EXPECT_NE(MakeAndDrop(*pool, four), idFour);
}

TEST(RecyclePool, WithoutRoomTheReleasedImageGoesItself) {
    const auto pool = ImagePoolFactory::CreateRecycleImagePool(0, "none");
    MakeAndDrop(*pool, HeaderOf(1));
    EXPECT_EQ(pool->PoolSize(), 0U);
}

TEST(Pools, RefuseHeadersThatLie) {
    const auto recycle = ImagePoolFactory::CreateRecycleImagePool(1 << 30, "pool");
    const auto ring = ImagePoolFactory::CreateRingAImagePool(1 << 20, 1 << 16, 64, "ring");
    ImageInfo wrapped = Header(65536, 65536);
    ImageInfo wide = Header(UINT32_MAX, 1, RGBa16);
    ImageInfo large = Header(50000, 50000);
    ImageInfo extra = Header(10, 10);
    extra.extraInfoSize = UINT32_MAX - 20;
    ImageInfo version = Header(10, 10);
    version.headerVersion = 3;
    for (const ImageInfo* info : {&wrapped, &wide, &large, &extra, &version}) {
        EXPECT_EQ(recycle->Create(info, nullptr, 0), nullptr);
        EXPECT_EQ(ring->Create(info, nullptr, 0), nullptr);
    }
    EXPECT_EQ(recycle->Create(nullptr, nullptr, 0), nullptr);
}

TEST(Pools, OutliveTheirOwners) {
    const ImageInfo info = HeaderOf(1);
    auto pool = ImagePoolFactory::CreateRecycleImagePool(1 << 30, "pool");
    auto image = pool->Create(&info, nullptr, 0);
    auto ring = ImagePoolFactory::CreateRingAImagePool(1 << 21, 1 << 20, 64, "ring");
    auto slot = ring->Create(&info, nullptr, 0);
    pool.reset();
    ring.reset();
    std::memset(image->GetImageBuff(), 1, image->GetImageInfo()->ImageDataSize());
    std::memset(slot->GetImageBuff(), 1, slot->GetImageInfo()->ImageDataSize());
}

TEST(RingPool, RotatesAndShares) {
    const auto ring = ImagePoolFactory::CreateRingAImagePool(3000, 1000, 64, nullptr);
    EXPECT_EQ(ring->Name(), "ImagePoolRingA");
    EXPECT_EQ(ring->PoolType(), 3U);
    EXPECT_EQ(ring->PoolSize(), 0U);
    const ImageInfo info = Header(20, 20);
    std::vector<std::unique_ptr<IImage>> images;
    for (unsigned int i = 0; i < 5; ++i) {
        images.push_back(ring->Create(&info, nullptr, 0));
        EXPECT_EQ(images.back()->MiscValue(), i % 3);
    }
    EXPECT_EQ(images[0]->GetImageBuff(), images[3]->GetImageBuff());
    EXPECT_EQ(std::memcmp(images[4]->GetImageInfo(), &info, sizeof(info)), 0);
    EXPECT_EQ(images[4]->UpdateImageInfo(&info), Ok);
    // There is no slack in a slot.
    EXPECT_EQ(images[4]->UpdateImageInfoC(20, 20, Mono8), static_cast<unsigned int>(Status::NotFound));
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
    ImageInfo small = Header(1, 1);
    EXPECT_EQ(ImagePoolFactory::CreateRingAImagePool(999, 1000, 64, "none")->Create(&small, nullptr, 0),
              nullptr);
    EXPECT_EQ(ImagePoolFactory::CreateRingAImagePool(999, 0, 64, "none")->Create(&small, nullptr, 0),
              nullptr);
}

TEST(RingPool, KnowsItsImages) {
    const auto ring = ImagePoolFactory::CreateRingAImagePool(3000, 1000, 64, "ring");
    const ImageInfo info = Header(1, 1);
    auto foreign = std::unique_ptr<IImage>(std::make_unique<AbsImage>(&info, nullptr, 0U));
    foreign->SetMiscValue(3);
    EXPECT_EQ(ring->Release(std::move(foreign)), static_cast<unsigned int>(Status::WrongState));
    foreign->SetMiscValue(2); // NOLINT: never taken
    EXPECT_EQ(ring->Release(std::move(foreign)), Ok);
    EXPECT_EQ(ring->Release(nullptr), static_cast<unsigned int>(Status::NotFound));
}

// Images of three classes move between threads while the ceiling forces evictions; a marked image that comes
// back with another's mark would have two owners.
TEST(PoolThreads, EachRecycledImageHasOneOwner) {
    const auto pool = std::make_shared<ImagePoolRecycle>(9 * MiB, "shared");
    std::atomic<int> clashes{0};
    std::vector<std::thread> threads;
    for (unsigned int t = 1; t <= 4; ++t)
        threads.emplace_back([&, t] {
            std::minstd_rand random(t);
            std::deque<std::unique_ptr<IImage>> held;
            for (unsigned int i = 0; i < 400; ++i) {
                ImageInfo info = HeaderOf(1U << random() % 3);
                info.blockId = t * 1000U + i;
                held.push_back(pool->Create(&info, nullptr, 0));
                held.back()->GetImageBuff()[0] = static_cast<unsigned char>(t);
                held.back()->SetMiscValue(t * 1000U + i);
                if (held.size() < 4)
                    continue;
                const IImage& oldest = *held.front();
                if (oldest.GetImageBuff()[0] != t || oldest.GetImageInfo()->blockId != oldest.MiscValue())
                    ++clashes;
                held.pop_front();
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(clashes, 0);
    EXPECT_LE(pool->PoolSize(), 9 * MiB + 4 * 4 * MiB);
    // What the pool says it keeps is what comes out of it.
    std::uint64_t kept = 0;
    std::vector<std::unique_ptr<IImage>> out;
    for (const unsigned int size : {1U, 2U, 4U}) {
        const ImageInfo info = HeaderOf(size);
        for (std::uint64_t before = pool->PoolSize();; before = pool->PoolSize()) {
            out.push_back(pool->Create(&info, nullptr, 0));
            if (pool->PoolSize() == before)
                break;
            kept += before - pool->PoolSize();
        }
    }
    EXPECT_EQ(pool->PoolSize(), 0U);
    EXPECT_GT(kept, 0U);
}

TEST(PoolThreads, RingTurnsAreHandedOutEvenly) {
    const auto ring = ImagePoolFactory::CreateRingAImagePool(5 * 1000, 1000, 64, "ring");
    std::vector<std::vector<unsigned int>> turns(4);
    std::vector<std::thread> threads;
    for (auto& mine : turns)
        threads.emplace_back([&] {
            const ImageInfo info = Header(10, 10);
            for (int i = 0; i < 500; ++i)
                mine.push_back(ring->Create(&info, nullptr, 0)->MiscValue());
        });
    for (std::thread& thread : threads)
        thread.join();
    std::vector<int> count(5);
    for (const auto& mine : turns)
        for (const unsigned int turn : mine)
            ++count.at(turn);
    EXPECT_EQ(count, std::vector<int>(5, 400));
}

} // namespace
} // namespace VX3
