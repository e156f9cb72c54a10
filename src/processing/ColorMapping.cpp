// False colour of monochrome images: a window of sample values looked up in a colour map.
#include "vx3/processing/ColorMaps.h"

#include "processing/EachLine.h"
#include "processing/colormaps/ColorTables.h"
#include "processing/kernels/Map.h"
#include "vx3/image/IFormatConvertor.h"

#include <algorithm>
#include <iterator>
#include <strings.h>

namespace VX3 {

namespace {

constexpr unsigned int LastResolution = ColorResolutionCount - 1;

// The window clips and does not stretch: samples below it look like 0, above it like 255.
void FillTable8(unsigned int map, std::uint64_t low, std::uint64_t range, std::uint32_t (&table)[256]) {
    low = std::min<std::uint64_t>(low, 255);
    const std::uint64_t high = std::min<std::uint64_t>(low + range, 255);
    const std::uint32_t* entries = g_colorTable[map][0];
    for (std::uint64_t value = 0; value < 256; ++value)
        table[value] = entries[value < low ? 0 : value <= high ? value : 255];
}

// The least resolution that shows every value of the window, and the shift where none does.
Kernels::MapWindow WindowOf(unsigned int map, std::uint64_t low, std::uint64_t range, unsigned int depth) {
    const std::uint64_t top = (std::uint64_t{1} << depth) - 1;
    const std::uint64_t high = std::min(low + range, top);
    const std::uint64_t span = high > low ? high - low : 0;
    // A window that begins above the nominal range is empty: what lies in it is above it.
    const std::uint64_t last = high < low ? low - 1 : high;
    unsigned int resolution = 0;
    unsigned int shift = 0;
    // Below 16 bits, a window of 2047 or 2048 values takes the next resolution already.
    const auto holds = [depth](unsigned int d) {
        return d == 3 && depth < 16 ? std::uint64_t{0x7FE} : std::uint64_t{256} << d;
    };
    while (resolution < LastResolution && span > holds(resolution))
        ++resolution;
    if (depth == 16 && span > 16384)
        shift = span <= 32768 ? 1 : 2;
    // A window above every sample: all of them are below it.
    const bool nothing = low > 65535;
    return {static_cast<std::uint16_t>(nothing ? 65535 : low),
            static_cast<std::uint16_t>(nothing ? 65535 : last), shift, g_colorTable[map][resolution],
            static_cast<std::uint16_t>((256U << resolution) - 1)};
}

bool IsMappable(PixelFormatValue format) {
    return format == Mono8 || format == Mono10 || format == Mono12 || format == Mono14 || format == Mono16;
}

} // namespace

std::unique_ptr<IImage> MapImage2RGB8(const IImage& image, unsigned int map, unsigned int low,
                                      unsigned int range, std::shared_ptr<IImagePool> pool) {
    if (image.GetImageInfo() == nullptr)
        return nullptr;
    const ImageInfo& info = *image.GetImageInfo();
    const PixelFormat format(info.pixelFormat);
    if (!IsMappable(format) || !IsReadableAs(&image, format))
        return nullptr;
    map = std::min(map, ColorMapMono);
    if (format == Mono8) {
        std::uint32_t table[256];
        FillTable8(map, low, range, table);
        return EachLine(image, RGBa8, std::move(pool),
                        [&](const std::uint8_t* source, std::uint8_t* target, Kernels::Stores) {
                            Kernels::MapLine8(source, target, info.width, table);
                        });
    }
    const Kernels::MapWindow window = WindowOf(map, low, range, format.BitDepth());
    return EachLine(image, RGBa8, std::move(pool),
                    [&](const std::uint8_t* source, std::uint8_t* target, Kernels::Stores) {
                        Kernels::MapLine16(source, target, info.width, window);
                    });
}

const std::vector<std::string>& ColorMapNames() {
    static const std::vector<std::string> names(std::begin(g_colorMapNames), std::end(g_colorMapNames));
    return names;
}

int FindColorMap(const std::string& name) {
    const auto found =
        std::find_if(std::begin(g_colorMapNames), std::end(g_colorMapNames),
                     [&name](const char* map) { return ::strcasecmp(map, name.c_str()) == 0; });
    return found == std::end(g_colorMapNames) ? -1 : static_cast<int>(found - std::begin(g_colorMapNames));
}

} // namespace VX3
