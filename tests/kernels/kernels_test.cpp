// Kernels over lines and counts: what the published layouts say, by hand, and every vector target of this
// machine beside the scalar reference.
#include "processing/kernels/Demosaic.h"
#include "processing/kernels/Histogram.h"
#include "processing/kernels/Map.h"
#include "processing/kernels/Profile.h"
#include "processing/kernels/Recolor.h"
#include "processing/kernels/Reduce.h"
#include "processing/kernels/Samples.h"
#include "processing/kernels/Split.h"
#include "processing/kernels/Swap.h"
#include "processing/kernels/Unpack.h"
#include "support/KernelLab.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

namespace VX3::Test {
namespace {

using namespace Kernels;
using Samples = std::vector<std::uint16_t>;
using Pixels = std::vector<int>;

constexpr Packing Packings[] = {Packing::Mono10p, Packing::Mono12p, Packing::Mono10Packed,
                                Packing::Mono12Packed};

Samples Unpacked(Packing packing, const std::vector<std::uint8_t>& bytes, std::size_t pixels) {
    Samples samples(pixels);
    UnpackLine(packing, bytes.data(), bytes.size(), reinterpret_cast<std::uint8_t*>(samples.data()), pixels);
    return samples;
}

TEST(Unpack, PutsBitsWhereTheFormatsSayAndReadsMissingOnesAsZero) {
    const std::tuple<Packing, std::vector<std::uint8_t>, Samples> cases[] = {
        {Packing::Mono10p, {0x01, 0, 0, 0, 0}, {1, 0, 0, 0}},
        {Packing::Mono10p, {0x34, 0x56, 0x78, 0x9A, 0xBC}, {0x234, 0x215, 0x1A7, 0x2F2}},
        // 7 samples of 10 bits in 8 bytes: the last sample loses its top 6 bits.
        {Packing::Mono10p, std::vector<std::uint8_t>(8, 0xFF), {1023, 1023, 1023, 1023, 1023, 1023, 15}},
        {Packing::Mono12p, {0xAB, 0xCD, 0xEF}, {0xDAB, 0xEFC}},
        {Packing::Mono12p, {0xFF}, {0xFF}},
        {Packing::Mono12Packed, {0xAB, 0xCD, 0xEF}, {0xABD, 0xEFC}},
        {Packing::Mono12Packed, {0xFF}, {0xFF0}},
        {Packing::Mono12Packed, {}, {0, 0, 0}},
        // Low bits of the first sample in bits 0-1 of the middle byte, of the second in bits 4-5.
        {Packing::Mono10Packed, {0xAB, 0xCD, 0xEF}, {0x2AD, 0x3BC}}};
    for (const auto& [packing, bytes, samples] : cases)
        EXPECT_EQ(Unpacked(packing, bytes, samples.size()), samples);
}

TEST(Unpack, TopEightBitsAreThoseOfTheUnpackedSample) {
    std::vector<std::uint8_t> bytes(150);
    FillRandom(bytes.data(), bytes.size(), 7);
    for (const Packing packing : Packings) {
        const bool ten = packing == Packing::Mono10p || packing == Packing::Mono10Packed;
        std::vector<std::uint8_t> reduced(100);
        UnpackLineTo8(packing, bytes.data(), bytes.size(), reduced.data(), reduced.size());
        const Samples samples = Unpacked(packing, bytes, reduced.size());
        for (std::size_t x = 0; x < reduced.size(); ++x)
            ASSERT_EQ(reduced[x], samples[x] >> (ten ? 2 : 4)) << x;
    }
}

// Two cells, written out by hand: the right pixel of the first takes left-column samples from the second, the
// odd last column makes a cell with the one before it.
TEST(Demosaic, RightPixelsLookIntoTheNextCell) {
    const std::uint8_t line0[] = {1, 2, 3, 4, 9};
    const std::uint8_t line1[] = {5, 6, 7, 8, 10};
    const std::tuple<Mosaic, Pixels, Pixels> cases[] = {{Mosaic::RG,
                                                         {1, 2, 6, 3, 2, 6, 3, 4, 8, 3, 4, 8, 9, 4, 8},
                                                         {1, 5, 6, 3, 7, 6, 3, 7, 8, 3, 7, 8, 9, 10, 8}},
                                                        {Mosaic::GR,
                                                         {2, 1, 5, 2, 3, 7, 4, 3, 7, 4, 3, 7, 4, 9, 10},
                                                         {2, 6, 5, 2, 6, 7, 4, 8, 7, 4, 8, 7, 4, 8, 10}},
                                                        {Mosaic::BG,
                                                         {6, 2, 1, 6, 2, 3, 8, 4, 3, 8, 4, 3, 8, 4, 9},
                                                         {6, 5, 1, 6, 7, 3, 8, 7, 3, 8, 7, 3, 8, 10, 9}},
                                                        {Mosaic::GB,
                                                         {5, 1, 2, 7, 3, 2, 7, 3, 4, 7, 3, 4, 10, 9, 4},
                                                         {5, 6, 2, 7, 6, 2, 7, 8, 4, 7, 8, 4, 10, 8, 4}}};
    for (const auto& [mosaic, top, bottom] : cases) {
        std::vector<std::uint8_t> rgb0(15, 0xEE), rgb1(15, 0xEE);
        DemosaicPair8(mosaic, {line0, line1, rgb0.data(), rgb1.data()}, 5);
        EXPECT_EQ(Pixels(rgb0.begin(), rgb0.end()), top);
        EXPECT_EQ(Pixels(rgb1.begin(), rgb1.end()), bottom);
    }
}

void ExpectSameUnpacking(std::size_t width) {
    for (const Packing packing : Packings) {
        const std::size_t bytes = packing == Packing::Mono10p ? width * 5 / 4 : width * 3 / 2;
        for (const std::size_t held : {bytes, bytes + 3, bytes / 2}) {
            const auto lines = [=](auto kernel) {
                return [=](auto* source, auto* targets) { kernel(packing, source, held, targets[0], width); };
            };
            ExpectLikeReference({held, 2 * width}, lines(UnpackLine), lines(Reference::UnpackLine));
            ExpectLikeReference({held, width}, lines(UnpackLineTo8), lines(Reference::UnpackLineTo8));
        }
    }
}

void ExpectSameDemosaics(std::size_t width) {
    for (const Mosaic mosaic : {Mosaic::RG, Mosaic::GR, Mosaic::BG, Mosaic::GB}) {
        // Both source lines lie in one buffer: the second ends where the guard page begins.
        const auto pairs = [=](std::size_t second, auto kernel, auto... shift) {
            return [=](auto* source, auto* targets) {
                kernel(mosaic, {source, source + second, targets[0], targets[1]}, width, shift...);
            };
        };
        ExpectLikeReference({2 * width, 3 * width, 2}, pairs(width, DemosaicPair8),
                            pairs(width, Reference::DemosaicPair8));
        ExpectLikeReference({4 * width, 3 * width, 2}, pairs(2 * width, DemosaicPair16, 4U),
                            pairs(2 * width, Reference::DemosaicPair16, 4U));
    }
}

void ExpectSameFloats(std::size_t width) {
    constexpr float Infinity = std::numeric_limits<float>::infinity();
    static const float Awkward[] = {0.0F,     -0.0F,    -3.5F,    300.7F,    255.99F,  256.0F,
                                    65534.9F, 65535.0F, 65535.5F, 65536.0F,  70000.0F, 4.0e9F,
                                    -4.0e9F,  Infinity, NAN,      -Infinity, 1.0e-40F, 0.999F,
                                    1.5F,     32767.5F, 32768.0F, 40000.7F,  65280.0F, 65279.9F};
    const auto fill = [&](std::uint8_t* source) {
        for (std::size_t x = 0; x < width; ++x)
            PutSample(source, x, Awkward[x % std::size(Awkward)]);
    };
    ExpectSameLine({4 * width, 2 * width, 1, fill}, FloatLineTo16, Reference::FloatLineTo16, width);
    ExpectSameLine({4 * width, width, 1, fill}, FloatLineTo8, Reference::FloatLineTo8, width);
}

void ExpectSameStores(std::size_t width, Stores stores) {
    for (const unsigned int shift : {0U, 2U, 4U, 6U, 8U})
        ExpectSameLine(
            {2 * width, width}, [=](auto... line) { ReduceLine(line..., stores); }, Reference::ReduceLine,
            width, shift);
    ExpectSameLine(
        {4 * width, 4 * width}, [=](auto... line) { SwapLine4(line..., stores); }, Reference::SwapLine4,
        width);
    for (const unsigned int channels : {2U, 3U, 4U})
        for (const unsigned int bytes : {1U, 2U}) {
            const auto planes = [=](auto kernel, auto... last) {
                return [=](auto* source, auto* targets) {
                    kernel(source, targets, width, channels, bytes, last...);
                };
            };
            ExpectLikeReference({width * channels * bytes, width * bytes, channels},
                                planes(SplitLine, stores), planes(Reference::SplitLine));
        }
}

void ExpectSameColours(std::size_t width) {
    for (const unsigned int shift : {0U, 2U, 4U, 6U, 8U})
        ExpectSameLine({8 * width, 4 * width}, ReduceSwapLine4, Reference::ReduceSwapLine4, width, shift);
    ExpectSameLine({3 * width, 3 * width}, SwapLine3, Reference::SwapLine3, width);
    ExpectSameLine({width, 3 * width}, SpreadLine, Reference::SpreadLine, width);
    for (const bool flag : {false, true}) {
        ExpectSameLine({4 * width, 3 * width}, NarrowLine, Reference::NarrowLine, width, flag);
        for (const unsigned int channels : {3U, 4U})
            ExpectSameLine({channels * width, width}, GreyLine, Reference::GreyLine, width, channels, flag);
    }
}

TEST(Lines, EveryTargetAgreesWithTheReferenceAndStaysInItsLine) {
    ForEachTarget([] {
        for (const std::size_t width : AwkwardWidths()) {
            SCOPED_TRACE(width);
            ExpectSameUnpacking(width);
            ExpectSameDemosaics(width);
            ExpectSameFloats(width);
            ExpectSameColours(width);
            for (const Stores stores : {Stores::Cached, Stores::Streaming})
                ExpectSameStores(width, stores);
        }
    });
}

// Four arrays a channel, exactly as long as the bins, so that a count beyond them is caught by the guard.
Counters GuardedCounters(std::size_t first, unsigned int channels, std::uint32_t bins) {
    Counters counters{};
    counters.bins = bins;
    for (unsigned int i = 0; i < channels * Counters::Ways; ++i) {
        std::uint8_t* memory = GuardedMemory(first + i, Guard::Behind, 4 * bins);
        std::memset(memory, 0, 4 * bins);
        counters.counts[i] = reinterpret_cast<std::uint32_t*>(memory);
    }
    return counters;
}

template <class Count, class Reference>
void ExpectSameCounts(unsigned int channels, std::uint32_t bins, std::size_t width, unsigned int sampleBytes,
                      bool outside, Count count, Reference reference) {
    const std::size_t bytes = width * channels * sampleBytes;
    std::uint8_t* source = GuardedMemory(0, Guard::Behind, bytes);
    FillRandom(source, bytes, static_cast<unsigned int>(width));
    for (std::size_t i = 0; sampleBytes == 2 && !outside && i < width * channels; ++i)
        PutSample(source, i, static_cast<std::uint16_t>(Sample<std::uint16_t>(source, i) % bins));
    const Counters counted = GuardedCounters(1, channels, bins);
    const Counters expected = GuardedCounters(100, channels, bins);
    count(source, width, channels, counted);
    SumCounters(channels, counted);
    reference(source, width, channels, expected);
    for (unsigned int i = 0; i < channels * Counters::Ways; i += Counters::Ways)
        ASSERT_TRUE(std::equal(counted.counts[i], counted.counts[i] + bins, expected.counts[i]))
            << channels << " channels, width " << width;
}

TEST(Histogram, EveryTargetAgreesWithTheReference) {
    ForEachTarget([] {
        for (unsigned int channels = 1; channels <= 4; ++channels) {
            for (const std::size_t width : AwkwardWidths())
                ExpectSameCounts(channels, 256, width, 1, true, CountLine8, Reference::CountLine8);
            // Samples above the nominal range are not counted, wherever in a block they stand.
            for (const std::size_t width : {1U, 63U, 64U, 65U, 192U, 200U, 1000U}) {
                for (const bool outside : {false, true})
                    ExpectSameCounts(channels, 1024, width, 2, outside, CountLine16, Reference::CountLine16);
                ExpectSameCounts(channels, 65536, width, 2, true, CountLine16, Reference::CountLine16);
            }
        }
    });
}

TEST(Profile, SumsAgreeWithTheReferenceAndDoNotOverflow) {
    ForEachTarget([] {
        for (const unsigned int bytes : {1U, 2U}) {
            for (const std::size_t width : AwkwardWidths()) {
                const std::size_t lines = width < 200 ? 600 : 7;
                // The brightest samples find lanes that are too narrow.
                const auto fill = [&](std::uint8_t* source) {
                    std::memset(source, 0xFF, width * bytes * lines / 2);
                };
                if (width % 7 != 3 && width > 20)
                    continue; // every seventh width is enough for what is slow here
                const auto columns = [=](auto kernel) {
                    return [=](auto* source, auto* targets) {
                        std::vector<std::uint64_t> sums(width + 1, 5);
                        kernel(source, width * bytes, lines, width, bytes, sums.data());
                        if (width != 0) // an empty line has no memory
                            std::memcpy(targets[0], sums.data(), 8 * width);
                    };
                };
                ExpectLikeReference({width * bytes * lines, 8 * width, 1, fill}, columns(SumColumns),
                                    columns(Reference::SumColumns));
                for (unsigned int channels = 1; channels <= 4; ++channels) {
                    std::uint64_t sums[4] = {};
                    std::uint64_t expected[4] = {};
                    std::uint8_t* line = GuardedMemory(0, Guard::Behind, width * channels * bytes);
                    std::memset(line, 0xFE, width * channels * bytes);
                    SumLine(line, width, channels, bytes, sums);
                    Reference::SumLine(line, width, channels, bytes, expected);
                    ASSERT_TRUE(std::equal(sums, sums + 4, expected)) << width << " x " << channels;
                }
            }
        }
    });
    // More lines than 32-bit lanes hold of the brightest 16-bit sample, by a stride of 0.
    std::uint8_t brightest[2] = {0xFF, 0xFF};
    std::uint64_t sum = 0;
    SumColumns(brightest, 0, 200000, 1, 2, &sum);
    EXPECT_EQ(sum, 200000ULL * 65535);
}

TEST(Map, EveryTargetAgreesWithTheReference) {
    std::vector<std::uint32_t> table(16384);
    FillRandom(reinterpret_cast<std::uint8_t*>(table.data()), 4 * table.size(), 3);
    std::uint32_t table8[256];
    std::copy(table.begin(), table.begin() + 256, table8);
    const MapWindow windows[] = {{0, 65535, 2, table.data(), 16383},
                                 {1000, 65535, 2, table.data(), 16383},
                                 {100, 356, 0, table.data(), 255},
                                 {65535, 65535, 0, table.data(), 255},
                                 {40000, 50000, 0, table.data(), 16383}};
    ForEachTarget([&] {
        for (const std::size_t width : AwkwardWidths()) {
            for (const MapWindow& window : windows)
                ExpectSameLine({2 * width, 4 * width}, MapLine16, Reference::MapLine16, width, window);
            const auto mapped = [&](auto kernel) { // an array cannot be copied along
                return
                    [&, kernel](auto* source, auto* targets) { kernel(source, targets[0], width, table8); };
            };
            ExpectLikeReference({width, 4 * width}, mapped(MapLine8), mapped(Reference::MapLine8));
        }
    });
}

} // namespace
} // namespace VX3::Test
