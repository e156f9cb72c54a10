#include "simulated/DataGeneratorBeam.h"
#include "simulated/ImageGeneratorSimple.h"

#include <gtest/gtest.h>

#include <cmath>
#include <thread>

using namespace VX3;
using namespace std::chrono_literals;
using std::chrono::steady_clock;

namespace {

// Gives no image.
class EmptyPool : public IImagePool {
public:
    std::string Name() const override { return "empty"; }
    std::uint64_t ObjID() const override { return 0; }
    bool IsConfigurable() const override { return false; }
    IConfigurer* GetConfigurer() override { return nullptr; }
    unsigned int ObjType() const override { return 0; }
    std::list<std::pair<std::string, std::string>> GetInfo() const override { return {}; }
    unsigned int TypeId() const override { return 0; }
    std::unique_ptr<IImage> Create(const ImageInfo*, const unsigned char*, unsigned int) override {
        ++asked;
        return nullptr;
    }
    unsigned int Release(std::unique_ptr<IImage>&&) override { return 0; }
    unsigned int PoolType() const override { return 0; }
    std::uint64_t PoolSize() const override { return 0; }

    std::atomic<int> asked{0};
};

struct Spot {
    double x = 0;
    double y = 0;
    double sum = 0;
};

// Centre of mass.
Spot Measure(const std::vector<unsigned char>& pixels, unsigned int width) {
    Spot spot;
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        spot.x += pixels[i] * static_cast<double>(i % width);
        spot.y += pixels[i] * static_cast<double>(i / width);
        spot.sum += pixels[i];
    }
    spot.x /= spot.sum;
    spot.y /= spot.sum;
    return spot;
}

ImageInfo Header(std::uint32_t width, std::uint32_t height, std::uint32_t format = Mono8) {
    ImageInfo info;
    info.width = width;
    info.height = height;
    info.pixelFormat = format;
    return info;
}

} // namespace

TEST(BeamPattern, IsABrightSpotThatWandersAroundTheCentre) {
    DataGeneratorBeam beam(400, true, 20, nullptr);
    std::vector<unsigned char> pixels(400 * 400);
    double sumX = 0;
    double squares = 0;
    constexpr int Frames = 200;
    for (int i = 0; i < Frames; ++i) {
        beam.GenerateData(pixels.data(), 400, 400, Mono8);
        const Spot spot = Measure(pixels, 400);
        sumX += spot.x;
        squares += (spot.x - 200) * (spot.x - 200);
        // The grey of the innermost circles, and a profile that falls to black at radius 65.
        const auto at = [&](double radius) {
            return pixels[std::size_t(std::lround(spot.y)) * 400 + std::size_t(std::lround(spot.x + radius))];
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
    const std::pair<unsigned int, unsigned int> sizes[] = {
        {1, 1}, {16, 900}, {399, 401}, {400, 400}, {401, 2}, {801, 801}, {2000, 1500}, {0, 10}, {10, 0}};
    for (const auto& [width, height] : sizes) {
        std::vector<unsigned char> pixels(std::size_t(width) * height + 8, 0xAA);
        beam.GenerateData(pixels.data(), width, height, Mono8);
        for (std::size_t i = pixels.size() - 8; i < pixels.size(); ++i)
            ASSERT_EQ(pixels[i], 0xAA) << width << " x " << height;
        for (std::size_t y = 0; y < height; ++y)
            for (std::size_t x = width > 400 ? 400 : width; x < width; ++x)
                ASSERT_EQ(pixels[y * width + x], 0) << "beyond the pattern it is black";
        if (width >= 400 && height > 800) {
            for (std::size_t i = 800 * std::size_t(width); i < std::size_t(width) * height; ++i)
                ASSERT_EQ(pixels[i], 0);
        }
    }
}

TEST(BeamPattern, StaysInsideWhenTheSpotWandersFar) {
    DataGeneratorBeam beam(50, false, 5000, nullptr);
    std::vector<unsigned char> pixels(200 * 200);
    for (int i = 0; i < 200; ++i)
        beam.GenerateData(pixels.data(), 200, 200, Mono8);
}

TEST(ImageGenerator, NumbersStampsAndPacesItsFrames) {
    ImageGeneratorSimple generator;
    EXPECT_EQ(generator.GetFrameTime(), 200U);
    EXPECT_EQ(generator.GetStatistics()->reserved, 1U);
    generator.SetFrameTime(20);
    const auto start = steady_clock::now();
    std::uint64_t previous = 0;
    for (std::uint64_t frame = 1; frame <= 5; ++frame) {
        const auto image = generator.Generate(nullptr, nullptr);
        ASSERT_NE(image, nullptr);
        const ImageInfo& info = *image->GetImageInfo();
        EXPECT_EQ(info.blockId, frame);
        EXPECT_EQ(info.width * info.height, 160000U);
        EXPECT_EQ(info.pixelFormat, static_cast<std::uint32_t>(Mono8));
        const std::uint64_t stamp = (std::uint64_t(info.timestampHigh) << 32) | info.timestampLow;
        EXPECT_GT(stamp, previous);
        previous = stamp;
    }
    EXPECT_GE(steady_clock::now() - start, 100ms);
    EXPECT_EQ(generator.GetStatistics()->blocks, 5U);
    generator.Reset();
    EXPECT_EQ(generator.GetStatistics()->blocks, 0U);
    EXPECT_EQ(generator.GetStatistics()->reserved, 1U);
}

TEST(ImageGenerator, TakesAForeignHeaderAndRefusesAbsurdOnes) {
    ImageGeneratorSimple generator;
    generator.SetFrameTime(0);
    ImageInfo own = Header(640, 480);
    const auto image = generator.Generate(nullptr, &own);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->GetImageInfo()->width, 640U);
    EXPECT_EQ(generator.GetImgInfo().width, 400U);
    own = Header(0xFFFFFFFF, 0xFFFFFFFF);
    EXPECT_EQ(generator.Generate(nullptr, &own), nullptr) << "sizes that wrap";
    own = Header(0, 100);
    generator.Generate(nullptr, &own);
    own = Header(101, 99, Mono16);
    EXPECT_NE(generator.Generate(nullptr, &own), nullptr);
}

TEST(ImageGenerator, NeitherSpinsOnAnEmptyPoolNorWaitsAfterAnInterrupt) {
    ImageGeneratorSimple generator;
    auto pool = std::make_shared<EmptyPool>();
    generator.SetFrameTime(0);
    const auto start = steady_clock::now();
    while (steady_clock::now() - start < 100ms)
        EXPECT_EQ(generator.Generate(pool, nullptr), nullptr);
    EXPECT_LE(pool->asked, 60);
    generator.SetFrameTime(30);
    const auto paced = steady_clock::now();
    generator.Generate(pool, nullptr);
    EXPECT_GE(steady_clock::now() - paced, 30ms) << "an empty pool is asked again after the frame time";

    generator.SetFrameTime(3600000);
    const auto waiting = steady_clock::now();
    std::thread interrupter([&] {
        std::this_thread::sleep_for(20ms);
        generator.Interrupt();
    });
    generator.Generate(nullptr, nullptr);
    generator.Generate(nullptr, nullptr);
    EXPECT_LT(steady_clock::now() - waiting, 5s);
    interrupter.join();
    std::thread shortener([&] {
        std::this_thread::sleep_for(20ms);
        generator.SetFrameTime(1);
    });
    generator.Reset();
    generator.Generate(nullptr, nullptr);
    EXPECT_LT(steady_clock::now() - waiting, 10s) << "a shorter frame time counts at once";
    shortener.join();
}
