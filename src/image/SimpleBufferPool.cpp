#include "image/SimpleBufferPool.h"

#include "vx3/core/Status.h"
#include "vx3/core/Utilities.h"

#include <algorithm>

namespace VX3 {

SimpleBufferPool::SimpleBufferPool(const char* name)
    : BufferPoolAbs(0, 0, name != nullptr ? name : "SimpleBufferPool") {}

std::unique_ptr<BaseBuffer> SimpleBufferPool::NewBufferP(unsigned int size) {
    // Above 2^31 there is no 32-bit power of two to round up to; the block is then as large as asked for.
    const unsigned int capacity = std::max(Miscs::CeilingPower2(size), size);
    return AllocateBlock(size, capacity, serial_.fetch_add(1, std::memory_order_relaxed));
}

unsigned int SimpleBufferPool::FreeBufferP(std::unique_ptr<BaseBuffer>&&) {
    return static_cast<unsigned int>(Status::Ok); // the caller deletes it
}

} // namespace VX3
