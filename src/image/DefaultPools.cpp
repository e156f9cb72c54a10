#include "image/DefaultPools.h"

#include "image/ImagePoolRecycle.h"
#include "image/RecycleBufferPool.h"
#include "image/SimpleBufferPool.h"

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
const std::shared_ptr<IBufferPool> g_histBufferPool = BufferPoolFactory::CreateRecycleBufferPool(
    OneGiB, HistogramBytes, HistogramBuffers, "Histogram buffer pool");
// Named like the histogram pool; clients that list pools know it by that name.
const std::shared_ptr<IBufferPool> g_profileBufferPool =
    BufferPoolFactory::CreateRecycleBufferPool(OneGiB, 0U, 0U, "Histogram buffer pool");

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
    return g_histBufferPool;
}

std::shared_ptr<IBufferPool> ProfileBufferPool() {
    return g_profileBufferPool;
}

} // namespace VX3
