// A ring of equal slots in one arena: slots are handed out in rotation, whether or not their previous user
// has released them.
#pragma once

#include "image/BufferPoolAbs.h"
#include "vx3/core/Mutex.h"

namespace VX3 {

class UniqueBuffPool : public BufferPoolAbs {
public:
    // A null name gives "UniqueBuffPool". The arena is zeroed; no slots, no buffers.
    UniqueBuffPool(unsigned int blockSize, unsigned int count, const char* name);

    std::uint64_t CurrentSize() const override { return PoolSize(); }

protected:
    // Capacity is the size asked for; the id is the slot's index.
    std::unique_ptr<BaseBuffer> NewBufferP(unsigned int size) override;
    unsigned int FreeBufferP(std::unique_ptr<BaseBuffer>&& block) override;

private:
    unsigned int TakeSlot();

    std::unique_ptr<unsigned char[]> arena_;
    unsigned int count_;
    Mutex mutex_;
    unsigned int next_ VX3_GUARDED_BY(mutex_) = 0;
};

} // namespace VX3
