#include "image/ImagePoolRecycle.h"

#include "vx3/core/Status.h"
#include "vx3/core/Utilities.h"

#include <algorithm>
#include <new>

namespace VX3 {

namespace {

unsigned int BytesOf(const IImage& image) {
    return static_cast<const AbsImage&>(image).BufferSize(); // the pool keeps nothing else
}

} // namespace

ImagePoolRecycle::ImagePoolRecycle(unsigned long long poolSize, const char* name)
    : ImagePoolAbs(poolSize, name) {}

std::unique_ptr<IImage> ImagePoolRecycle::Create(const ImageInfo* info, const unsigned char* data,
                                                 unsigned int len) {
    if (!IsUsable(info))
        return nullptr;
    const unsigned int k = Miscs::FirstNotZero(Miscs::CeilingPower2(info->DataBuffNeeded()));
    if (k >= SmallestLog2 + ClassCount)
        return nullptr;
    std::unique_ptr<IImage> image = TakeFront(classes_[std::max(k, SmallestLog2) - SmallestLog2]);
    try {
        if (image == nullptr)
            image = std::make_unique<AbsImage>(info, nullptr, 0);
        else if (image->UpdateImageInfo(info) != static_cast<unsigned int>(Status::Ok))
            return nullptr;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
    image->UpdateImageData(data, len);
    return Wrap(std::move(image));
}

std::unique_ptr<IImage> ImagePoolRecycle::TakeFront(SizeClass& sizeClass) {
    if (sizeClass.oldestStamp.load(std::memory_order_relaxed) == NoStamp)
        return nullptr;
    MutexLock lock(sizeClass.mutex);
    if (sizeClass.images.empty())
        return nullptr;
    std::unique_ptr<IImage> image = std::move(sizeClass.images.front());
    sizeClass.images.pop_front();
    sizeClass.oldestStamp.store(sizeClass.images.empty() ? NoStamp : StampOf(*sizeClass.images.front()),
                                std::memory_order_relaxed);
    // Never below 0: what is in a list was added under the same mutex.
    cachedBytes_.fetch_sub(BytesOf(*image), std::memory_order_relaxed);
    return image;
}

unsigned int ImagePoolRecycle::Release(std::unique_ptr<IImage>&& image) {
    const auto* abs = dynamic_cast<const AbsImage*>(image.get());
    if (abs == nullptr)
        return static_cast<unsigned int>(Status::Ok);
    const unsigned int bytes = abs->BufferSize();
    const unsigned int index = Miscs::FirstNotZero(bytes) - SmallestLog2;
    if (index >= ClassCount)
        return static_cast<unsigned int>(Status::NotAvailable);
    Append(classes_[index], std::move(image), bytes);
    if (cachedBytes_.load(std::memory_order_relaxed) > Limit())
        EvictOldest();
    return static_cast<unsigned int>(Status::Ok);
}

void ImagePoolRecycle::Append(SizeClass& sizeClass, std::unique_ptr<IImage>&& image, unsigned int bytes) {
    MutexLock lock(sizeClass.mutex);
    // Counted inside the lock, so that every list is in stamp order.
    const std::uint64_t stamp = releaseCounter_.fetch_add(1, std::memory_order_relaxed);
    image->UpdateImageInfoA(0, static_cast<unsigned int>(stamp >> 32), static_cast<unsigned int>(stamp));
    sizeClass.images.push_back(std::move(image));
    cachedBytes_.fetch_add(bytes, std::memory_order_relaxed);
    if (sizeClass.oldestStamp.load(std::memory_order_relaxed) == NoStamp)
        sizeClass.oldestStamp.store(stamp, std::memory_order_relaxed);
}

// Takes the oldest image out; the caller deletes it, with no lock held. No two class mutexes are held at
// once: where another thread empties the class between the look and the lock, the look is repeated.
std::unique_ptr<IImage> ImagePoolRecycle::EvictOldest() {
    for (;;) {
        SizeClass* victim = nullptr;
        std::uint64_t oldest = NoStamp;
        for (SizeClass& sizeClass : classes_) {
            const std::uint64_t stamp = sizeClass.oldestStamp.load(std::memory_order_relaxed);
            if (stamp < oldest) {
                oldest = stamp;
                victim = &sizeClass;
            }
        }
        if (victim == nullptr)
            return nullptr;
        if (auto image = TakeFront(*victim))
            return image;
    }
}

std::uint64_t ImagePoolRecycle::StampOf(const IImage& image) {
    const ImageInfo* info = image.GetImageInfo();
    return static_cast<std::uint64_t>(info->timestampHigh) << 32 | info->timestampLow;
}

} // namespace VX3
