#include "image/ImagePoolRingA.h"

#include "image/AbsBuffer.h"
#include "image/AbsImage.h"
#include "vx3/core/Status.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace VX3 {

namespace {

constexpr unsigned long long InfoReserve = 0x100000000ULL;
// Headers that are there from the start; a ring of more slots makes the others as they are first used.
constexpr unsigned int MostReadyHeaders = 4096;

unsigned int SlotCount(unsigned long long poolSize, unsigned int blockSize) {
    if (blockSize == 0)
        return 0;
    return static_cast<unsigned int>(std::min<unsigned long long>(poolSize / blockSize, UINT32_MAX));
}

} // namespace

ImagePoolRingA::ImagePoolRingA(unsigned long long poolSize, unsigned int blockSize, unsigned int infoSize,
                               const char* name)
    : ImagePoolAbs(poolSize, name != nullptr ? name : "ImagePoolRingA"),
      dataPool_(std::make_shared<UniqueBuffPool>(blockSize, SlotCount(poolSize, blockSize),
                                                 "RingA UniqueBuffPool")),
      infoPool_(std::make_shared<RecycleBufferPool>(
          InfoReserve, infoSize, std::min(SlotCount(poolSize, blockSize), MostReadyHeaders),
          "RingA RecycleBufferPool")),
      count_(SlotCount(poolSize, blockSize)) {}

std::unique_ptr<IImage> ImagePoolRingA::Create(const ImageInfo* info, const unsigned char*, unsigned int) {
    if (!IsUsable(info) || count_ == 0)
        return nullptr;
    const unsigned int bytes = info->dataOffset + info->ImageDataSize();
    if (!dataPool_->IsBlockSizeAvailable(bytes) || !infoPool_->IsBlockSizeAvailable(info->ImageInfoSize()))
        return nullptr;
    try {
        auto data = std::make_unique<AbsBuffer>(bytes, dataPool_);
        const unsigned int slot = data->MiscValue();
        auto header = std::make_unique<AbsBuffer>(info->ImageInfoSize(), infoPool_);
        std::memcpy(header->Pointer(), static_cast<const void*>(info), ImageInfo::HeaderSize);
        auto image = std::make_unique<AbsImage>(std::move(data), std::move(header));
        if (image->UpdateImageInfo(info) != static_cast<unsigned int>(Status::Ok))
            return nullptr;
        image->SetMiscValue(slot);
        return Wrap(std::move(image));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

unsigned int ImagePoolRingA::Release(std::unique_ptr<IImage>&& image) {
    if (image == nullptr)
        return static_cast<unsigned int>(Status::NotFound);
    return static_cast<unsigned int>(image->MiscValue() < count_ ? Status::Ok : Status::WrongState);
}

} // namespace VX3
