// Image_ConvertTo, Image_Map2RGB8 and the ColorMap_* family.
#include "capi/Handles.h"
#include "capi/Results.h"
#include "vx3/processing/ColorConversion.h"
#include "vx3/processing/ColorMaps.h"

#include <cstring>

using namespace VX3;
using namespace VX3::CApi;

namespace {

// Stores a handle on what `make` makes of the live image.
template <typename Make>
int MakeImage(Image* image, Image** result, Make&& make) {
    if (result == nullptr)
        return BadHandle;
    *result = nullptr;
    return Guarded([&] {
        const auto pinned = PinImage(image);
        if (!pinned)
            return BadHandle;
        std::shared_ptr<IImage> made = make(*pinned);
        if (!made)
            return static_cast<int>(Status::NotSupported);
        *result = NewImageHandle(std::move(made));
        return 0;
    });
}

// Whether ConvertTo makes that format of such an image, or it has it already and has lines.
bool CanBe(const ImageInfo& info, PixelFormatValue wanted) {
    if (info.pixelFormat == wanted)
        return PixelFormat(wanted).IsValid() && wanted != RawBlock && info.SizesFit();
    return wanted == Mono8 || wanted == RGB8 || wanted == BGR8;
}

} // namespace

int Image_ConvertTo(Image* image, uint32_t pixelFormat, Image** result) {
    return MakeImage(image, result, [&](const IImage& source) {
        return ConvertTo(source, static_cast<PixelFormatValue>(pixelFormat), nullptr);
    });
}

int Image_ConvertToBuffer(Image* image, uint32_t pixelFormat, unsigned char* buf, size_t size,
                          size_t* length) {
    return Guarded([&] {
        const auto pinned = PinImage(image);
        const ImageInfo* info = pinned ? pinned->GetImageInfo() : nullptr;
        if (info == nullptr)
            return BadHandle;
        const PixelFormat format(pixelFormat);
        if (!CanBe(*info, format.GetFormat()))
            return SetLastFailure(Status::NotSupported,
                                  PixelFormat(info->pixelFormat).ToString() +
                                      " is not converted into the format that is wanted");
        const std::uint64_t line = format.BuffNeeded64(info->width, 1);
        const std::uint64_t needed = line * info->height;
        if (length != nullptr)
            *length = needed;
        if (needed > size)
            return TooSmall;
        if (buf == nullptr)
            return BadHandle;
        std::shared_ptr<const IImage> source = pinned;
        if (info->pixelFormat != pixelFormat)
            source = ConvertTo(*pinned, format.GetFormat(), nullptr);
        if (!source || source->GetImageBuff() == nullptr)
            return static_cast<int>(Status::NotSupported);
        for (std::uint32_t y = 0; y < info->height; ++y)
            std::memcpy(buf + y * line, source->GetImageBuff(static_cast<int>(y)), line);
        return 0;
    });
}

int Image_Map2RGB8(Image* image, unsigned int map, unsigned int low, unsigned int range, Image** result) {
    return MakeImage(image, result,
                     [&](const IImage& source) { return source.Map2RGB8(map, low, range, nullptr); });
}

int ColorMap_Count(void) {
    return Guarded([] { return static_cast<int>(ColorMapNames().size()); });
}

int ColorMap_Name(unsigned int map, char* buf, size_t size) {
    return Guarded([&] {
        const auto& names = ColorMapNames();
        return map < names.size() ? CopyText(names[map], buf, size, TooSmall) : BadHandle;
    });
}

int ColorMap_Find(const char* name) {
    return name == nullptr ? BadHandle : Guarded([&] { return FindColorMap(name); });
}
