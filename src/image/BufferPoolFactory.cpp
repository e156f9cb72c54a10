#include "image/RecycleBufferPool.h"

namespace VX3 {

std::shared_ptr<IBufferPool> BufferPoolFactory::CreateRecycleBufferPool(unsigned long long poolSize,
                                                                        unsigned int preallocSize,
                                                                        unsigned int preallocCount,
                                                                        const char* name) {
    return std::make_shared<RecycleBufferPool>(poolSize, preallocSize, preallocCount, name);
}

} // namespace VX3
