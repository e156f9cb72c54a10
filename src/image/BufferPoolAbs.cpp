#include "image/BufferPoolAbs.h"

#include "vx3/core/IntfDevType.h"
#include "vx3/core/Status.h"

namespace VX3 {

BufferPoolAbs::BufferPoolAbs(unsigned long long poolSize, unsigned int blockSize, const char* name)
    : poolSize_(poolSize), blockSize_(blockSize), object_(TypeIds::BufferPool, name) {}

std::unique_ptr<BaseBuffer> BufferPoolAbs::NewBuffer(unsigned int size) {
    std::unique_ptr<BaseBuffer> block = NewBufferP(size);
    if (block != nullptr)
        usingSize_.fetch_add(block->capacity, std::memory_order_relaxed);
    return block;
}

unsigned int BufferPoolAbs::FreeBuffer(std::unique_ptr<BaseBuffer>&& block) {
    if (block == nullptr)
        return static_cast<unsigned int>(Status::NotAvailable);
    SubtractSaturated(usingSize_, block->capacity);
    return FreeBufferP(std::move(block));
}

std::unique_ptr<BaseBuffer> BufferPoolAbs::AllocateBlock(unsigned int size, unsigned int capacity,
                                                         unsigned int id) {
    // Not make_unique: it would zero what the user overwrites anyway.
    return std::make_unique<BaseBuffer>(size, capacity, id,
                                        std::unique_ptr<unsigned char[]>(new unsigned char[capacity]));
}

void BufferPoolAbs::SubtractSaturated(std::atomic<std::uint64_t>& counter, std::uint64_t amount) {
    std::uint64_t old = counter.load(std::memory_order_relaxed);
    while (!counter.compare_exchange_weak(old, old > amount ? old - amount : 0, std::memory_order_relaxed)) {
    }
}

} // namespace VX3
