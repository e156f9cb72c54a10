// The Image_* family and Save2File.
#include "capi/Handles.h"
#include "capi/Results.h"
#include "vx3/processing/SaveLoadImage.h"

using namespace VX3;
using namespace VX3::CApi;

ImageDescription Image_GetImageInfo(Image* image) {
    return Guarded<ImageDescription>({}, [&]() -> ImageDescription {
        const auto pinned = PinImage(image);
        const ImageInfo* info = pinned ? pinned->GetImageInfo() : nullptr;
        if (info == nullptr)
            return {};
        return {info->imageType, info->pixelFormat, info->width, info->height, info->ImageDataSize(), 0,
                info->blockId};
    });
}

int Image_GetFrameInformation(Image* image, FrameInformation* information) {
    return Guarded([&] {
        const auto pinned = PinImage(image);
        const ImageInfo* info = pinned ? pinned->GetImageInfo() : nullptr;
        if (info == nullptr || information == nullptr)
            return BadHandle;
        *information = {};
        information->blockId = info->blockId;
        information->timestamp = static_cast<uint64_t>(info->timestampHigh) << 32 | info->timestampLow;
        information->isComplete = info->lostPackets == 0;
        information->lostPackets = info->lostPackets;
        information->resentPackets = info->statusC;
        information->lines = info->statusA != 0 ? info->statusA : info->height; // not every source says it
        information->stride = info->Stride();
        information->paddingX = info->paddingX;
        information->paddingY = info->paddingY;
        information->offsetX = info->offsetX;
        information->offsetY = info->offsetY;
        return 0;
    });
}

unsigned char* Image_GetImageBuff(Image* image) {
    return Guarded<unsigned char*>(nullptr, [&]() -> unsigned char* {
        const auto pinned = PinImage(image);
        return pinned ? pinned->GetImageBuff() : nullptr;
    });
}

int Save2File(Image* image, const char* path, unsigned int mode) {
    return Guarded([&] {
        const auto pinned = PinImage(image);
        if (!pinned || path == nullptr)
            return BadHandle;
        return static_cast<int>(SaveLoadImage::Save2File(pinned, path, mode));
    });
}

void Image_Recycle(Image* image) {
    (void)Guarded([&] { return GetTables().images.Remove(image) ? 0 : BadHandle; });
}
