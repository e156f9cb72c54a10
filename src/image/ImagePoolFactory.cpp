#include "image/DefaultPools.h"
#include "image/ImagePoolRecycle.h"
#include "image/ImagePoolRingA.h"
#include "vx3/core/LastFailure.h"
#include "vx3/core/Utilities.h"

#include <new>

namespace VX3 {

std::shared_ptr<IImagePool> ImagePoolFactory::CreateRecycleImagePool(unsigned long long poolSize,
                                                                     const char* name) {
    return std::make_shared<ImagePoolRecycle>(poolSize, name);
}

std::shared_ptr<IImagePool> ImagePoolFactory::CreateRingAImagePool(unsigned long long poolSize,
                                                                   unsigned int blockSize,
                                                                   unsigned int infoSize, const char* name) {
    try {
        return std::make_shared<ImagePoolRingA>(poolSize, blockSize, infoSize, name);
    } catch (const std::bad_alloc&) {
        SetLastFailure(Status::NoBuffer, StringFormat("no memory for a ring of %llu bytes", poolSize));
        return nullptr;
    }
}

std::shared_ptr<IImagePool> ImagePoolFactory::DefaultImagePool() {
    return DefaultImagePoolInstance();
}

} // namespace VX3
