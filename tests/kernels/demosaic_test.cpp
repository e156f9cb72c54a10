#include "processing/kernels/Demosaic.h"
#include "processing/kernels/Split.h"

#include "support/KernelLab.h"

using namespace VX3;
using namespace VX3::Kernels;
using VX3::Testing::AwkwardWidths;
using VX3::Testing::ExpectLikeReference;
using VX3::Testing::ForEachTarget;

namespace {

using Pixels = std::vector<int>;

// Demosaics two lines of bytes and returns both lines of R, G, B.
std::pair<Pixels, Pixels> Demosaiced(Mosaic mosaic, const std::vector<std::uint8_t>& line0,
                                     const std::vector<std::uint8_t>& line1) {
    std::vector<std::uint8_t> rgb0(3 * line0.size(), 0xEE);
    std::vector<std::uint8_t> rgb1(3 * line0.size(), 0xEE);
    DemosaicPair8(mosaic, {line0.data(), line1.data(), rgb0.data(), rgb1.data()}, line0.size());
    return {Pixels(rgb0.begin(), rgb0.end()), Pixels(rgb1.begin(), rgb1.end())};
}

TEST(Demosaic, OneCellGivesBothColumnsTheSameColours) {
    const auto [top, bottom] = Demosaiced(Mosaic::RG, {10, 20}, {30, 40});
    EXPECT_EQ(top, (Pixels{10, 20, 40, 10, 20, 40}));
    EXPECT_EQ(bottom, (Pixels{10, 30, 40, 10, 30, 40}));
}

// Two cells, written out by hand: the right pixel of the first takes left-column samples from the second.
TEST(Demosaic, RightPixelsLookIntoTheNextCell) {
    const std::vector<std::uint8_t> line0 = {1, 2, 3, 4};
    const std::vector<std::uint8_t> line1 = {5, 6, 7, 8};
    EXPECT_EQ(Demosaiced(Mosaic::RG, line0, line1),
              std::make_pair(Pixels{1, 2, 6, 3, 2, 6, 3, 4, 8, 3, 4, 8},
                             Pixels{1, 5, 6, 3, 7, 6, 3, 7, 8, 3, 7, 8}));
    EXPECT_EQ(Demosaiced(Mosaic::GR, line0, line1),
              std::make_pair(Pixels{2, 1, 5, 2, 3, 7, 4, 3, 7, 4, 3, 7},
                             Pixels{2, 6, 5, 2, 6, 7, 4, 8, 7, 4, 8, 7}));
    EXPECT_EQ(Demosaiced(Mosaic::BG, line0, line1),
              std::make_pair(Pixels{6, 2, 1, 6, 2, 3, 8, 4, 3, 8, 4, 3},
                             Pixels{6, 5, 1, 6, 7, 3, 8, 7, 3, 8, 7, 3}));
    EXPECT_EQ(Demosaiced(Mosaic::GB, line0, line1),
              std::make_pair(Pixels{5, 1, 2, 7, 3, 2, 7, 3, 4, 7, 3, 4},
                             Pixels{5, 6, 2, 7, 6, 2, 7, 8, 4, 7, 8, 4}));
}

TEST(Demosaic, AnOddLastColumnIsLeftAlone) {
    const auto [top, bottom] = Demosaiced(Mosaic::GB, {1, 2, 3}, {4, 5, 6});
    EXPECT_EQ(top, (Pixels{4, 1, 2, 4, 1, 2, 0xEE, 0xEE, 0xEE}));
    EXPECT_EQ(bottom, (Pixels{4, 5, 2, 4, 5, 2, 0xEE, 0xEE, 0xEE}));
}

TEST(Demosaic, EveryTargetAgreesWithTheReference) {
    ForEachTarget([] {
        for (const Mosaic mosaic : {Mosaic::RG, Mosaic::GR, Mosaic::BG, Mosaic::GB})
            for (const std::size_t width : AwkwardWidths()) {
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
    });
}

TEST(Split, EveryTargetAgreesWithTheReference) {
    ForEachTarget([] {
        for (const unsigned int channels : {2U, 3U, 4U})
            for (const unsigned int bytes : {1U, 2U})
                for (const std::size_t width : AwkwardWidths())
                    for (const Stores stores : {Stores::Cached, Stores::Streaming})
                        ExpectLikeReference(
                            {width * channels * bytes, width * bytes, channels},
                            [=](auto* source, auto* targets) {
                                SplitLine(source, targets, width, channels, bytes, stores);
                            },
                            [=](auto* source, auto* targets) {
                                Reference::SplitLine(source, targets, width, channels, bytes);
                            });
    });
}

} // namespace
