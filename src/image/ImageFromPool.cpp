#include "image/ImageFromPool.h"

namespace VX3 {

// An image the pool does not take is deleted while the pool still lives.
ImageFromPool::~ImageFromPool() {
    if (pool_ != nullptr)
        pool_->Release(std::move(image_));
    image_.reset();
}

} // namespace VX3
