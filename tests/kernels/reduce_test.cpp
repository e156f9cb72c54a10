#include "processing/kernels/Recolor.h"
#include "processing/kernels/Reduce.h"
#include "processing/kernels/Samples.h"
#include "processing/kernels/Swap.h"

#include "support/KernelLab.h"

#include <cmath>
#include <limits>

using namespace VX3;
using namespace VX3::Kernels;
using VX3::Testing::AwkwardWidths;
using VX3::Testing::ExpectSameLine;
using VX3::Testing::ForEachTarget;

namespace {

TEST(Reduce, TruncatesAndWraps) {
    const std::uint16_t samples[4] = {0x1234, 1023, 1024, 0xFFFF};
    std::uint8_t reduced[4];
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(samples);
    ReduceLine(bytes, reduced, 4, 8);
    EXPECT_EQ(reduced[0], 0x12);
    ReduceLine(bytes, reduced, 4, 2);
    EXPECT_EQ(reduced[1], 255);
    EXPECT_EQ(reduced[2], 0) << "above the nominal range of 10 bits";
}

TEST(Reduce, EveryTargetAgreesWithTheReference) {
    ForEachTarget([] {
        for (const std::size_t width : AwkwardWidths())
            for (const unsigned int shift : {0U, 2U, 4U, 6U, 8U}) {
                for (const Stores stores : {Stores::Cached, Stores::Streaming})
                    ExpectSameLine(
                        {2 * width, width}, [=](auto... line) { ReduceLine(line..., stores); },
                        Reference::ReduceLine, width, shift);
                ExpectSameLine({8 * width, 4 * width}, ReduceSwapLine4, Reference::ReduceSwapLine4, width,
                               shift);
            }
    });
}

std::vector<float> AwkwardFloats() {
    const float inf = std::numeric_limits<float>::infinity();
    return {0.0F,     -0.0F,    -3.5F,    300.7F,   255.99F,  256.0F,   65534.9F, 65535.0F,
            65535.5F, 65536.0F, 70000.0F, 4.0e9F,   -4.0e9F,  inf,      -inf,     NAN,
            1.0e-40F, 0.999F,   1.5F,     32767.5F, 32768.0F, 40000.7F, 65280.0F, 65279.9F};
}

TEST(Reduce, FloatsAreHeldInRange) {
    const auto floats = AwkwardFloats();
    ForEachTarget([&] {
        for (const std::size_t width : AwkwardWidths()) {
            const auto fill = [&](std::uint8_t* source) {
                for (std::size_t x = 0; x < width; ++x)
                    PutSample(source, x, floats[x % floats.size()]);
            };
            ExpectSameLine({4 * width, 2 * width, 1, fill}, FloatLineTo16, Reference::FloatLineTo16, width);
            ExpectSameLine({4 * width, width, 1, fill}, FloatLineTo8, Reference::FloatLineTo8, width);
        }
    });
    const float samples[4] = {70000.0F, -3.5F, 300.7F, NAN};
    std::uint16_t wide[4];
    std::uint8_t narrow[4];
    FloatLineTo16(reinterpret_cast<const std::uint8_t*>(samples), reinterpret_cast<std::uint8_t*>(wide), 4);
    FloatLineTo8(reinterpret_cast<const std::uint8_t*>(samples), narrow, 4);
    EXPECT_EQ(std::vector<int>(wide, wide + 4), (std::vector<int>{65535, 0, 300, 0}));
    EXPECT_EQ(std::vector<int>(narrow, narrow + 4), (std::vector<int>{255, 0, 1, 0}));
}

TEST(Swap, EveryTargetAgreesWithTheReference) {
    ForEachTarget([] {
        for (const std::size_t width : AwkwardWidths()) {
            ExpectSameLine({3 * width, 3 * width}, SwapLine3, Reference::SwapLine3, width);
            for (const Stores stores : {Stores::Cached, Stores::Streaming})
                ExpectSameLine(
                    {4 * width, 4 * width}, [=](auto... line) { SwapLine4(line..., stores); },
                    Reference::SwapLine4, width);
        }
    });
}

TEST(Recolor, EveryTargetAgreesWithTheReference) {
    ForEachTarget([] {
        for (const std::size_t width : AwkwardWidths()) {
            ExpectSameLine({width, 3 * width}, SpreadLine, Reference::SpreadLine, width);
            for (const bool flag : {false, true}) {
                ExpectSameLine({4 * width, 3 * width}, NarrowLine, Reference::NarrowLine, width, flag);
                for (const unsigned int channels : {3U, 4U})
                    ExpectSameLine({channels * width, width}, GreyLine, Reference::GreyLine, width, channels,
                                   flag);
            }
        }
    });
}

} // namespace
