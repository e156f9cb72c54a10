#include "processing/kernels/Swap.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "processing/kernels/Swap.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace VX3::Kernels::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR

// No vectors: the scalar reference does all.
std::size_t Swap3(const std::uint8_t*, std::uint8_t*, std::size_t) {
    return 0;
}
std::size_t Swap4(const std::uint8_t*, std::uint8_t*, std::size_t, Stores) {
    return 0;
}

#else

// Five pixels a step: 16 bytes are stored, and the next step overwrites the last of them. The store stays
// within the line, whose end is for the scalar reference.
std::size_t Swap3(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels) {
    HWY_ALIGN static constexpr std::uint8_t Swap[16] = {2, 1, 0, 5, 4, 3, 8, 7, 6, 11, 10, 9, 14, 13, 12, 15};
    const hn::CappedTag<std::uint8_t, 16> d;
    const auto swap = hn::Load(d, Swap);
    const std::size_t bytes = 3 * pixels;
    std::size_t at = 0;
    for (; at + 31 <= bytes; at += 30) {
        const auto first = hn::LoadU(d, source + at);
        const auto second = hn::LoadU(d, source + at + 15);
        hn::StoreU(hn::TableLookupBytes(first, swap), d, target + at);
        hn::StoreU(hn::TableLookupBytes(second, swap), d, target + at + 15);
    }
    return at / 3;
}

std::size_t Swap4(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels, Stores stores) {
    HWY_ALIGN static constexpr std::uint8_t Swap[16] = {2, 1, 0, 3, 6, 5, 4, 7, 10, 9, 8, 11, 14, 13, 12, 15};
    const hn::ScalableTag<std::uint8_t> d;
    const std::size_t n = hn::Lanes(d);
    const auto swap = hn::LoadDup128(d, Swap);
    const std::size_t bytes = 4 * pixels;
    std::size_t at = 0;
    const std::size_t off = reinterpret_cast<std::uintptr_t>(target) % n;
    if (stores == Stores::Streaming && bytes >= n && off % 4 == 0) {
        // Streaming stores are aligned: the first step overlaps the second.
        hn::StoreU(hn::TableLookupBytes(hn::LoadU(d, source), swap), d, target);
        for (at = n - off; at + n <= bytes; at += n)
            hn::Stream(hn::TableLookupBytes(hn::LoadU(d, source + at), swap), d, target + at);
        return at / 4;
    }
    for (; at + n <= bytes; at += n)
        hn::StoreU(hn::TableLookupBytes(hn::LoadU(d, source + at), swap), d, target + at);
    return at / 4;
}

#endif // HWY_TARGET

} // namespace
} // namespace VX3::Kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace VX3::Kernels {
namespace {
HWY_EXPORT(Swap3);
HWY_EXPORT(Swap4);
} // namespace

namespace Reference {

void SwapLine3(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels) {
    for (std::size_t at = 0; at < 3 * pixels; at += 3) {
        target[at] = source[at + 2];
        target[at + 1] = source[at + 1];
        target[at + 2] = source[at];
    }
}

void SwapLine4(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels) {
    for (std::size_t at = 0; at < 4 * pixels; at += 4) {
        target[at] = source[at + 2];
        target[at + 1] = source[at + 1];
        target[at + 2] = source[at];
        target[at + 3] = source[at + 3];
    }
}

} // namespace Reference

void SwapLine3(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels) {
    const std::size_t done = HWY_DYNAMIC_DISPATCH(Swap3)(source, target, pixels);
    Reference::SwapLine3(source + 3 * done, target + 3 * done, pixels - done);
}

void SwapLine4(const std::uint8_t* source, std::uint8_t* target, std::size_t pixels, Stores stores) {
    const std::size_t done = HWY_DYNAMIC_DISPATCH(Swap4)(source, target, pixels, stores);
    Reference::SwapLine4(source + 4 * done, target + 4 * done, pixels - done);
}

} // namespace VX3::Kernels
#endif
