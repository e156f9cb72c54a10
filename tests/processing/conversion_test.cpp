// What images are converted to, by how many threads, and with how little memory.
#include "processing/FormatConvertors.h"
#include "support/CountingAllocator.h"
#include "support/TestImages.h"
#include "vx3/processing/ColorConversion.h"
#include "vx3/processing/ProcessingThreads.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace VX3::Test {
namespace {

// What each format can do, from the format table's own names: U unpack, R reduce, S split, H histogram, P
// profile.
struct Ability {
    std::string operations;
    PixelFormatValue unpacked;
    PixelFormatValue reduced;
};

Ability AbilityOf(const PixelFormat& format) {
    std::string name = format.ToString();
    const auto has = [&name](const char* text) { return name.find(text) != std::string::npos; };
    if (format.GetFormat() == Mono8)
        return {"HP", InvalidFormat, InvalidFormat};
    if (format.GetFormat() == Mono32f)
        return {"UR", Mono16, Mono8};
    if (format.IsPacked())
        return {"UR", format.BitDepth() == 10 ? Mono10 : Mono12, Mono8};
    if (has("MONO"))
        return {"RHP", InvalidFormat, Mono8};
    if (has("BAYER"))
        return {"RSH", InvalidFormat, RGB8};
    if (format.BitDepth() > 8)
        return {"RSHP", InvalidFormat, has("a") ? RGBa8 : has("RGB") ? RGB8 : BGR8};
    std::swap(name[0], name[2]); // red and blue
    return {"RSHP", InvalidFormat, PixelFormat::FromString(name)};
}

TEST(Convertors, EveryFormatDoesWhatItCanAndNothingElse) {
    ASSERT_EQ(std::size(AllFormats), 42U);
    for (const PixelFormatValue format : AllFormats) {
        SCOPED_TRACE(PixelFormat(format).ToString());
        const Ability ability = AbilityOf(format);
        const auto has = [&](char operation) {
            return ability.operations.find(operation) != std::string::npos;
        };
        const auto image = RandomImage(format, {12, 6, 3});
        EXPECT_EQ(FormatConvertorCreator::Create(format)->Format().GetFormat(), format);
        const auto unpacked = image->Unpack(nullptr);
        ASSERT_EQ(unpacked != nullptr, has('U'));
        const auto reduced = image->Unpack2Image8(99, nullptr);
        ASSERT_EQ(reduced != nullptr, has('R'));
        for (const auto* result : {unpacked.get(), reduced.get()}) {
            if (result == nullptr)
                continue;
            const ImageInfo& info = *result->GetImageInfo();
            EXPECT_EQ(info.pixelFormat, result == unpacked.get() ? ability.unpacked : ability.reduced);
            EXPECT_EQ(std::tuple(info.width, info.height, info.paddingX, info.blockId, info.timestampLow),
                      std::tuple(12U, 6U, 0U, 77U, 0x23456789U));
        }
        const std::size_t channels = PixelFormat(format).Channels();
        EXPECT_EQ(image->Split(0, nullptr).size(), has('S') ? channels : 0);
        EXPECT_EQ(image->CreateHistogram(nullptr, 0).size(), has('H') ? channels : 0);
        EXPECT_EQ(image->CreateProfile(0, ProfileType::Horizontal, 0).size(), has('P') ? channels : 0);
        EXPECT_EQ(image->CreateProfile(0, ProfileType::Vertical, 1).size(), has('P') ? channels : 0);
    }
}

struct NamedKernels : TableConvertor {
    // The layouts with the kernels that have them in their names.
    static std::vector<std::pair<SampleLayout, std::vector<SampleLayout>>> ByName() {
        return {{Layouts::C1x8,
                 {CreateHistogram8C1.layout, CreateProfile8C1.layout, CreateProfile8C1Mean.layout}},
                {Layouts::C1x16,
                 {CreateHistogram16C1.layout, CreateProfile16C1.layout, CreateProfile16C1Mean.layout}},
                {Layouts::C3x8,
                 {Split8C3.layout, CreateHistogram8C3.layout, CreateProfile8C3.layout,
                  CreateProfile8C3Mean.layout}},
                {Layouts::C3x16,
                 {Split16C3.layout, CreateHistogram16C3.layout, CreateProfile16C3.layout,
                  CreateProfile16C3Mean.layout}},
                {Layouts::C4x8,
                 {Split8C4.layout, CreateHistogram8C4.layout, CreateProfile8C4.layout,
                  CreateProfile8C4Mean.layout}},
                {Layouts::C4x16,
                 {Split16C4.layout, CreateHistogram16C4.layout, CreateProfile16C4.layout,
                  CreateProfile16C4Mean.layout}},
                {Layouts::Bayer8, {Split8Bayer.layout, CreateHistogram8Bayer.layout}},
                {Layouts::Bayer16, {Split16Bayer.layout, CreateHistogram16Bayer.layout}}};
    }
};

TEST(Convertors, KernelsTakeImagesOfTheirLayoutOnly) {
    for (const auto& [layout, kernels] : NamedKernels::ByName()) {
        for (const SampleLayout& named : kernels)
            EXPECT_TRUE(named == layout);
        for (const PixelFormatValue value : AllFormats) {
            const PixelFormat format(value);
            const bool bayer = format.ToString().find("BAYER") == 0;
            EXPECT_EQ(layout.Fits(RandomImage(value, {4, 4}).get()),
                      !format.IsPacked() && layout.sampleBytes == (format.BitDepth() + 7) / 8 &&
                          layout.bayer == bayer && layout.channels == (bayer ? 1 : format.Channels()))
                << format.ToString();
        }
    }
}

TEST(Convertors, UnknownFormatsAndForeignImagesGiveNothing) {
    const auto image = RandomImage(Mono12, {8, 4});
    const auto convertors = {FormatConvertorCreator::Create(0U), FormatConvertorCreator::Create(1U),
                             FormatConvertorCreator::Create(0xDEADBEEFU)};
    for (const auto& convertor : convertors) {
        EXPECT_EQ(convertor->Format().GetFormat(), InvalidFormat);
        EXPECT_EQ(convertor->Unpack(image.get(), 0, nullptr), nullptr);
        EXPECT_EQ(convertor->Unpack2Image8(image.get(), 8, nullptr), nullptr);
        EXPECT_TRUE(convertor->Split(image.get(), 0, nullptr).empty());
        EXPECT_TRUE(convertor->CreateHistogram(image.get(), nullptr, 0).empty());
        EXPECT_TRUE(convertor->CreateProfile(image.get(), ProfileType::Horizontal, 0, 0).empty());
    }
    // A convertor must not read an image of narrower samples as its own.
    const auto narrow = RandomImage(BayerRG8, {8, 4});
    EXPECT_EQ(FormatConvertorCreator::Create(Mono16)->Unpack2Image8(narrow.get(), 8, nullptr), nullptr);
    EXPECT_TRUE(FormatConvertorCreator::Create(RGBa8)->Split(narrow.get(), 0, nullptr).empty());
    EXPECT_TRUE(FormatConvertorCreator::Create(RGBa8)->CreateHistogram(narrow.get(), nullptr, 0).empty());
    EXPECT_EQ(FormatConvertorCreator::Create(Mono16)->Unpack2Image8(nullptr, 8, nullptr), nullptr);
}

// Samples of 8 or 16 bits, as the format has them.
std::unique_ptr<IImage> ImageOfDepth(PixelFormatValue format, const Geometry& geometry,
                                     const std::vector<std::uint16_t>& samples) {
    if (PixelFormat(format).BitDepth() == 8)
        return ImageOf<std::uint8_t>(format, geometry, {samples.begin(), samples.end()});
    return ImageOf<std::uint16_t>(format, geometry, samples);
}

// Channel order: kept by three deep channels, red first with four, the other way with those of 8 bits.
TEST(Convertors, ReductionShiftsEachDepthAndOrdersChannels) {
    const std::tuple<PixelFormatValue, std::vector<std::uint16_t>, std::vector<std::uint8_t>> cases[] = {
        {Mono10, {1023, 0x0403}, {255, 0}},
        {Mono12, {0x0ABC}, {0xAB}},
        {Mono14, {0x3FC0}, {0xFF}},
        {Mono16, {0x1234}, {0x12}},
        {BGR10, {0x100, 0x200, 0x300}, {0x40, 0x80, 0xC0}},
        {RGBa14, {0x0400, 0x0800, 0x0C00, 0x1000}, {0x10, 0x20, 0x30, 0x40}},
        {BGRa16, {0x1000, 0x2000, 0x3000, 0x4000}, {0x30, 0x20, 0x10, 0x40}},
        {RGB8, {1, 2, 3, 4, 5, 6}, {3, 2, 1, 6, 5, 4}},
        {BGRa8, {1, 2, 3, 4, 5, 6, 7, 8}, {3, 2, 1, 4, 7, 6, 5, 8}}};
    for (const auto& [format, samples, reduced] : cases) {
        const unsigned int channels = PixelFormat(format).Channels();
        const auto lines = static_cast<unsigned int>(samples.size()) / channels;
        const auto image = ImageOfDepth(format, {1, lines, 6}, samples)->Unpack2Image8(8, nullptr);
        EXPECT_EQ(SamplesOf<std::uint8_t>(*image, channels), reduced) << PixelFormat(format).ToString();
    }
}

TEST(Convertors, PaddedLinesUnpackFromTheirOwnStart) {
    // 2 x 2 samples of 12 bits in 3 bytes a line, 2 bytes of padding that must not be seen.
    auto image = NewImage(Mono12Packed, {2, 2, 2});
    const std::uint8_t lines[10] = {0xAB, 0xCD, 0xEF, 0xFF, 0xFF, 0x01, 0x23, 0x45, 0xFF, 0xFF};
    std::memcpy(image->GetImageBuff(), lines, sizeof lines);
    EXPECT_EQ(SamplesOf<std::uint16_t>(*image->Unpack(nullptr)),
              (std::vector<std::uint16_t>{0xABD, 0xEFC, 0x013, 0x452}));
    EXPECT_EQ(SamplesOf<std::uint8_t>(*image->Unpack2Image8(8, nullptr)),
              (std::vector<std::uint8_t>{0xAB, 0xEF, 0x01, 0x45}));
}

TEST(Convertors, FloatsAreHeldInRange) {
    const auto image = ImageOf<float>(Mono32f, {2, 2, 4}, {300.7F, 70000.0F, -3.5F, NAN});
    EXPECT_EQ(SamplesOf<std::uint16_t>(*image->Unpack(nullptr)),
              (std::vector<std::uint16_t>{300, 65535, 0, 0}));
    EXPECT_EQ(SamplesOf<std::uint8_t>(*image->Unpack2Image8(8, nullptr)),
              (std::vector<std::uint8_t>{1, 255, 0, 0}));
}

// From the pixels that the format reduces to, channel by channel.
TEST(ConvertTo, TakesEveryFormatToGreyAndColour) {
    for (const PixelFormatValue format : AllFormats)
        for (const PixelFormatValue target : {Mono8, RGB8, BGR8}) {
            SCOPED_TRACE(PixelFormat(format).ToString() + " to " + PixelFormat(target).ToString());
            const auto image = RandomImage(format, {38, 6, 3});
            const bool plain =
                std::string("MONO8 RGB8 BGR8 RGBa8 BGRa8").find(PixelFormat(format).ToString()) !=
                std::string::npos;
            const auto reduced = plain ? image->Clone(nullptr) : image->Unpack2Image8(8, nullptr);
            const auto result = ConvertTo(*image, target, nullptr);
            ASSERT_NE(result, nullptr);
            EXPECT_EQ(result->GetImageInfo()->blockId, 77U);
            const PixelFormat from(reduced->GetImageInfo()->pixelFormat);
            const unsigned int channels = from.Channels();
            const auto source = SamplesOf<std::uint8_t>(*reduced, channels);
            std::vector<std::uint8_t> expected;
            for (std::size_t at = 0; at < source.size(); at += channels) {
                unsigned int red = source[at], green = source[at], blue = source[at];
                for (unsigned int i = 0; channels > 1 && i < 3; ++i)
                    (from.ChannelID(i) == PixelChannelID::Red     ? red
                     : from.ChannelID(i) == PixelChannelID::Green ? green
                                                                  : blue) = source[at + i];
                if (target == Mono8)
                    expected.push_back(static_cast<std::uint8_t>((77 * red + 150 * green + 29 * blue) >> 8));
                else
                    for (const unsigned int level :
                         {target == RGB8 ? red : blue, green, target == RGB8 ? blue : red})
                        expected.push_back(static_cast<std::uint8_t>(level));
            }
            ASSERT_EQ(result->GetImageInfo()->pixelFormat, target);
            ASSERT_EQ(SamplesOf<std::uint8_t>(*result, target == Mono8 ? 1 : 3), expected);
        }
    for (const PixelFormatValue target : {RGBa8, Mono16, InvalidFormat})
        EXPECT_EQ(ConvertTo(*RandomImage(RGB8, {4, 4}), target, nullptr), nullptr);
    EXPECT_EQ(ConvertTo(*NewImage(RawBlock, {4, 4}), RGB8, nullptr), nullptr);
}

TEST(Demosaic, PadsLines) {
    // Width 5: 15 bytes and 1 of padding.
    const auto image = RandomImage(BayerGB8, {5, 3});
    const auto result = image->Unpack2Image8(8, nullptr);
    EXPECT_EQ(result->GetImageInfo()->paddingX, 1U);
    EXPECT_EQ(result->GetImageInfo()->Stride() % 4, 0U);
    const auto single = ImageOf<std::uint16_t>(BayerRG12, {2, 1}, {0x120, 0xFFF})->Unpack2Image8(8, nullptr);
    EXPECT_EQ(SamplesOf<std::uint8_t>(*single, 3), (std::vector<std::uint8_t>{18, 18, 18, 255, 255, 255}));

    const std::tuple<PixelFormatValue, std::vector<std::uint16_t>, std::vector<std::uint8_t>> cells[] = {
        {BayerRG8, {10, 20, 30, 40}, {10, 20, 40, 10, 20, 40, 10, 30, 40, 10, 30, 40}},
        {BayerGR12,
         {0x100, 0x200, 0x300, 0x400},
         {0x20, 0x10, 0x30, 0x20, 0x10, 0x30, 0x20, 0x40, 0x30, 0x20, 0x40, 0x30}}};
    for (const auto& [format, samples, colours] : cells)
        EXPECT_EQ(
            SamplesOf<std::uint8_t>(*ImageOfDepth(format, {2, 2}, samples)->Unpack2Image8(8, nullptr), 3),
            colours);
}

// A flat scene in each pattern must come out as its colour everywhere, whatever the size.
TEST(Demosaic, FlatColoursStayFlat) {
    for (const PixelFormatValue format : AllFormats) {
        if (PixelFormat(format).ToString().rfind("BAYER", 0) != 0)
            continue;
        for (const auto& [width, height] : {std::pair(38U, 6U), {37U, 5U}, {3U, 2U}, {2U, 3U}}) {
            const auto image = FlatImage(format, {width, height, 4}, {50, 100, 150});
            const auto rgb = SamplesOf<std::uint8_t>(*image->Unpack2Image8(8, nullptr), 3);
            for (std::size_t i = 0; i < rgb.size(); ++i)
                ASSERT_EQ(rgb[i], 50 * (i % 3 + 1)) << PixelFormat(format).ToString() << " byte " << i;
        }
    }
}

// Above one megapixel the work is shared; the result must not depend on how.
TEST(Threads, SharedWorkGivesTheSameResults) {
    const Geometry large{1501, 1003, 2};
    const auto bayer = RandomImage(BayerBG10, large, 0x03FF);
    const auto packed = RandomImage(Mono10p, large);
    const auto rgb = RandomImage(RGB8, large);
    const auto results = [&](unsigned int threads) {
        SetProcessingThreads(threads);
        EXPECT_EQ(ProcessingThreads(), threads);
        auto samples = SamplesOf<std::uint8_t>(*bayer->Unpack2Image8(8, nullptr), 3);
        const auto append = [&samples](const std::vector<std::uint8_t>& more) {
            samples.insert(samples.end(), more.begin(), more.end());
        };
        append(SamplesOf<std::uint8_t>(*packed->Unpack(nullptr), 2));
        for (const auto& part : rgb->Split(0, nullptr))
            append(SamplesOf<std::uint8_t>(*part.second));
        const auto means = rgb->CreateProfile(0, ProfileType::Horizontal, 1);
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(means[1].second.FloatData());
        append({bytes, bytes + 1501 * sizeof(double)});
        return samples;
    };
    const auto alone = results(1);
    for (const unsigned int threads : {2U, 5U, 3U})
        EXPECT_TRUE(results(threads) == alone) << threads;
    SetProcessingThreads(0);
}

TEST(Threads, SeveralCallersAndASettingThatChanges) {
    const auto image = RandomImage(Mono12, {1400, 1000});
    SetProcessingThreads(1);
    const auto expected = SamplesOf<std::uint8_t>(*image->Unpack2Image8(8, nullptr));
    std::vector<std::thread> callers;
    for (int i = 0; i < 4; ++i) {
        callers.emplace_back([&] {
            for (int k = 0; k < 10; ++k)
                ASSERT_TRUE(SamplesOf<std::uint8_t>(*image->Unpack2Image8(8, nullptr)) == expected);
        });
    }
    for (unsigned int threads : {3U, 1U, 4U, 2U})
        SetProcessingThreads(threads);
    for (std::thread& caller : callers)
        caller.join();
    SetProcessingThreads(0);
}

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
        return !image.CreateProfile(3, ProfileType::Horizontal, 0).empty() &&
               !image.CreateProfile(0, ProfileType::Vertical, 1).empty();
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
            {"profiles RGB12", RGB12, profile},
            {"map Mono8", Mono8, map},
            {"map Mono14", Mono14, map}};
}

TEST(SteadyState, OnlyHandlesAreAllocated) {
    constexpr unsigned int WarmUp = 3;
    constexpr unsigned int Runs = 8;
    constexpr std::uint64_t MostHandles = 64; // a run
    for (const Operation& operation : Operations()) {
        // Every result, a quarter of it for Bayer planes, is large enough for the pool to keep.
        const auto image = RandomImage(operation.format, {2560, 2048});
        for (unsigned int i = 0; i < WarmUp; ++i)
            ASSERT_TRUE(operation.run(*image)) << operation.name;
        const std::uint64_t before = Allocations();
        const std::uint64_t largeBefore = LargeAllocations();
        for (unsigned int i = 0; i < Runs; ++i)
            (void)operation.run(*image);
        EXPECT_EQ(LargeAllocations() - largeBefore, 0U) << operation.name;
        EXPECT_LE(Allocations() - before, Runs * MostHandles) << operation.name;
    }
}

} // namespace
} // namespace VX3::Test
