#include "image/AbsBuffer.h"

#include "image/DefaultPools.h"
#include "vx3/core/IntfDevType.h"
#include "vx3/core/Logger.h"

namespace VX3 {

AbsBuffer::AbsBuffer(unsigned int size, std::shared_ptr<IBufferPool> pool)
    : object_(TypeIds::Buffer, nullptr),
      pool_(pool != nullptr ? std::move(pool) : DefaultSimpleBufferPool()),
      block_(pool_->NewBuffer(size)) {
    if (block_ != nullptr)
        return;
    VxLoggerLog(
        LogLevel::Warning, "SDK",
        "Get a Null Buffer from %s, will trying to use DefaultSimpleBufferPool...: the pool has no block of "
        "%u bytes",
        pool_->Name().c_str(), size);
    pool_ = DefaultSimpleBufferPool();
    block_ = pool_->NewBuffer(size);
}

// A pool that does not keep the block leaves it here, and it is deleted before the pool goes.
AbsBuffer::~AbsBuffer() {
    pool_->FreeBuffer(std::move(block_));
    block_.reset();
}

} // namespace VX3
