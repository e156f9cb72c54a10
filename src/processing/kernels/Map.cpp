#include "processing/kernels/Map.h"

#include "processing/kernels/Samples.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "processing/kernels/Map.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace VX3::Kernels::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR

// No vectors: the scalar reference does all.
std::size_t MapWide16(const std::uint8_t*, std::uint8_t*, std::size_t, const MapWindow&) {
    return 0;
}

#else

// Eight entries are fetched by scalar loads: the table is cached, and gather instructions are no faster.
HWY_INLINE void Fetch(const std::uint32_t* table, std::uint64_t four, std::uint8_t* target) {
    const std::uint64_t first = table[four & 0xFFFF] | std::uint64_t{table[four >> 16 & 0xFFFF]} << 32;
    const std::uint64_t second = table[four >> 32 & 0xFFFF] | std::uint64_t{table[four >> 48]} << 32;
    std::memcpy(target, &first, sizeof first);
    std::memcpy(target + 8, &second, sizeof second);
}

// Vectors make the indices of a step, words of four fetch the entries.
std::size_t MapWide16(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels,
                      const MapWindow& window) {
    const hn::CappedTag<std::uint8_t, 32> d8;
    const hn::Repartition<std::uint16_t, decltype(d8)> d;
    const std::size_t n = hn::Lanes(d);
    if (n < 4)
        return 0;
    const auto low = hn::Set(d, window.low);
    const auto high = hn::Set(d, window.high);
    const auto last = hn::Set(d, window.last);
    const int shift = static_cast<int>(window.shift);
    HWY_ALIGN std::uint16_t indices[16];
    std::size_t x = 0;
    for (; x + n <= pixels; x += n) {
        const auto value = hn::BitCast(d, hn::LoadU(d8, source + 2 * x));
        const auto inside = hn::Min(hn::ShiftRightSame(hn::SaturatedSub(value, low), shift), last);
        hn::Store(hn::IfThenElse(hn::Gt(value, high), last, inside), d, indices);
        for (std::size_t i = 0; i < n; i += 4) {
            std::uint64_t four;
            std::memcpy(&four, indices + i, sizeof four);
            Fetch(window.table, four, target + 4 * (x + i));
        }
    }
    return x;
}

#endif // HWY_TARGET

} // namespace
} // namespace VX3::Kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace VX3::Kernels {
namespace {
HWY_EXPORT(MapWide16);
} // namespace

namespace Reference {

void MapLine8(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels,
              const std::uint32_t (&table)[256]) {
    for (std::size_t x = 0; x < pixels; ++x)
        PutSample(target, x, table[source[x]]);
}

void MapLine16(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels,
               const MapWindow& window) {
    for (std::size_t x = 0; x < pixels; ++x) {
        const std::uint32_t value = Sample<std::uint16_t>(source, x);
        std::uint32_t index = window.last;
        if (value < window.low)
            index = 0;
        else if (value <= window.high)
            index = std::min<std::uint32_t>((value - window.low) >> window.shift, window.last);
        PutSample(target, x, window.table[index]);
    }
}

} // namespace Reference

// One table load a pixel is all there is to do; eight samples come with one load and go with four stores.
void MapLine8(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels,
              const std::uint32_t (&table)[256]) {
    std::size_t x = 0;
    for (; x + 8 <= pixels; x += 8) {
        std::uint64_t eight;
        std::memcpy(&eight, source + x, sizeof eight);
        for (unsigned int i = 0; i < 8; i += 2) {
            const std::uint64_t two =
                table[eight >> (8 * i) & 0xFF] | std::uint64_t{table[eight >> (8 * i + 8) & 0xFF]} << 32;
            std::memcpy(target + 4 * (x + i), &two, sizeof two);
        }
    }
    Reference::MapLine8(source + x, target + 4 * x, pixels - x, table);
}

void MapLine16(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels,
               const MapWindow& window) {
    const std::size_t done = HWY_DYNAMIC_DISPATCH(MapWide16)(source, target, pixels, window);
    Reference::MapLine16(source + 2 * done, target + 4 * done, pixels - done, window);
}

} // namespace VX3::Kernels
#endif
