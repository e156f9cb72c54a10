// Allocates on every request and frees on every return.
#pragma once

#include "image/BufferPoolAbs.h"

namespace VX3 {

class SimpleBufferPool : public BufferPoolAbs {
public:
    // A null name gives "SimpleBufferPool".
    explicit SimpleBufferPool(const char* name);

    std::uint64_t CurrentSize() const override { return 0; }

protected:
    std::unique_ptr<BaseBuffer> NewBufferP(unsigned int size) override;
    unsigned int FreeBufferP(std::unique_ptr<BaseBuffer>&& block) override;

private:
    std::atomic<std::uint32_t> serial_{0};
};

} // namespace VX3
