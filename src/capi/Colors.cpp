// Image_ConvertTo, Image_Map2RGB8 and the ColorMap_* family.
#include "capi/Handles.h"
#include "capi/Results.h"
#include "vx3/processing/ColorConversion.h"
#include "vx3/processing/ColorMaps.h"

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
        const auto record = GetTables().images.Pin(image);
        if (!record || !record->image)
            return BadHandle;
        std::shared_ptr<IImage> made = make(*record->image);
        if (!made)
            return static_cast<int>(Status::NotSupported);
        *result = NewImageHandle(std::move(made));
        return 0;
    });
}

} // namespace

int Image_ConvertTo(Image* image, uint32_t pixelFormat, Image** result) {
    return MakeImage(image, result, [&](const IImage& source) {
        return ConvertTo(source, static_cast<PixelFormatValue>(pixelFormat), nullptr);
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
