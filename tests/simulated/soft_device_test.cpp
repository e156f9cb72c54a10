// Soft and virtual devices over their registers, and the generator behind their frames.
#include "simulated/DataGeneratorBeam.h"
#include "simulated/ImageGeneratorSimple.h"
#include "simulated/SoftDevice.h"
#include "simulated/VirtualDevice.h"
#include "support/TestImages.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <opencv2/imgproc.hpp>
#include <string>
#include <thread>
#include <vector>

namespace VX3::Test {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;

constexpr unsigned int UrlAt = 0x80000000;
constexpr unsigned int SizeAt = 0x01000000; // width, height, frame time

std::string Url(SoftDevice& device) {
    unsigned char text[SoftDevice::UrlSize];
    EXPECT_EQ(device.ReadPort(UrlAt, text, sizeof(text)), 512);
    EXPECT_EQ(text[511], 0);
    return reinterpret_cast<const char*>(text);
}

std::uint32_t Read(IGenIObj& device, unsigned long long address) {
    std::uint32_t value = 0;
    EXPECT_EQ(device.ReadPort(address, reinterpret_cast<unsigned char*>(&value), 4), 4);
    return value;
}

StatusCode Write(IGenIObj& device, unsigned long long address, std::uint32_t value) {
    return device.WritePort(address, reinterpret_cast<const unsigned char*>(&value), 4);
}

TEST(SoftDevice, PublishesWhereItsDescriptionIs) {
    for (const char* path : {"/a/b/cam.xml", "C:\\dir\\cam.xml", "cam.xml"})
        EXPECT_EQ(Url(*std::make_shared<SoftDevice>("d", path, nullptr)), "File:cam.xml");
    EXPECT_EQ(Url(*std::make_shared<SoftDevice>("d", std::string(600, 'x').c_str(), nullptr)).size(), 511U);

    std::unique_ptr<unsigned char[]> xml(new unsigned char[1000]);
    std::memset(xml.get(), 'q', 1000);
    auto device = std::make_shared<SoftDevice>("d", "cam.xml", std::move(xml), 1000, nullptr);
    EXPECT_EQ(Url(*device), "Local:cam.xml;81000000;3e8");
    EXPECT_EQ(device->GetXmlUrlAddr(), 0x80000000LL);
    const auto description = device->GetXmlData();
    ASSERT_NE(description, nullptr);
    EXPECT_EQ(std::pair(description->GetXmlDataSize(), description->GetXmlData()[999]),
              std::pair(1000U, static_cast<unsigned char>('q')));
    unsigned char bytes[8];
    EXPECT_EQ(device->ReadPort(0x81000000 + 996, bytes, 4), 4);
    EXPECT_EQ(device->ReadPort(0x81000000 + 996, bytes, 5), Status::NotFound);
    EXPECT_EQ(device->WritePort(0x81000000, bytes, 4), Status::NotFound);
}

TEST(SoftDevice, ServesWholeRangesOfItsRegionsOnly) {
    auto device = std::make_shared<SoftDevice>("d", "cam.xml", nullptr);
    unsigned char first[16] = {1, 2, 3, 4};
    unsigned char second[16] = {9, 9, 9, 9};
    std::vector<unsigned int> written;
    std::vector<StructRegDesc> regions{{first, 16, 0x100}, {second, 16, 0x108}, {second, 4, 0x80000200}};
    const auto onWrite = [&](unsigned int address, unsigned int value) {
        written.push_back(address);
        EXPECT_EQ(value, 0U);
        EXPECT_EQ(Read(*device, address), 0x04030201U) << "a callback may read";
    };
    EXPECT_EQ(device->SetRegRwParams(regions, onWrite), Status::Ok);
    unsigned char bytes[32]{};
    const struct {
        unsigned long long address;
        unsigned int length;
        StatusCode status;
        int byte;
    } reads[] = {{0x108, 8, 8, 0},
                 {0x10C, 8, 8, 0},
                 {0x108, 16, 16, 9}, // the first region that holds the range
                 {0xFF, 4, Status::NotFound, 9},
                 {0x118, 4, Status::NotFound, 9},
                 {0, 4, Status::NotFound, 9},
                 {0x800001FE, 4, Status::NotFound, 9},
                 {0xFFFFFFFFFFFFFFFF, 4, Status::NotFound, 9},
                 {0x100, 0xFFFFFFFF, Status::NotFound, 9}};
    for (const auto& read : reads) {
        EXPECT_EQ(device->ReadPort(read.address, bytes, read.length), read.status)
            << std::hex << read.address;
        EXPECT_EQ(bytes[0], read.byte) << std::hex << read.address;
    }
    EXPECT_EQ(device->WritePort(UrlAt, bytes, 4), Status::NotFound);
    EXPECT_TRUE(written.empty());
    EXPECT_EQ(Write(*device, 0x104, 0x04030201U), 4);
    EXPECT_EQ(written, std::vector<unsigned int>{0x104});
    EXPECT_EQ(first[4], 1);
}

TEST(VirtualDevice, HasItsRegisterMapAndFollowsIt) {
    auto device = std::make_shared<VirtualDevice>("Virtual Device #1", "./VirtualCamera01.xml", nullptr);
    EXPECT_EQ(device->TypeId(), 0x30001U);
    EXPECT_EQ(Read(*device, SizeAt + 8), 200U);
    ASSERT_EQ(device->Connect(), Status::Ok);
    ASSERT_EQ(device->StreamCnt(), 1U);
    IStream* stream = device->GetStream(0);
    EXPECT_EQ(stream->Name(), "SoftStream #1");
    EXPECT_EQ(stream->PayloadSize(), 400U * 400);
    Write(*device, SizeAt, 640);
    EXPECT_EQ(stream->PayloadSize(), 640U * 400);
    Write(*device, SizeAt + 4, 480);
    EXPECT_EQ(stream->PayloadSize(), 640U * 480);
    const std::uint32_t all[] = {100, 100, 5};
    EXPECT_EQ(device->WritePort(SizeAt, reinterpret_cast<const unsigned char*>(all), 12), 12);
    EXPECT_EQ(stream->PayloadSize(), 100U * 480) << "only the start address counts";
    EXPECT_EQ(Read(*device, SizeAt + 4), 100U) << "but every byte is stored";
    EXPECT_EQ(Write(*device, SizeAt + 12, 1), Status::NotFound);
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
