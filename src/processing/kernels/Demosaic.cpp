#include "processing/kernels/Demosaic.h"

#include "processing/kernels/Samples.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "processing/kernels/Demosaic.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace VX3::Kernels::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR

// No vectors: the scalar reference does all.
std::size_t DemosaicWide8(Mosaic, const LinePair&, std::size_t) {
    return 0;
}
std::size_t DemosaicWide16(Mosaic, const LinePair&, std::size_t, int) {
    return 0;
}

#else

using D8 = hn::ScalableTag<std::uint8_t>;
using D16 = hn::ScalableTag<std::uint16_t>;
using V8 = hn::Vec<D8>;

struct Load8 {
    HWY_INLINE V8 operator()(const std::uint8_t* line, std::size_t x) const {
        return hn::LoadU(D8(), line + x);
    }
};

struct Load16 {
    int shift;
    HWY_INLINE V8 operator()(const std::uint8_t* line, std::size_t x) const {
        const D8 d8;
        const D16 d16;
        const auto low = hn::BitCast(d16, hn::LoadU(d8, line + 2 * x));
        const auto high = hn::BitCast(d16, hn::LoadU(d8, line + 2 * x + hn::Lanes(d8)));
        return hn::ConcatEven(d8, hn::BitCast(d8, hn::ShiftRightSame(high, shift)),
                              hn::BitCast(d8, hn::ShiftRightSame(low, shift)));
    }
};

// A line's samples spread over every pixel: the left column's seen by right pixels from the next cell on.
template <class Load>
HWY_INLINE void Spread(const Load& load, const std::uint8_t* line, std::size_t x, V8& left, V8& right) {
    const V8 here = load(line, x);
    const V8 next = load(line, x + 1);
    left = hn::OddEven(next, here);
    right = hn::OddEven(here, next);
}

template <Mosaic M, class Load>
HWY_INLINE void Step(const Load& load, const LinePair& lines, std::size_t x) {
    const D8 d8;
    V8 left0;
    V8 right0;
    V8 left1;
    V8 right1;
    Spread(load, lines.source0, x, left0, right0);
    Spread(load, lines.source1, x, left1, right1);
    std::uint8_t* target0 = lines.target0 + 3 * x;
    std::uint8_t* target1 = lines.target1 + 3 * x;
    if constexpr (M == Mosaic::RG) {
        hn::StoreInterleaved3(left0, right0, right1, d8, target0);
        hn::StoreInterleaved3(left0, left1, right1, d8, target1);
    } else if constexpr (M == Mosaic::BG) {
        hn::StoreInterleaved3(right1, right0, left0, d8, target0);
        hn::StoreInterleaved3(right1, left1, left0, d8, target1);
    } else if constexpr (M == Mosaic::GR) {
        hn::StoreInterleaved3(right0, left0, left1, d8, target0);
        hn::StoreInterleaved3(right0, right1, left1, d8, target1);
    } else {
        hn::StoreInterleaved3(left1, left0, right0, d8, target0);
        hn::StoreInterleaved3(left1, right1, right0, d8, target1);
    }
}

// A step looks one sample ahead, so steps end before the last cell; the last step overlaps the one before it.
template <Mosaic M, class Load>
std::size_t Pair(const Load& load, const LinePair& lines, std::size_t width) {
    const std::size_t n = hn::Lanes(D8());
    const std::size_t cells = width & ~std::size_t{1};
    if (cells < n + 2)
        return 0;
    const std::size_t end = cells - 2;
    for (std::size_t x = 0; x + n <= end; x += n)
        Step<M>(load, lines, x);
    Step<M>(load, lines, end - n);
    return end;
}

template <class Load>
std::size_t AnyPair(const Load& load, Mosaic mosaic, const LinePair& lines, std::size_t width) {
    switch (mosaic) {
    case Mosaic::RG:
        return Pair<Mosaic::RG>(load, lines, width);
    case Mosaic::GR:
        return Pair<Mosaic::GR>(load, lines, width);
    case Mosaic::BG:
        return Pair<Mosaic::BG>(load, lines, width);
    case Mosaic::GB:
        return Pair<Mosaic::GB>(load, lines, width);
    }
    return 0;
}

std::size_t DemosaicWide8(Mosaic mosaic, const LinePair& lines, std::size_t width) {
    return AnyPair(Load8{}, mosaic, lines, width);
}

std::size_t DemosaicWide16(Mosaic mosaic, const LinePair& lines, std::size_t width, int shift) {
    return AnyPair(Load16{shift}, mosaic, lines, width);
}

#endif // HWY_TARGET

} // namespace
} // namespace VX3::Kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace VX3::Kernels {
namespace {

HWY_EXPORT(DemosaicWide8);
HWY_EXPORT(DemosaicWide16);

// Position of a colour in the cell: row * 2 + column. Green stands in the other column of each row.
struct CellOrder {
    unsigned int red;
    unsigned int blue;
};

CellOrder OrderOf(Mosaic mosaic) {
    switch (mosaic) {
    case Mosaic::RG:
        return {0, 3};
    case Mosaic::GR:
        return {1, 2};
    case Mosaic::BG:
        return {3, 0};
    case Mosaic::GB:
        break;
    }
    return {2, 1};
}

// The cell's samples, its left and right column possibly from elsewhere, as the colours of both its rows'
// pixels.
template <class T>
class Cell {
public:
    Cell(Mosaic mosaic, const LinePair& lines, unsigned int shift)
        : order_(OrderOf(mosaic)), lines_(lines), shift_(shift) {}

    // Writes the pixels at column `x` of both lines.
    void Write(std::size_t x, std::size_t leftX, std::size_t rightX) const {
        const unsigned int green[2] = {order_.red < 2 ? 1 - order_.red : 1 - order_.blue,
                                       order_.red < 2 ? 5 - order_.blue : 5 - order_.red};
        std::uint8_t* const targets[2] = {lines_.target0, lines_.target1};
        for (std::size_t row = 0; row < 2; ++row) {
            std::uint8_t* pixel = targets[row] + 3 * x;
            pixel[0] = At(order_.red, leftX, rightX);
            pixel[1] = At(green[row], leftX, rightX);
            pixel[2] = At(order_.blue, leftX, rightX);
        }
    }

private:
    std::uint8_t At(unsigned int position, std::size_t leftX, std::size_t rightX) const {
        const std::uint8_t* line = position < 2 ? lines_.source0 : lines_.source1;
        return static_cast<std::uint8_t>(Sample<T>(line, position % 2 == 0 ? leftX : rightX) >> shift_);
    }

    CellOrder order_;
    const LinePair& lines_;
    unsigned int shift_;
};

// Finishes the cells from column `from` on.
template <class T>
void ScalarPair(Mosaic mosaic, const LinePair& lines, std::size_t width, unsigned int shift,
                std::size_t from) {
    const Cell<T> cell(mosaic, lines, shift);
    const std::size_t cells = width & ~std::size_t{1};
    for (std::size_t x = from; x < cells; x += 2) {
        // Samples of the left column come from the next cell for right pixels.
        const bool last = x + 2 >= cells;
        cell.Write(x, x, x + 1);
        cell.Write(x + 1, last ? x : x + 2, x + 1);
    }
    if (width % 2 != 0) // the right column of its cell is the one before
        cell.Write(width - 1, width - 1, width > 1 ? width - 2 : 0);
}

} // namespace

namespace Reference {

void DemosaicPair8(Mosaic mosaic, const LinePair& lines, std::size_t width) {
    ScalarPair<std::uint8_t>(mosaic, lines, width, 0, 0);
}

void DemosaicPair16(Mosaic mosaic, const LinePair& lines, std::size_t width, unsigned int shift) {
    ScalarPair<std::uint16_t>(mosaic, lines, width, shift, 0);
}

} // namespace Reference

void DemosaicPair8(Mosaic mosaic, const LinePair& lines, std::size_t width) {
    const std::size_t done = HWY_DYNAMIC_DISPATCH(DemosaicWide8)(mosaic, lines, width);
    ScalarPair<std::uint8_t>(mosaic, lines, width, 0, done);
}

void DemosaicPair16(Mosaic mosaic, const LinePair& lines, std::size_t width, unsigned int shift) {
    const std::size_t done =
        HWY_DYNAMIC_DISPATCH(DemosaicWide16)(mosaic, lines, width, static_cast<int>(shift));
    ScalarPair<std::uint16_t>(mosaic, lines, width, shift, done);
}

} // namespace VX3::Kernels
#endif
