// Keeps released images by size class and evicts the one released longest ago when its reserve passes a
// ceiling.
#pragma once

#include "image/AbsImage.h"
#include "image/ImagePoolAbs.h"
#include "vx3/core/Mutex.h"

#include <array>
#include <atomic>
#include <deque>

namespace VX3 {

class ImagePoolRecycle : public ImagePoolAbs {
public:
    // `poolSize` bytes in reserve at most, give or take what one release evicts.
    ImagePoolRecycle(unsigned long long poolSize, const char* name);

    std::unique_ptr<IImage> Create(const ImageInfo* info, const unsigned char* data,
                                   unsigned int len) override;
    // NotAvailable for data buffers below 1 MiB, which are not worth keeping.
    unsigned int Release(std::unique_ptr<IImage>&& image) override;
    unsigned int PoolType() const override { return 2; }
    // Bytes in reserve at present.
    std::uint64_t PoolSize() const override { return cachedBytes_.load(std::memory_order_relaxed); }

private:
    static constexpr unsigned int ClassCount = 12;
    static constexpr unsigned int SmallestLog2 = 20;
    static constexpr std::uint64_t NoStamp = UINT64_MAX;

    // Images whose data buffers have 2^(20 + k) bytes, the one released longest ago in front.
    struct SizeClass {
        Mutex mutex;
        std::deque<std::unique_ptr<IImage>> images VX3_GUARDED_BY(mutex);
        // Release stamp of the front image, NoStamp when empty. Written under the mutex; read without it to
        // find the oldest class and to skip empty ones.
        std::atomic<std::uint64_t> oldestStamp{NoStamp};
    };

    std::unique_ptr<IImage> TakeFront(SizeClass& sizeClass);
    void Append(SizeClass& sizeClass, std::unique_ptr<IImage>&& image, unsigned int bytes);
    std::unique_ptr<IImage> EvictOldest();
    static std::uint64_t StampOf(const IImage& image);

    std::array<SizeClass, ClassCount> classes_;
    std::atomic<std::uint64_t> releaseCounter_{0};
    std::atomic<std::uint64_t> cachedBytes_{0};
};

} // namespace VX3
