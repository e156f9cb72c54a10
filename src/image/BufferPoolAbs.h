// What all buffer pools share: identity, and the count of bytes handed out.
#pragma once

#include "core/ObjectAbs.h"
#include "vx3/image/IBufferPool.h"

#include <atomic>

namespace VX3 {

class BufferPoolAbs : public IBufferPool {
public:
    // What `poolSize` means depends on the policy; `blockSize` 0 = any size.
    BufferPoolAbs(unsigned long long poolSize, unsigned int blockSize, const char* name);

    std::unique_ptr<BaseBuffer> NewBuffer(unsigned int size) final;
    unsigned int FreeBuffer(std::unique_ptr<BaseBuffer>&& block) final;
    std::uint64_t PoolSize() const override { return poolSize_; }
    std::uint64_t UsingSize() const override { return usingSize_.load(std::memory_order_relaxed); }
    unsigned int BlockSize() const override { return blockSize_; }
    bool IsBlockSizeAvailable(unsigned int size) const override {
        return blockSize_ == 0 || blockSize_ >= size;
    }

    std::string Name() const override { return object_.Name(); }
    std::uint64_t ObjID() const override { return object_.ObjID(); }
    bool IsConfigurable() const override { return object_.IsConfigurable(); }
    IConfigurer* GetConfigurer() override { return object_.GetConfigurer(); }
    unsigned int ObjType() const override { return object_.ObjType(); }
    std::list<std::pair<std::string, std::string>> GetInfo() const override { return object_.GetInfo(); }
    unsigned int TypeId() const override { return object_.TypeId(); }

protected:
    virtual std::unique_ptr<BaseBuffer> NewBufferP(unsigned int size) = 0;
    // `block` is never null.
    virtual unsigned int FreeBufferP(std::unique_ptr<BaseBuffer>&& block) = 0;

    // An uninitialised block on the heap. A failed allocation raises std::bad_alloc.
    static std::unique_ptr<BaseBuffer> AllocateBlock(unsigned int size, unsigned int capacity,
                                                     unsigned int id);
    // counter -= amount, stopping at 0.
    static void SubtractSaturated(std::atomic<std::uint64_t>& counter, std::uint64_t amount);

private:
    std::uint64_t poolSize_;
    unsigned int blockSize_;
    std::atomic<std::uint64_t> usingSize_{0};
    ObjectAbs object_;
};

} // namespace VX3
