// A fixed ring of equal slots: the newest images overwrite the oldest, whoever still holds them.
#pragma once

#include "image/ImagePoolAbs.h"
#include "image/RecycleBufferPool.h"
#include "image/UniqueBuffPool.h"

namespace VX3 {

class ImagePoolRingA : public ImagePoolAbs {
public:
    // poolSize / blockSize slots; a null name gives "ImagePoolRingA". std::bad_alloc where there is no room
    // for them.
    ImagePoolRingA(unsigned long long poolSize, unsigned int blockSize, unsigned int infoSize,
                   const char* name);

    // `data` and `len` are not used. Empty for pixels (their dataOffset included) larger than a slot. The
    // image's MiscValue() is its slot.
    std::unique_ptr<IImage> Create(const ImageInfo* info, const unsigned char* data,
                                   unsigned int len) override;
    // Never takes the image. NotFound: no image; WrongState: not one of this ring.
    unsigned int Release(std::unique_ptr<IImage>&& image) override;
    unsigned int PoolType() const override { return 3; }

private:
    std::shared_ptr<IBufferPool> dataPool_;
    std::shared_ptr<IBufferPool> infoPool_;
    unsigned int count_;
};

} // namespace VX3
