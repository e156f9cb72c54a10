#include "image/UniqueBuffPool.h"

#include "vx3/core/Status.h"

#include <cstdlib>
#include <new>

namespace VX3 {

namespace {
constexpr std::uint64_t ArenaSize(unsigned int blockSize, unsigned int count) {
    return static_cast<std::uint64_t>(blockSize) * count;
}
} // namespace

UniqueBuffPool::UniqueBuffPool(unsigned int blockSize, unsigned int count, const char* name)
    : BufferPoolAbs(ArenaSize(blockSize, count), blockSize, name != nullptr ? name : "UniqueBuffPool"),
      arena_(NewArena(ArenaSize(blockSize, count))),
      count_(count) {}

void UniqueBuffPool::Free::operator()(unsigned char* arena) const {
    std::free(arena);
}

// calloc, because it need not write the zeros of a large arena.
std::unique_ptr<unsigned char, UniqueBuffPool::Free> UniqueBuffPool::NewArena(std::uint64_t size) {
    if (size == 0)
        return nullptr;
    std::unique_ptr<unsigned char, Free> arena(static_cast<unsigned char*>(std::calloc(size, 1)));
    if (arena == nullptr)
        throw std::bad_alloc();
    return arena;
}

unsigned int UniqueBuffPool::TakeSlot() {
    MutexLock lock(mutex_);
    const unsigned int slot = next_;
    next_ = slot + 1 == count_ ? 0 : slot + 1;
    return slot;
}

std::unique_ptr<BaseBuffer> UniqueBuffPool::NewBufferP(unsigned int size) {
    if (size > BlockSize() || count_ == 0)
        return nullptr;
    auto block = std::make_unique<BaseBuffer>(size, size, 0U, nullptr);
    block->id = TakeSlot();
    // Lent, not given: FreeBufferP takes the pointer out again before the record is deleted.
    block->data.reset(arena_.get() + static_cast<std::size_t>(block->id) * BlockSize());
    return block;
}

unsigned int UniqueBuffPool::FreeBufferP(std::unique_ptr<BaseBuffer>&& block) {
    static_cast<void>(block->data.release());
    return static_cast<unsigned int>(Status::Ok);
}

} // namespace VX3
