// A ring of equal slots in one arena: slots are handed out in rotation, whether or not their previous user
// has released them.
#pragma once

#include "image/BufferPoolAbs.h"
#include "vx3/core/Mutex.h"

namespace VX3 {

class UniqueBuffPool : public BufferPoolAbs {
public:
    // A null name gives "UniqueBuffPool". The arena reads as zeros, and takes memory as its slots are first
    // written. No slots, no buffers. std::bad_alloc where there is no room for the arena.
    UniqueBuffPool(unsigned int blockSize, unsigned int count, const char* name);

    std::uint64_t CurrentSize() const override { return PoolSize(); }

protected:
    // Capacity is the size asked for; the id is the slot's index.
    std::unique_ptr<BaseBuffer> NewBufferP(unsigned int size) override;
    unsigned int FreeBufferP(std::unique_ptr<BaseBuffer>&& block) override;

private:
    unsigned int TakeSlot();

    struct Free {
        void operator()(unsigned char* arena) const;
    };
    static std::unique_ptr<unsigned char, Free> NewArena(std::uint64_t size);

    std::unique_ptr<unsigned char, Free> arena_;
    unsigned int count_;
    Mutex mutex_;
    unsigned int next_ VX3_GUARDED_BY(mutex_) = 0;
};

} // namespace VX3
