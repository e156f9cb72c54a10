// The process-wide pools that the image and processing folders draw from. Built when the library is loaded,
// in the order of their definitions, and released in reverse at unload; that of the histograms, 64 MiB, on
// first use.
#pragma once

#include "vx3/image/IBufferPool.h"
#include "vx3/image/IImagePool.h"

#include <memory>

namespace VX3 {

std::shared_ptr<IBufferPool> DefaultSimpleBufferPool();
std::shared_ptr<IBufferPool> DefaultRecycleBufferPool();
std::shared_ptr<IBufferPool> HistogramBufferPool();
std::shared_ptr<IBufferPool> ProfileBufferPool();
std::shared_ptr<IImagePool> DefaultImagePoolInstance();

} // namespace VX3
