#include "image/RecycleBufferPool.h"

#include "vx3/core/Status.h"
#include "vx3/core/Utilities.h"

namespace VX3 {

RecycleBufferPool::RecycleBufferPool(unsigned long long poolSize, unsigned int preallocSize,
                                     unsigned int preallocCount, const char* name)
    : BufferPoolAbs(poolSize, 0, name != nullptr ? name : "RecycleBufferPool") {
    const unsigned int capacity = Miscs::CeilingPower2(preallocSize);
    if (capacity == 0)
        return;
    SizeClass& sizeClass = classes_[Miscs::FirstNotZero(capacity)];
    MutexLock lock(sizeClass.mutex);
    for (unsigned int i = 0; i < preallocCount; ++i) {
        Append(sizeClass, AllocateBlock(preallocSize, capacity, serial_.fetch_add(1)));
        cachedBytes_.fetch_add(capacity);
    }
}

std::unique_ptr<BaseBuffer> RecycleBufferPool::NewBufferP(unsigned int size) {
    const unsigned int capacity = Miscs::CeilingPower2(size);
    const unsigned int k = Miscs::FirstNotZero(capacity);
    if (k >= ClassCount)
        return nullptr;
    if (auto block = TakeCached(classes_[k])) {
        block->size = size;
        return block;
    }
    return AllocateBlock(size, capacity, serial_.fetch_add(1, std::memory_order_relaxed));
}

std::unique_ptr<BaseBuffer> RecycleBufferPool::TakeCached(SizeClass& sizeClass) {
    if (sizeClass.count.load(std::memory_order_relaxed) == 0)
        return nullptr;
    MutexLock lock(sizeClass.mutex);
    if (sizeClass.blocks.empty())
        return nullptr;
    std::unique_ptr<BaseBuffer> block = std::move(sizeClass.blocks.front());
    sizeClass.blocks.pop_front();
    sizeClass.count.fetch_sub(1, std::memory_order_relaxed);
    SubtractSaturated(cachedBytes_, block->capacity);
    return block;
}

unsigned int RecycleBufferPool::FreeBufferP(std::unique_ptr<BaseBuffer>&& block) {
    const unsigned int k = Miscs::FirstNotZero(block->capacity);
    // A block without memory, or of a size this pool never makes, is nobody's next buffer.
    if (k >= ClassCount || block->data == nullptr || block->capacity != 1U << k)
        return static_cast<unsigned int>(Status::NotAvailable);
    SizeClass& sizeClass = classes_[k];
    MutexLock lock(sizeClass.mutex);
    if (ReserveCache(block->capacity))
        Append(sizeClass, std::move(block));
    return static_cast<unsigned int>(Status::Ok);
}

void RecycleBufferPool::Append(SizeClass& sizeClass, std::unique_ptr<BaseBuffer>&& block) {
    sizeClass.blocks.push_back(std::move(block));
    sizeClass.count.fetch_add(1, std::memory_order_relaxed);
}

// Test and addition are one step, so that two classes cannot both pass the test for the last room.
bool RecycleBufferPool::ReserveCache(unsigned int capacity) {
    std::uint64_t cached = cachedBytes_.load(std::memory_order_relaxed);
    while (cached < PoolSize())
        if (cachedBytes_.compare_exchange_weak(cached, cached + capacity, std::memory_order_relaxed))
            return true;
    return false;
}

} // namespace VX3
