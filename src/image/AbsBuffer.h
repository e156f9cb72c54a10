// One block of a pool, given back on destruction; keeps the pool alive.
#pragma once

#include "core/ObjectAbs.h"
#include "vx3/image/IBuffer.h"
#include "vx3/image/IBufferPool.h"

namespace VX3 {

class AbsBuffer : public IBuffer {
public:
    // An empty pool, or one that cannot serve, is replaced by the default simple pool.
    AbsBuffer(unsigned int size, std::shared_ptr<IBufferPool> pool);
    ~AbsBuffer() override;
    AbsBuffer(const AbsBuffer&) = delete;
    AbsBuffer& operator=(const AbsBuffer&) = delete;

    unsigned int BlockSize() const override { return block_->capacity; }
    const unsigned char* Pointer() const override { return block_->data.get(); }
    unsigned char* Pointer() override { return block_->data.get(); }
    unsigned int MiscValue() const override { return block_->id; }

    std::string Name() const override { return object_.Name(); }
    std::uint64_t ObjID() const override { return object_.ObjID(); }
    bool IsConfigurable() const override { return object_.IsConfigurable(); }
    IConfigurer* GetConfigurer() override { return object_.GetConfigurer(); }
    unsigned int ObjType() const override { return object_.ObjType(); }
    std::list<std::pair<std::string, std::string>> GetInfo() const override { return object_.GetInfo(); }
    unsigned int TypeId() const override { return object_.TypeId(); }

private:
    ObjectAbs object_;
    std::shared_ptr<IBufferPool> pool_;
    std::unique_ptr<BaseBuffer> block_; // never null once constructed
};

} // namespace VX3
