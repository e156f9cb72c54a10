// In the steady state pixels and counts come from pools: only small handles are allocated.
#include "support/CountingAllocator.h"
#include "support/TestImages.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using namespace VX3;

struct Operation {
    std::string name;
    PixelFormatValue format;
    std::function<bool(const IImage&)> run; // false when the result is empty
};

std::vector<Operation> Operations() {
    const auto reduce = [](const IImage& image) { return image.Unpack2Image8(8, nullptr) != nullptr; };
    const auto unpack = [](const IImage& image) { return image.Unpack(nullptr) != nullptr; };
    const auto split = [](const IImage& image) { return !image.Split(0, nullptr).empty(); };
    const auto histogram = [](const IImage& image) { return !image.CreateHistogram(nullptr, 0).empty(); };
    const auto profile = [](const IImage& image) {
        return !image.CreateProfile(3, ProfileType::Horizontal, 0).empty();
    };
    const auto means = [](const IImage& image) {
        return !image.CreateProfile(0, ProfileType::Vertical, 1).empty();
    };
    const auto map = [](const IImage& image) { return image.Map2RGB8(10, 0, 255, nullptr) != nullptr; };
    return {{"unpack Mono12p", Mono12p, unpack},
            {"reduce Mono10p", Mono10p, reduce},
            {"reduce Mono16", Mono16, reduce},
            {"demosaic BayerRG8", BayerRG8, reduce},
            {"demosaic BayerGB12", BayerGB12, reduce},
            {"swap RGB8", RGB8, reduce},
            {"split RGB8", RGB8, split},
            {"split BayerRG12", BayerRG12, split},
            {"histogram Mono8", Mono8, histogram},
            {"histogram Mono12", Mono12, histogram},
            {"histogram RGB8", RGB8, histogram},
            {"profile RGB12", RGB12, profile},
            {"means RGBa8", RGBa8, means},
            {"map Mono8", Mono8, map},
            {"map Mono14", Mono14, map}};
}

TEST(SteadyState, OnlyHandlesAreAllocated) {
    constexpr unsigned int warmUp = 3;
    constexpr unsigned int runs = 8;
    constexpr std::uint64_t mostHandles = 64; // a run
    for (const Operation& operation : Operations()) {
        // Every result, a quarter of it for Bayer planes, is large enough for the pool to keep.
        const auto image = Testing::RandomImage(operation.format, {2560, 2048});
        for (unsigned int i = 0; i < warmUp; ++i)
            ASSERT_TRUE(operation.run(*image)) << operation.name;
        const std::uint64_t before = VX3::Test::Allocations();
        const std::uint64_t largeBefore = VX3::Test::LargeAllocations();
        for (unsigned int i = 0; i < runs; ++i)
            (void)operation.run(*image);
        EXPECT_EQ(VX3::Test::LargeAllocations() - largeBefore, 0U) << operation.name;
        EXPECT_LE(VX3::Test::Allocations() - before, runs * mostHandles) << operation.name;
    }
}

} // namespace
