// Keeps returned blocks by power-of-two size class, so that streams allocate only their first frames.
#pragma once

#include "image/BufferPoolAbs.h"
#include "vx3/core/Mutex.h"

#include <array>
#include <deque>

namespace VX3 {

class RecycleBufferPool : public BufferPoolAbs {
public:
    // `poolSize` limits the bytes in reserve (by at most one block more), not what is handed out. A null
    // name gives "RecycleBufferPool".
    RecycleBufferPool(unsigned long long poolSize, unsigned int preallocSize, unsigned int preallocCount,
                      const char* name);

    std::uint64_t CurrentSize() const override { return cachedBytes_.load(std::memory_order_relaxed); }

protected:
    std::unique_ptr<BaseBuffer> NewBufferP(unsigned int size) override;
    unsigned int FreeBufferP(std::unique_ptr<BaseBuffer>&& block) override;

private:
    static constexpr unsigned int ClassCount = 32;

    // Blocks of 2^k bytes, the one returned longest ago in front.
    struct SizeClass {
        Mutex mutex;
        std::deque<std::unique_ptr<BaseBuffer>> blocks VX3_GUARDED_BY(mutex);
        // blocks.size(), readable without the lock: an empty class costs no lock.
        std::atomic<std::size_t> count{0};
    };

    std::unique_ptr<BaseBuffer> TakeCached(SizeClass& sizeClass);
    void Append(SizeClass& sizeClass, std::unique_ptr<BaseBuffer>&& block) VX3_REQUIRES(sizeClass.mutex);
    bool ReserveCache(unsigned int capacity);

    std::atomic<std::uint32_t> serial_{0};
    std::atomic<std::uint64_t> cachedBytes_{0};
    std::array<SizeClass, ClassCount> classes_;
};

} // namespace VX3
