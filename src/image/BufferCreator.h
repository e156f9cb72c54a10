// The one way the library makes buffers.
#pragma once

#include "vx3/image/IBuffer.h"
#include "vx3/image/IBufferPool.h"

#include <memory>

namespace VX3 {

class BufferCreator {
public:
    // Never empty; an empty pool means the default simple pool. Raises std::bad_alloc.
    static std::unique_ptr<IBuffer> Create(unsigned int size, std::shared_ptr<IBufferPool> pool);
};

} // namespace VX3
