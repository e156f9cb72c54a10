#include "processing/FormatConvertors.h"

#include "support/TestImages.h"
#include "vx3/processing/ColorConversion.h"
#include "vx3/processing/ProcessingThreads.h"

#include <opencv2/imgproc.hpp>

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <thread>

using namespace VX3;
using namespace VX3::Testing;

namespace {

const Geometry Awkward[] = {{1, 1}, {1, 5}, {7, 3}, {33, 9}, {64, 2, 5}, {101, 17, 3}, {640, 48, 1}};

cv::Mat MatOf(IImage& image, int type) {
    const ImageInfo& info = *image.GetImageInfo();
    return cv::Mat(static_cast<int>(info.height), static_cast<int>(info.width), type, image.GetImageBuff(),
                   info.Stride());
}

bool Same(const cv::Mat& a, const cv::Mat& b) {
    return a.size() == b.size() && a.type() == b.type() && cv::norm(a, b, cv::NORM_INF) == 0;
}

// What each format can do, from the format table's own names: U unpack, R reduce, S split, H histogram, P
// profile.
struct Ability {
    PixelFormatValue format;
    const char* operations;
    PixelFormatValue unpacked;
    PixelFormatValue reduced;
};

Ability AbilityOf(PixelFormatValue format) {
    const std::string name = PixelFormat(format).ToString();
    const auto has = [&name](const char* text) { return name.find(text) != std::string::npos; };
    const unsigned int depth = PixelFormat(format).BitDepth();
    if (format == Mono8)
        return {format, "HP", InvalidFormat, InvalidFormat};
    if (format == Mono32f)
        return {format, "UR", Mono16, Mono8};
    if (PixelFormat(format).IsPacked())
        return {format, "UR", depth == 10 ? Mono10 : Mono12, Mono8};
    if (has("MONO"))
        return {format, "RHP", InvalidFormat, Mono8};
    if (has("BAYER"))
        return {format, "RSH", InvalidFormat, RGB8};
    if (depth == 8) {
        const PixelFormatValue other = format == RGB8    ? BGR8
                                       : format == BGR8  ? RGB8
                                       : format == RGBa8 ? BGRa8
                                                         : RGBa8;
        return {format, "RSHP", InvalidFormat, other};
    }
    return {format, "RSHP", InvalidFormat, has("a") ? RGBa8 : has("RGB") ? RGB8 : BGR8};
}

std::vector<PixelFormatValue> AllFormats() {
    return {
#define VX3_NAME(name, ...) name,
        VX3_PIXEL_FORMAT_TABLE(VX3_NAME)
#undef VX3_NAME
    };
}

TEST(Convertors, EveryFormatDoesWhatItCanAndNothingElse) {
    ASSERT_EQ(AllFormats().size(), 42U);
    for (const PixelFormatValue format : AllFormats()) {
        SCOPED_TRACE(PixelFormat(format).ToString());
        const Ability ability = AbilityOf(format);
        const std::string can = ability.operations;
        const auto has = [&can](char operation) { return can.find(operation) != std::string::npos; };
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
            EXPECT_EQ(info.width, 12U);
            EXPECT_EQ(info.height, 6U);
            EXPECT_EQ(info.paddingX, 0U);
            EXPECT_EQ(info.blockId, 77U);
            EXPECT_EQ(info.timestampLow, 0x23456789U);
        }
        const std::size_t channels = PixelFormat(format).Channels();
        EXPECT_EQ(image->Split(0, nullptr).size(), has('S') ? channels : 0);
        EXPECT_EQ(image->CreateHistogram(nullptr, 0).size(), has('H') ? channels : 0);
        EXPECT_EQ(image->CreateProfile(0, ProfileType::Horizontal, 0).size(), has('P') ? channels : 0);
        EXPECT_EQ(image->CreateProfile(0, ProfileType::Vertical, 1).size(), has('P') ? channels : 0);
    }
}

// How many results each named kernel gives of an image.
struct NamedKernels : TableConvertor {
    using Kernel = std::function<std::size_t(const IImage*)>;

    template <class Operation, class... Arguments>
    static Kernel Of(const Operation& operation, Arguments... arguments) {
        return [=](const IImage* image) { return operation(image, arguments...).size(); };
    }
    static std::multimap<std::string, Kernel> ByLayout() {
        const std::shared_ptr<IImagePool> pool;
        const ROIRect* all = nullptr;
        const ProfileType line = ProfileType::Horizontal;
        return {{"8C3", Of(Split8C3, pool)},
                {"16C3", Of(Split16C3, pool)},
                {"8C4", Of(Split8C4, pool)},
                {"16C4", Of(Split16C4, pool)},
                {"8B", Of(Split8Bayer, pool)},
                {"16B", Of(Split16Bayer, pool)},
                {"8C1", Of(CreateHistogram8C1, all)},
                {"16C1", Of(CreateHistogram16C1, all)},
                {"8C3", Of(CreateHistogram8C3, all)},
                {"16C3", Of(CreateHistogram16C3, all)},
                {"8C4", Of(CreateHistogram8C4, all)},
                {"16C4", Of(CreateHistogram16C4, all)},
                {"8B", Of(CreateHistogram8Bayer, all)},
                {"16B", Of(CreateHistogram16Bayer, all)},
                {"8C1", Of(CreateProfile8C1, line, 0U)},
                {"16C1", Of(CreateProfile16C1, line, 0U)},
                {"8C3", Of(CreateProfile8C3, line, 0U)},
                {"16C3", Of(CreateProfile16C3, line, 0U)},
                {"8C4", Of(CreateProfile8C4, line, 0U)},
                {"16C4", Of(CreateProfile16C4, line, 0U)},
                {"8C1", Of(CreateProfile8C1Mean, line)},
                {"16C1", Of(CreateProfile16C1Mean, line)},
                {"8C3", Of(CreateProfile8C3Mean, line)},
                {"16C3", Of(CreateProfile16C3Mean, line)},
                {"8C4", Of(CreateProfile8C4Mean, line)},
                {"16C4", Of(CreateProfile16C4Mean, line)}};
    }
};

TEST(Convertors, KernelsTakeImagesOfTheirLayoutOnly) {
    for (const PixelFormatValue value : AllFormats()) {
        const PixelFormat format(value);
        const bool bayer = format.ToString().find("BAYER") == 0;
        const std::string layout = format.IsPacked()
                                       ? ""
                                       : (format.BitDepth() == 8 ? "8" : "16") +
                                             (bayer ? "B" : "C" + std::to_string(format.Channels()));
        const auto image = RandomImage(value, {4, 4});
        for (const auto& [taken, kernel] : NamedKernels::ByLayout())
            EXPECT_EQ(kernel(image.get()), taken == layout ? format.Channels() : 0)
                << format.ToString() << " by " << taken;
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

TEST(Convertors, ReductionShiftsEachDepth) {
    struct Case {
        PixelFormatValue format;
        std::uint16_t sample;
        std::uint8_t reduced;
    };
    for (const Case& c : {Case{Mono10, 1023, 255}, Case{Mono10, 0x0403, 0}, Case{Mono12, 0x0ABC, 0xAB},
                          Case{Mono14, 0x3FC0, 0xFF}, Case{Mono16, 0x1234, 0x12}}) {
        const auto image = ImageOf<std::uint16_t>(c.format, {1, 1}, {c.sample});
        EXPECT_EQ(SamplesOf<std::uint8_t>(*image->Unpack2Image8(8, nullptr))[0], c.reduced);
    }
    // Channel order: kept by three channels, always red first with four.
    const auto reduce = [](PixelFormatValue format, const std::vector<std::uint16_t>& samples) {
        const auto image = ImageOf<std::uint16_t>(format, {1, 1}, samples)->Unpack2Image8(8, nullptr);
        return SamplesOf<std::uint8_t>(*image, static_cast<unsigned int>(samples.size()));
    };
    using Bytes = std::vector<std::uint8_t>;
    EXPECT_EQ(reduce(BGR10, {0x100, 0x200, 0x300}), (Bytes{0x40, 0x80, 0xC0}));
    EXPECT_EQ(reduce(RGBa14, {0x0400, 0x0800, 0x0C00, 0x1000}), (Bytes{0x10, 0x20, 0x30, 0x40}));
    EXPECT_EQ(reduce(BGRa16, {0x1000, 0x2000, 0x3000, 0x4000}), (Bytes{0x30, 0x20, 0x10, 0x40}));
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
    const auto image = ImageOf<float>(Mono32f, {2, 2, 4}, {300.7F, 70000.0F, -3.5F, 65535.0F});
    EXPECT_EQ(SamplesOf<std::uint16_t>(*image->Unpack(nullptr)),
              (std::vector<std::uint16_t>{300, 65535, 0, 65535}));
    EXPECT_EQ(SamplesOf<std::uint8_t>(*image->Unpack2Image8(8, nullptr)),
              (std::vector<std::uint8_t>{1, 255, 0, 255}));
}

TEST(Convertors, SwapsAgreeWithOpenCV) {
    for (const Geometry& geometry : Awkward) {
        cv::Mat expected;
        const auto rgb = RandomImage(RGB8, geometry);
        cv::cvtColor(MatOf(*rgb, CV_8UC3), expected, cv::COLOR_RGB2BGR);
        EXPECT_TRUE(Same(MatOf(*rgb->Unpack2Image8(8, nullptr), CV_8UC3), expected));
        const auto bgra = RandomImage(BGRa8, geometry);
        cv::cvtColor(MatOf(*bgra, CV_8UC4), expected, cv::COLOR_BGRA2RGBA);
        EXPECT_TRUE(Same(MatOf(*bgra->Unpack2Image8(8, nullptr), CV_8UC4), expected));
    }
}

// From the pixels that the format reduces to, channel by channel.
TEST(ConvertTo, TakesEveryFormatToGreyAndColour) {
    for (const PixelFormatValue format : AllFormats())
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

TEST(Demosaic, PadsLinesAndLeavesTheOddLineAlone) {
    // Width 5: 15 bytes and 1 of padding. The third line keeps what the pool gave.
    const auto image = RandomImage(BayerGB8, {5, 3});
    const auto result = image->Unpack2Image8(8, nullptr);
    EXPECT_EQ(result->GetImageInfo()->paddingX, 1U);
    EXPECT_EQ(result->GetImageInfo()->Stride() % 4, 0U);
    const auto single = RandomImage(BayerRG12, {6, 1})->Unpack2Image8(8, nullptr);
    EXPECT_EQ(single->GetImageInfo()->height, 1U);

    const auto cell = ImageOf<std::uint8_t>(BayerRG8, {2, 2}, {10, 20, 30, 40})->Unpack2Image8(8, nullptr);
    EXPECT_EQ(SamplesOf<std::uint8_t>(*cell, 3),
              (std::vector<std::uint8_t>{10, 20, 40, 10, 20, 40, 10, 30, 40, 10, 30, 40}));
    const auto deep = ImageOf<std::uint16_t>(BayerGR12, {2, 2}, {0x100, 0x200, 0x300, 0x400});
    EXPECT_EQ(
        SamplesOf<std::uint8_t>(*deep->Unpack2Image8(8, nullptr), 3),
        (std::vector<std::uint8_t>{0x20, 0x10, 0x30, 0x20, 0x10, 0x30, 0x20, 0x40, 0x30, 0x20, 0x40, 0x30}));
}

// A flat scene in each pattern must come out as its colour everywhere, whatever the size.
TEST(Demosaic, FlatColoursStayFlat) {
    for (const PixelFormatValue format : AllFormats()) {
        if (PixelFormat(format).ToString().rfind("BAYER", 0) != 0)
            continue;
        const unsigned int shift = PixelFormat(format).BitDepth() - 8;
        auto image = NewImage(format, {38, 6, 4});
        for (unsigned int y = 0; y < 6; ++y) {
            for (unsigned int x = 0; x < 38; ++x) {
                const PixelChannelID id = PixelFormat(format).ChannelID(y % 2 * 2 + x % 2);
                const unsigned int value = 50U * static_cast<unsigned int>(id);
                std::uint8_t* line = image->GetImageBuff(static_cast<int>(y));
                if (shift == 0) {
                    line[x] = static_cast<std::uint8_t>(value);
                } else {
                    const auto sample = static_cast<std::uint16_t>(value << shift);
                    std::memcpy(line + 2 * x, &sample, 2);
                }
            }
        }
        const auto rgb = SamplesOf<std::uint8_t>(*image->Unpack2Image8(8, nullptr), 3);
        for (std::size_t i = 0; i < rgb.size(); ++i)
            ASSERT_EQ(rgb[i], 50 * (i % 3 + 1)) << PixelFormat(format).ToString() << " byte " << i;
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
        // Neither the last line nor the last column has a cell.
        samples.resize(std::size_t{1002} * 1501 * 3);
        for (std::size_t line = 0; line < 1002; ++line)
            std::memset(samples.data() + (line * 1501 + 1500) * 3, 0, 3);
        const auto unpacked = SamplesOf<std::uint8_t>(*packed->Unpack(nullptr), 2);
        samples.insert(samples.end(), unpacked.begin(), unpacked.end());
        for (const auto& part : rgb->Split(0, nullptr)) {
            const auto plane = SamplesOf<std::uint8_t>(*part.second);
            samples.insert(samples.end(), plane.begin(), plane.end());
        }
        const auto means = rgb->CreateProfile(0, ProfileType::Horizontal, 1);
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(means[1].second.FloatData());
        samples.insert(samples.end(), bytes, bytes + 1501 * sizeof(double));
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

} // namespace
