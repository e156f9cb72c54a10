#include "vx3/image/IImage.h"

namespace VX3 {

std::unique_ptr<IImage> ImageCreator::Create(const ImageInfo* info, std::shared_ptr<IImagePool> pool,
                                             const unsigned char* data) {
    if (pool == nullptr)
        pool = ImagePoolFactory::DefaultImagePool();
    std::unique_ptr<IImage> image = pool->Create(info, nullptr, 0);
    if (image != nullptr)
        image->UpdateImageData(data, 0);
    return image;
}

} // namespace VX3
