#include "image/BufferCreator.h"

#include "image/AbsBuffer.h"

namespace VX3 {

std::unique_ptr<IBuffer> BufferCreator::Create(unsigned int size, std::shared_ptr<IBufferPool> pool) {
    return std::make_unique<AbsBuffer>(size, std::move(pool));
}

} // namespace VX3
