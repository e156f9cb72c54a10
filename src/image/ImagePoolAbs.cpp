#include "image/ImagePoolAbs.h"

#include "image/ImageFromPool.h"
#include "vx3/core/IntfDevType.h"

namespace VX3 {

ImagePoolAbs::ImagePoolAbs(unsigned long long poolSize, const char* name)
    : object_(TypeIds::ImagePool, name), poolSize_(poolSize) {}

bool ImagePoolAbs::IsUsable(const ImageInfo* info) {
    return info != nullptr && info->headerVersion == 1 && info->SizesFit();
}

std::unique_ptr<IImage> ImagePoolAbs::Wrap(std::unique_ptr<IImage>&& image) {
    return std::make_unique<ImageFromPool>(std::move(image), shared_from_this());
}

} // namespace VX3
