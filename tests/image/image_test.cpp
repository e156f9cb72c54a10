#include "image/AbsBuffer.h"
#include "image/AbsImage.h"
#include "image/BufferCreator.h"
#include "image/DefaultPools.h"
#include "support/LogCapture.h"
#include "support/TestImages.h"
#include "vx3/core/IntfDevType.h"
#include "vx3/core/Status.h"
#include "vx3/image/ImageInfo.h"
#include "vx3/image/PixelFormat.h"
#include "vx3/image/PixelValue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <numeric>
#include <stdexcept>

namespace VX3::Test {
namespace {

std::vector<unsigned char> Ramp(std::size_t size) {
    std::vector<unsigned char> bytes(size);
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(0));
    return bytes;
}

// The bytes of the first lines, with their padding.
std::vector<unsigned char> Lines(const IImage& image, unsigned int count) {
    const unsigned char* first = image.GetImageBuff();
    return {first, first + count * image.GetImageInfo()->Stride()};
}

TEST(Image, HoldsHeaderPixelsAndExtraInformation) {
    ImageInfo info = Header(10, 4, Mono8, 2);
    info.dataOffset = 64;
    info.extraInfoSize = 16;
    const auto pixels = Ramp(info.ImageDataSize());
    AbsImage image(&info, pixels.data(), 0);
    const IImage& view = image;
    EXPECT_FALSE(image.IsNull());
    EXPECT_TRUE(image.IsDataContinous());
    EXPECT_EQ(image.ObjType(), TypeIds::Image);
    EXPECT_NE(image.BufferID(), 0U);
    EXPECT_EQ(image.BufferSize(), 131072U);
    EXPECT_EQ(Lines(image, 4), pixels);
    EXPECT_EQ(view.GetImageBuff(3), view.GetImageBuff() + 36);
    EXPECT_EQ(view.GetImageBuff(-1), nullptr);
    EXPECT_EQ(view.GetImageBuff(4), nullptr);
    ASSERT_NE(image.GetExtraInfoBuff(), nullptr);
    EXPECT_EQ(std::count(image.GetExtraInfoBuff(), image.GetExtraInfoBuff() + 16, 0), 16);
    EXPECT_EQ(image.SetMiscValue(9), Ok);
    EXPECT_EQ(image.MiscValue(), 9U);
    EXPECT_EQ(image.At(1, 1).Value(PixelChannelID::Mono), 0U);
    EXPECT_EQ(image.At(1, 1).Format(), Mono8);
}

TEST(Image, WrapsCallerMemory) {
    auto pixels = Ramp(3 * 5);
    AbsImage image(4, 3, Mono8, 1, pixels.data(), false);
    EXPECT_TRUE(image.IsNull());
    EXPECT_EQ(image.BufferID() + image.BufferSize(), 0U);
    EXPECT_EQ(image.Name(), "Image from buffer");
    EXPECT_EQ(image.GetImageBuff(2), pixels.data() + 10);
    const auto clone = image.Clone(nullptr);
    ASSERT_NE(clone, nullptr);
    EXPECT_EQ(clone->GetImageInfo()->paddingX, 1);
    EXPECT_EQ(Lines(*clone, 3), pixels);
    // It knows how far the memory reaches.
    const ImageInfo larger = Header(4, 4, Mono8, 1);
    EXPECT_EQ(image.UpdateImageInfo(&larger), NotFound);
    EXPECT_EQ(image.GetImageInfo()->height, 3U);
}

TEST(Image, HeaderUpdates) {
    const ImageInfo small = Header(8, 8, Mono8);
    AbsImage image(&small, nullptr, 0);
    ImageInfo next = Header(4, 4, Mono16);
    next.extraInfoSize = 5000; // more than the info buffer has
    next.blockId = 0x100000001ULL;
    EXPECT_EQ(image.UpdateImageInfo(&next), Ok);
    EXPECT_EQ(std::memcmp(image.GetImageInfo(), &next, sizeof(next)), 0);
    EXPECT_EQ(image.GetExtraInfoBuff()[4999], 0);
    EXPECT_EQ(image.UpdateImageInfoA(7, 1, 2), Ok);
    EXPECT_EQ(image.UpdateImageInfoB(3, 4, 5), Ok);
    const ImageInfo& now = *image.GetImageInfo();
    EXPECT_EQ(std::tuple(now.blockId, now.timestampHigh, now.timestampLow, now.statusA, now.lostPackets,
                         now.statusC),
              std::tuple(7U, 1U, 2U, 3U, 4U, 5U));
    ImageInfo stale = next;
    stale.headerVersion = 2;
    EXPECT_EQ(image.UpdateImageInfo(&stale), NotFound);
    EXPECT_EQ(image.UpdateImageInfo(nullptr), NotAvailable);
    const ImageInfo tooLarge = Header(1000, 1000, Mono8);
    EXPECT_EQ(image.UpdateImageInfo(&tooLarge), NotFound);
    // Its own header, through a change of info buffer.
    EXPECT_EQ(image.UpdateImageInfo(image.GetImageInfo()), Ok);
    EXPECT_EQ(image.GetImageInfo()->width, 4U);
}

TEST(Image, DataIsCutToTheImageAndGeometryThatDoesNotFitLeavesItUnusable) {
    const ImageInfo info = Header(8, 8, Mono8);
    AbsImage image(&info, nullptr, 0);
    const auto bytes = Ramp(1000000);
    EXPECT_EQ(image.UpdateImageData(nullptr, 10), 0U);
    for (const auto& [length, taken] : {std::pair(0U, 64U), std::pair(1000U, 64U), std::pair(10U, 10U)})
        EXPECT_EQ(image.UpdateImageData(bytes.data(), length), taken) << length;
    EXPECT_EQ(image.UpdateImageInfoC(100, 100, RGB8), Ok); // inside the slack's power of two
    EXPECT_EQ(image.GetImageInfo()->pixelFormat, RGB8);
    const LogCapture log;
    EXPECT_EQ(image.UpdateImageInfoC(1000000, 2, Mono8), NotFound);
    const ImageInfo& now = *image.GetImageInfo();
    EXPECT_EQ(std::tuple(now.height, now.statusA, now.pixelFormat), std::tuple(1U, 1U, 0U));
    EXPECT_EQ(log.Count("Error: UpdateimageInfoC with invalid data, width: 1000000 height: 2 format: "
                        "1080001: 2065536 bytes are "
                        "needed, the image holds 131072"),
              1U);
    // The width remains, and nothing may believe it.
    const ROIRect roi{0, 0, 1000000, 1};
    EXPECT_EQ(image.Clone(nullptr), nullptr);
    EXPECT_EQ(image.Copy(&roi, nullptr), nullptr);
    EXPECT_EQ(image.Shift(1, nullptr), nullptr);
    EXPECT_EQ(image.Unpack(nullptr), nullptr);
    EXPECT_TRUE(image.CreateHistogram(nullptr, 0).empty());
    EXPECT_EQ(image.UpdateImageData(bytes.data(), 0), image.BufferSize());
    EXPECT_EQ(image.UpdateImageInfoC(0x80000000U, 2, Mono8), NotFound); // the product wraps
}

TEST(Image, AdoptsBuffers) {
    ImageInfo info = Header(4, 4, Mono12);
    auto data = BufferCreator::Create(info.DataBuffNeeded(), nullptr);
    auto header = BufferCreator::Create(ImageInfo::HeaderSize, nullptr);
    std::memcpy(header->Pointer(), &info, ImageInfo::HeaderSize);
    const unsigned char* pixels = data->Pointer();
    AbsImage image(std::move(data), std::move(header));
    EXPECT_EQ(image.GetImageInfo()->pixelFormat, Mono12);
    EXPECT_EQ(static_cast<const IImage&>(image).GetImageBuff(), pixels);
    // A header that claims more than its buffer has is not believed.
    info.extraInfoSize = 4000;
    header = BufferCreator::Create(ImageInfo::HeaderSize, nullptr);
    std::memcpy(header->Pointer(), &info, ImageInfo::HeaderSize);
    EXPECT_EQ(AbsImage(nullptr, std::move(header)).GetExtraInfoBuff(), nullptr);
}

TEST(Crop, IsCutToTheImage) {
    const ImageInfo info = Header(10, 6, RGB8, 2);
    const auto pixels = Ramp(info.ImageDataSize());
    const AbsImage image(&info, pixels.data(), 0);
    const auto size = [&](const ROIRect& roi) {
        const auto copy = image.Copy(&roi, nullptr);
        const ImageInfo& part = *copy->GetImageInfo();
        return std::tuple(part.width, part.height, unsigned(part.paddingX));
    };
    EXPECT_EQ(size({8, 5, 100, 100}), std::tuple(2U, 1U, 0U));
    for (const ROIRect& outside : {ROIRect{10, 0, 1, 1}, {0, 6, 1, 1}})
        EXPECT_EQ(size(outside), std::tuple(10U, 6U, 0U)) << "the whole image";
    EXPECT_EQ(size({9, 5, UINT32_MAX, UINT32_MAX}), std::tuple(1U, 1U, 0U));
    EXPECT_EQ(image.Copy(nullptr, nullptr)->GetImageInfo()->height, 6U);
    const ROIRect inner{1, 2, 3, 2};
    const auto middle = image.Copy(&inner, nullptr);
    for (const int line : {0, 1})
        EXPECT_EQ(std::memcmp(middle->GetImageBuff(line), image.GetImageBuff(2 + line) + 3, 9), 0);
    EXPECT_EQ(NewImage(Mono10p, {8, 8})->Copy(&inner, nullptr), nullptr);
}

TEST(ShiftTest, WidensWithoutSaturating) {
    using Bytes = std::vector<unsigned char>;
    ImageInfo info = Header(3, 2, Mono8, 1);
    const Bytes bytes{255, 1, 2, 99, 3, 4, 5, 99};
    const AbsImage image(&info, bytes.data(), 0);
    const auto shifted = image.Shift(8, nullptr);
    ASSERT_NE(shifted, nullptr);
    EXPECT_EQ(shifted->GetImageInfo()->pixelFormat, Mono16);
    EXPECT_EQ(Lines(*shifted, 2), (Bytes{0, 255, 0, 1, 0, 2, 0, 3, 0, 4, 0, 5})); // little-endian, no padding
    EXPECT_EQ(image.Shift(0, nullptr), nullptr);
    EXPECT_EQ(image.Shift(9, nullptr), nullptr);
    info = Header(1, 2, Mono16, 1); // the second line starts at an odd address
    const Bytes samples{0x34, 0x12, 0, 0x78, 0x56, 0};
    EXPECT_EQ(Lines(*AbsImage(&info, samples.data(), 0).Shift(4, nullptr), 2),
              (Bytes{0x40, 0x23, 0x80, 0x67}));
    EXPECT_EQ(NewImage(BayerRG10, {4, 4})->Shift(4, nullptr), nullptr);
}

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
