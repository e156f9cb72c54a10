// Where buffers come from. Pools never block; they are called from any thread.
#pragma once

#include "vx3/core/IObject.h"
#include "vx3/image/BaseBuffer.h"

#include <cstdint>
#include <memory>

namespace VX3 {

class VX3_API IBufferPool : public IObject {
public:
    // Empty when the pool cannot serve.
    [[nodiscard]] virtual std::unique_ptr<BaseBuffer> NewBuffer(unsigned int size) = 0;
    // 0 on success; a pool that does not keep the block leaves it in `block` for the caller to delete.
    virtual unsigned int FreeBuffer(std::unique_ptr<BaseBuffer>&& block) = 0;
    virtual std::uint64_t PoolSize() const = 0;
    // Bytes handed out at present.
    virtual std::uint64_t UsingSize() const = 0;
    // Bytes held in reserve.
    virtual std::uint64_t CurrentSize() const = 0;
    // 0 = any size.
    virtual unsigned int BlockSize() const = 0;
    virtual bool IsBlockSizeAvailable(unsigned int size) const = 0;
};

class VX3_API BufferPoolFactory {
public:
    // Keeps returned blocks by power-of-two size class, up to `poolSize` bytes in reserve; `preallocCount`
    // blocks of `preallocSize` bytes are there from the start. A null name gives "RecycleBufferPool".
    [[nodiscard]] static std::shared_ptr<IBufferPool> CreateRecycleBufferPool(unsigned long long poolSize,
                                                                              unsigned int preallocSize,
                                                                              unsigned int preallocCount,
                                                                              const char* name);
};

} // namespace VX3
