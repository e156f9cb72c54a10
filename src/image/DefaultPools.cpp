#include "image/DefaultPools.h"

#include "image/ImagePoolRecycle.h"
#include "image/RecycleBufferPool.h"
#include "image/SimpleBufferPool.h"

#include <new>

namespace VX3 {

namespace {

constexpr unsigned long long FourGiB = 0x100000000ULL;
constexpr unsigned long long OneGiB = 0x40000000ULL;
// One histogram of 65536 counts.
constexpr unsigned int HistogramBytes = 0x40000U;
constexpr unsigned int HistogramBuffers = 256U;

const std::shared_ptr<IBufferPool> g_defaultSimpleBufferPool =
    std::make_shared<SimpleBufferPool>("System Default SimpleBufferPool");
const std::shared_ptr<IBufferPool> g_defaultRecycleBufferPool =
    std::make_shared<RecycleBufferPool>(FourGiB, 0U, 0U, "System Default RecycleBufferPool");
const std::shared_ptr<IImagePool> g_defaultImagePool =
    std::make_shared<ImagePoolRecycle>(FourGiB, "Default recycle image pool");
// Named like the histogram pool; clients that list pools know it by that name.
const std::shared_ptr<IBufferPool> g_profileBufferPool =
    BufferPoolFactory::CreateRecycleBufferPool(OneGiB, 0U, 0U, "Histogram buffer pool");

// The buffers that are there from the start are for speed; where memory is short they come one by one.
std::shared_ptr<IBufferPool> MakeHistogramPool() {
    constexpr const char* Name = "Histogram buffer pool";
    try {
        return BufferPoolFactory::CreateRecycleBufferPool(OneGiB, HistogramBytes, HistogramBuffers, Name);
    } catch (const std::bad_alloc&) {
        return BufferPoolFactory::CreateRecycleBufferPool(OneGiB, 0U, 0U, Name);
    }
}

} // namespace

std::shared_ptr<IBufferPool> DefaultSimpleBufferPool() {
    return g_defaultSimpleBufferPool;
}

std::shared_ptr<IBufferPool> DefaultRecycleBufferPool() {
    return g_defaultRecycleBufferPool;
}

std::shared_ptr<IImagePool> DefaultImagePoolInstance() {
    return g_defaultImagePool;
}

std::shared_ptr<IBufferPool> HistogramBufferPool() {
    static const std::shared_ptr<IBufferPool> pool = MakeHistogramPool();
    return pool;
}

std::shared_ptr<IBufferPool> ProfileBufferPool() {
    return g_profileBufferPool;
}

} // namespace VX3
