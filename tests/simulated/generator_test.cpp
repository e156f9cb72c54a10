#include "simulated/DataGeneratorBeam.h"
#include "simulated/ImageGeneratorSimple.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>
#include <thread>

namespace VX3::Test {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;

ImageInfo Header(std::uint32_t width, std::uint32_t height, std::uint32_t format = Mono8) {
    ImageInfo info;
    info.width = width;
    info.height = height;
    info.pixelFormat = format;
    return info;
}

TEST(BeamPattern, IsABrightSpotThatWandersAroundTheCentre) {
    DataGeneratorBeam beam(400, true, 20, nullptr);
    std::vector<unsigned char> pixels(400 * 400);
    double sumX = 0, squares = 0;
    constexpr int Frames = 200;
    for (int frame = 0; frame < Frames; ++frame) {
        beam.GenerateData(pixels.data(), 400, 400, Mono8);
        const cv::Moments moments = cv::moments(cv::Mat(400, 400, CV_8UC1, pixels.data()));
        const double x = moments.m10 / moments.m00; // the centre of mass
        const double y = moments.m01 / moments.m00;
        sumX += x;
        squares += (x - 200) * (x - 200);
        // The grey of the innermost circles, and a profile that falls to black at radius 65.
        const auto at = [&](double radius) {
            return pixels[std::size_t(std::lround(y)) * 400 + std::size_t(std::lround(x + radius))];
        };
        EXPECT_GE(at(0), 250);
        EXPECT_NEAR(at(32), 128, 12);
        EXPECT_EQ(at(70), 0);
    }
    EXPECT_NEAR(sumX / Frames, 200.0, 8.0);
    EXPECT_NEAR(std::sqrt(squares / Frames), 20.0, 5.0);
}

TEST(BeamPattern, FillsFramesOfAnySizeAndReadsNothingOutsideItsCanvas) {
    DataGeneratorBeam beam(400, true, 20, nullptr);
    DataGeneratorBeam wanderer(50, false, 5000, nullptr);
    const std::pair<unsigned int, unsigned int> sizes[] = {{1, 1},     {16, 900},    {399, 401}, {401, 2},
                                                           {801, 801}, {2000, 1500}, {0, 10},    {10, 0}};
    for (const auto& [width, height] : sizes) {
        const std::size_t size = std::size_t(width) * height;
        std::vector<unsigned char> pixels(size + 8, 0xAA);
        for (int i = 0; i < 20; ++i)
            wanderer.GenerateData(pixels.data(), width, height, Mono8);
        beam.GenerateData(pixels.data(), width, height, Mono8);
        EXPECT_EQ(std::vector(pixels.begin() + long(size), pixels.end()),
                  std::vector<unsigned char>(8, 0xAA));
        std::size_t stray = 0; // beyond the pattern it is black
        for (std::size_t i = 0; i < size; ++i)
            stray += pixels[i] != 0 && (i % width >= 400 || i / width >= 800);
        EXPECT_EQ(stray, 0U) << width << " x " << height;
    }
}

TEST(ImageGenerator, NumbersStampsAndPacesItsFrames) {
    ImageGeneratorSimple generator;
    EXPECT_EQ(generator.GetFrameTime(), 200U);
    generator.SetFrameTime(20);
    const auto start = steady_clock::now();
    std::uint64_t previous = 0;
    for (std::uint64_t frame = 1; frame <= 5; ++frame) {
        const auto image = generator.Generate(nullptr, nullptr);
        ASSERT_NE(image, nullptr);
        const ImageInfo& info = *image->GetImageInfo();
        EXPECT_EQ(info.blockId, frame);
        EXPECT_EQ(std::tuple(info.width, info.height, info.pixelFormat),
                  std::tuple(400U, 400U, std::uint32_t(Mono8)));
        const std::uint64_t stamp = (std::uint64_t(info.timestampHigh) << 32) | info.timestampLow;
        EXPECT_GT(stamp, std::exchange(previous, stamp));
    }
    EXPECT_GE(steady_clock::now() - start, 100ms);
    for (const std::uint64_t blocks : {5U, 0U}) {
        EXPECT_EQ(generator.GetStatistics()->blocks, blocks);
        EXPECT_EQ(generator.GetStatistics()->reserved, 1U);
        generator.Reset();
    }
}

TEST(ImageGenerator, TakesAForeignHeaderAndRefusesAbsurdOnes) {
    ImageGeneratorSimple generator;
    generator.SetFrameTime(0);
    const auto make = [&](const ImageInfo& info) { return generator.Generate(nullptr, &info); };
    EXPECT_EQ(make(Header(640, 480))->GetImageInfo()->width, 640U);
    EXPECT_EQ(generator.GetImgInfo().width, 400U);
    EXPECT_EQ(make(Header(0xFFFFFFFF, 0xFFFFFFFF)), nullptr) << "sizes that wrap";
    make(Header(0, 100));
    EXPECT_NE(make(Header(101, 99, Mono16)), nullptr);
}

TEST(ImageGenerator, NeitherSpinsOnAnEmptyPoolNorWaitsAfterAnInterrupt) {
    ImageGeneratorSimple generator;
    const std::shared_ptr<IImagePool> empty = ImagePoolFactory::CreateRingAImagePool(1, 2, 64, "empty");
    const auto start = steady_clock::now();
    generator.SetFrameTime(0);
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(generator.Generate(empty, nullptr), nullptr);
    EXPECT_GE(steady_clock::now() - start, 40ms);
    generator.SetFrameTime(30);
    const auto paced = steady_clock::now();
    generator.Generate(empty, nullptr);
    EXPECT_GE(steady_clock::now() - paced, 30ms) << "an empty pool is asked again after the frame time";

    const auto waiting = steady_clock::now();
    const std::function<void()> ends[] = {[&] { generator.Interrupt(); }, [&] { generator.SetFrameTime(1); }};
    for (const auto& end : ends) {
        generator.SetFrameTime(3600000);
        generator.Reset();
        std::thread other([&] {
            std::this_thread::sleep_for(20ms);
            end();
        });
        generator.Generate(nullptr, nullptr);
        generator.Generate(nullptr, nullptr); // nor later
        other.join();
    }
    EXPECT_LT(steady_clock::now() - waiting, 10s) << "both count at once";
}

} // namespace
} // namespace VX3::Test
