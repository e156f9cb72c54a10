#include "vx3/image/ImageInfo.h"
#include "vx3/image/PixelFormat.h"
#include "vx3/image/PixelValue.h"

#include <cstring>
#include <gtest/gtest.h>
#include <stdexcept>

namespace VX3::Test {
namespace {

constexpr PixelFormatValue AllFormats[] = {
#define VX3_TEST_FORMAT(name, ...) name,
    VX3_PIXEL_FORMAT_TABLE(VX3_TEST_FORMAT)
#undef VX3_TEST_FORMAT
};

TEST(PixelFormatTable, CodesAgreeWithThemselves) {
    EXPECT_EQ(std::size(AllFormats), 42U);
    for (const PixelFormatValue value : AllFormats) {
        const PixelFormat format(value);
        EXPECT_EQ(PixelFormat::FromString(format.ToString()), value) << format.ToString();
        // PFNC codes carry the bits a pixel occupies; 16 x 4 pixels fill whole bytes in every format.
        const unsigned int bits = (static_cast<unsigned int>(value) >> 16) & 0xFFU;
        EXPECT_EQ(format.BuffNeeded(16, 4) * 8, bits * 16 * 4) << format.ToString();
        EXPECT_EQ(format.BuffNeeded64(16, 4), format.BuffNeeded(16, 4));
        EXPECT_NE(format.ChannelID(format.Channels() - 1), PixelChannelID::Invalid);
        EXPECT_EQ(format.ChannelID(format.Channels()), PixelChannelID::Invalid);
    }
}

TEST(PixelFormatTable, NamesAreExact) {
    EXPECT_EQ(PixelFormat::FromString("MONO10 PACKED"), 0x010C0004U);
    EXPECT_EQ(PixelFormat::FromString("mono8"), InvalidFormat);
    EXPECT_EQ(PixelFormat::FromString("UNKNOWN"), InvalidFormat);
    EXPECT_EQ(PixelFormat::FromString(""), InvalidFormat);
    EXPECT_EQ(PixelFormat(BayerGB8).ChannelID(3), PixelChannelID::Green);
    EXPECT_EQ(PixelFormat(BayerGB8).ChannelID(1), PixelChannelID::Blue);
    EXPECT_EQ(PixelFormat(BGRa12).ChannelID(3), PixelChannelID::Alpha);
    EXPECT_TRUE(PixelFormat(Mono32f).IsPacked());
    EXPECT_FALSE(PixelFormat(Mono16).IsPacked());
}

TEST(PixelFormatTable, CodesOutsideTheTable) {
    const PixelFormat yuv(0x02100032U);
    EXPECT_TRUE(yuv.IsValid());
    EXPECT_EQ(yuv.Channels() + yuv.BitDepth(), 0U);
    EXPECT_EQ(yuv.ToString(), "UNKNOWN");
    EXPECT_EQ(yuv.BuffNeeded(7, 3), 21U);
    EXPECT_FALSE(PixelFormat(InvalidFormat).IsValid());
    const std::tuple<PixelFormatValue, unsigned int, unsigned int, unsigned int> sizes[] = {
        // rounded down
        {RawBlock, 1234, 5000, 5000},
        {Mono10p, 7, 1, 8},
        {Mono10p, 4, 1, 5},
        {Mono12Packed, 3, 1, 4},
        {RGBa16, 0x10000, 0x10000, 0}}; // wrapped where 32 bits end
    for (const auto& [format, width, height, bytes] : sizes)
        EXPECT_EQ(PixelFormat(format).BuffNeeded(width, height), bytes) << std::hex << format;
    EXPECT_EQ(PixelFormat(RGBa16).BuffNeeded64(0x10000U, 0x10000U), 0x800000000ULL);
    EXPECT_EQ(PixelFormat(RGBa16).BuffNeeded64(UINT32_MAX, UINT32_MAX), UINT64_MAX);
    EXPECT_EQ(PixelFormat(RawBlock).ToString(), "UNKNOWN");
}

TEST(PixelValueTest, ComponentsByChannel) {
    const PixelValue colour(1, 2, 3, 4, PixelFormat(RGBa8));
    const std::pair<PixelChannelID, unsigned int> components[] = {{PixelChannelID::Red, 1},
                                                                  {PixelChannelID::Green, 2},
                                                                  {PixelChannelID::Blue, 3},
                                                                  {PixelChannelID::Alpha, 4},
                                                                  {PixelChannelID::Invalid, 4}};
    for (const auto& [channel, value] : components)
        EXPECT_EQ(colour.Value(channel), value);
    EXPECT_EQ(PixelValue(0x1FFFFU, 0, 0, 0, PixelFormat(RGB16)).Value(PixelChannelID::Red), 0xFFFFU);
    const PixelValue grey(200U, PixelFormat(Mono8));
    EXPECT_TRUE(grey.IsMonoChrome());
    EXPECT_EQ(grey.Value(PixelChannelID::Blue), 200U);
}

TEST(ImageInfoSizes, FollowStrideAndSlack) {
    ImageInfo info;
    info.pixelFormat = Mono12p;
    info.width = 5;
    info.height = 3;
    info.paddingX = 2;
    info.dataOffset = 64;
    EXPECT_EQ(info.Stride(), 9U); // 5 x 1.5 rounded down, plus padding
    EXPECT_EQ(info.ImageDataSize(), 27U);
    EXPECT_EQ(info.DataBuffNeeded(), 64U + 65536U + 27U);
    unsigned int last = 0;
    EXPECT_EQ(info.PayloadPacketsNeeded(1000, &last), 66U);
    EXPECT_EQ(last, 627U);
    EXPECT_EQ(info.PayloadPacketsNeeded(0, &last), 0U);
    EXPECT_EQ(last, info.DataBuffNeeded());
    info = ImageInfo();
    info.pixelFormat = RawBlock;
    info.height = 5000;
    EXPECT_EQ(std::pair(info.DataBuffNeeded(), info.ImageDataSize()), std::pair(5000U + 65536U, 5000U));
}

TEST(ImageInfoSizes, WrappingOnesAreTold) {
    const struct {
        PixelFormatValue format;
        unsigned int width, height, padding, extra;
        bool fits;
    } sizes[] = {
        {Mono8, 65536, 65534, 0, 0, true},         {Mono8, 65536, 65535, 0, 0, false},   // the slack wraps
        {Mono8, UINT32_MAX, 1, 0, 0, false},       {RGBa16, UINT32_MAX, 0, 0, 0, false}, // the stride wraps
        {RGBa16, 1, 0, 0, UINT32_MAX - 10, false}, {RawBlock, 0, 1000000, 100, 0, false},
        {RawBlock, 0, 1000000, 0, 0, true}};
    for (const auto& size : sizes) {
        ImageInfo info;
        info.pixelFormat = size.format;
        info.width = size.width;
        info.height = size.height;
        info.paddingX = static_cast<std::uint16_t>(size.padding);
        info.extraInfoSize = size.extra;
        EXPECT_EQ(info.SizesFit(), size.fits) << size.width << " x " << size.height;
    }
}

TEST(ImageInfoCopies, AlwaysHaveVersionOne) {
    ImageInfo info;
    info.blockId = 0x123456789ULL;
    info.headerVersion = 0;
    const ImageInfo copy(info);
    EXPECT_EQ(copy.headerVersion, 1);
    EXPECT_EQ(copy.blockId, info.blockId);
    ImageInfo assigned;
    assigned = info;
    EXPECT_EQ(assigned.headerVersion, 1);
}

TEST(Descriptions, ParsedFromText) {
    const ImageBaseInfo full = ImageInfoCreator::CreateBaseInfo("640_480_BAYER RG8_P16_T123_EB_x_Q7_b5_p32");
    EXPECT_EQ(std::tuple(full.width, full.height, PixelFormatValue(full.format), full.paddingX,
                         full.timestamp, full.bigEndian),
              std::tuple(640U, 480U, BayerRG8, 32U, 123U, 1)); // of two paddings the later one
    for (const char* text : {"", "640_480", "0_480_MONO8", "640_0_MONO8", "640_480_FOO", "640_480_mono8"})
        EXPECT_FALSE(ImageInfoCreator::CreateBaseInfo(text).format.IsValid()) << text;
    EXPECT_EQ(ImageInfoCreator::CreateBaseInfo("640_480_FOO").width, 0U);
    for (const char* text : {"a_480_MONO8", "640__MONO8", "6_4_MONO8_Px", "6_4_MONO8_B-"})
        EXPECT_THROW(ImageInfoCreator::CreateBaseInfo(text), std::invalid_argument) << text;
    EXPECT_THROW(ImageInfoCreator::CreateBaseInfo("99999999999_4_MONO8"), std::out_of_range);
}

TEST(Descriptions, BecomeHeaders) {
    ImageBaseInfo base;
    base.width = 10;
    base.height = 20;
    base.paddingX = 0x10003;
    base.timestamp = 0x0000000500000006ULL;
    base.blockId = 77;
    const ImageInfo info = ImageInfoCreator::CreateImageInfo(base);
    EXPECT_EQ(std::tuple(info.imageType, info.statusA, info.paddingX, info.timestampHigh, info.timestampLow,
                         info.blockId),
              std::tuple(ImageTypeImage, 20U, 3U, 5U, 6U, 77U));
    base.timestamp = 0;
    EXPECT_NE(ImageInfoCreator::CreateImageInfo(base).timestampHigh, 0U); // now
}

} // namespace
} // namespace VX3::Test
