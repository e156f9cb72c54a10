// The Image_* family and Save2File.
#include "capi/Handles.h"
#include "capi/Results.h"
#include "vx3/processing/SaveLoadImage.h"

using namespace VX3;
using namespace VX3::CApi;

ImageDescription Image_GetImageInfo(Image* image) {
    return Guarded<ImageDescription>({}, [&]() -> ImageDescription {
        const auto record = GetTables().images.Pin(image);
        const ImageInfo* info = record && record->image ? record->image->GetImageInfo() : nullptr;
        if (info == nullptr)
            return {};
        return {info->imageType, info->pixelFormat, info->width, info->height, info->ImageDataSize(), 0,
                info->blockId};
    });
}

unsigned char* Image_GetImageBuff(Image* image) {
    return Guarded<unsigned char*>(nullptr, [&]() -> unsigned char* {
        const auto record = GetTables().images.Pin(image);
        return record && record->image ? record->image->GetImageBuff() : nullptr;
    });
}

int Save2File(Image* image, const char* path, unsigned int mode) {
    return Guarded([&] {
        const auto record = GetTables().images.Pin(image);
        if (!record || !record->image || path == nullptr)
            return BadHandle;
        return static_cast<int>(SaveLoadImage::Save2File(record->image, path, mode));
    });
}

void Image_Recycle(Image* image) {
    (void)Guarded([&] { return GetTables().images.Remove(image) ? 0 : BadHandle; });
}
