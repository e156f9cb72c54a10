#include "image/AbsBuffer.h"
#include "image/AbsImage.h"
#include "image/BufferCreator.h"
#include "image/DefaultPools.h"
#include "vx3/core/IntfDevType.h"
#include "vx3/core/Logger.h"
#include "vx3/core/Status.h"

#include <cstring>
#include <gtest/gtest.h>
#include <numeric>

namespace VX3 {
namespace {

constexpr auto Ok = static_cast<unsigned int>(Status::Ok);
constexpr auto NotFound = static_cast<unsigned int>(Status::NotFound);

ImageInfo Header(unsigned int width, unsigned int height, PixelFormatValue format, unsigned int padding = 0) {
    ImageBaseInfo base;
    base.width = width;
    base.height = height;
    base.format = format;
    base.paddingX = padding;
    return ImageInfoCreator::CreateImageInfo(base);
}

std::vector<unsigned char> Ramp(std::size_t size) {
    std::vector<unsigned char> bytes(size);
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(0));
    return bytes;
}

std::uint16_t Sample16(const IImage& image, int line, unsigned int x) {
    std::uint16_t value = 0;
    std::memcpy(&value, image.GetImageBuff(line) + 2 * x, 2);
    return value;
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
    EXPECT_EQ(std::memcmp(view.GetImageBuff(), pixels.data(), pixels.size()), 0);
    EXPECT_EQ(view.GetImageBuff(3), view.GetImageBuff() + 36);
    EXPECT_EQ(view.GetImageBuff(-1), nullptr);
    EXPECT_EQ(view.GetImageBuff(4), nullptr);
    ASSERT_NE(image.GetExtraInfoBuff(), nullptr);
    EXPECT_EQ(std::vector<unsigned char>(image.GetExtraInfoBuff(), image.GetExtraInfoBuff() + 16),
              std::vector<unsigned char>(16, 0));
    EXPECT_EQ(image.SetMiscValue(9), Ok);
    EXPECT_EQ(image.MiscValue(), 9U);
    EXPECT_EQ(image.At(1, 1).Value(PixelChannelID::Mono), 0U);
    EXPECT_EQ(image.At(1, 1).Format(), Mono8);
}

TEST(Image, WrapsCallerMemory) {
    auto pixels = Ramp(3 * 5);
    AbsImage image(4, 3, Mono8, 1, pixels.data(), false);
    EXPECT_TRUE(image.IsNull());
    EXPECT_EQ(image.BufferID(), 0U);
    EXPECT_EQ(image.BufferSize(), 0U);
    EXPECT_EQ(image.Name(), "Image from buffer");
    EXPECT_EQ(image.GetImageBuff(2), pixels.data() + 10);
    const auto clone = image.Clone(nullptr);
    ASSERT_NE(clone, nullptr);
    EXPECT_EQ(clone->GetImageInfo()->paddingX, 1);
    EXPECT_EQ(std::memcmp(clone->GetImageBuff(), pixels.data(), pixels.size()), 0);
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
    EXPECT_EQ(image.GetImageInfo()->pixelFormat, Mono16);
    EXPECT_EQ(image.GetImageInfo()->blockId, 0x100000001ULL);
    EXPECT_EQ(image.GetExtraInfoBuff()[4999], 0);
    EXPECT_EQ(image.UpdateImageInfoA(7, 1, 2), Ok);
    EXPECT_EQ(image.UpdateImageInfoB(3, 4, 5), Ok);
    EXPECT_EQ(image.GetImageInfo()->blockId, 7U);
    EXPECT_EQ(image.GetImageInfo()->timestampHigh, 1U);
    EXPECT_EQ(image.GetImageInfo()->timestampLow, 2U);
    EXPECT_EQ(image.GetImageInfo()->statusA, 3U);
    EXPECT_EQ(image.GetImageInfo()->lostPackets, 4U);
    EXPECT_EQ(image.GetImageInfo()->statusC, 5U);
    ImageInfo stale = next;
    stale.headerVersion = 2;
    EXPECT_EQ(image.UpdateImageInfo(&stale), NotFound);
    const ImageInfo tooLarge = Header(1000, 1000, Mono8);
    EXPECT_EQ(image.UpdateImageInfo(&tooLarge), NotFound);
    EXPECT_EQ(image.GetImageInfo()->width, 4U);
    EXPECT_EQ(image.UpdateImageInfo(nullptr), static_cast<unsigned int>(Status::NotAvailable));
    // Its own header, through a change of info buffer.
    EXPECT_EQ(image.UpdateImageInfo(image.GetImageInfo()), Ok);
    EXPECT_EQ(image.GetImageInfo()->width, 4U);
}

TEST(Image, DataUpdatesAreCutToTheImage) {
    const ImageInfo info = Header(8, 8, Mono8);
    AbsImage image(&info, nullptr, 0);
    const auto bytes = Ramp(1000);
    EXPECT_EQ(image.UpdateImageData(nullptr, 10), 0U);
    EXPECT_EQ(image.UpdateImageData(bytes.data(), 0), 64U);
    EXPECT_EQ(image.UpdateImageData(bytes.data(), 1000), 64U);
    EXPECT_EQ(image.UpdateImageData(bytes.data(), 10), 10U);
}

TEST(Image, GeometryThatDoesNotFitLeavesAnUnusableImage) {
    const ImageInfo info = Header(8, 8, Mono8);
    AbsImage image(&info, nullptr, 0);
    EXPECT_EQ(image.UpdateImageInfoC(100, 100, RGB8), Ok); // inside the slack's power of two
    EXPECT_EQ(image.GetImageInfo()->pixelFormat, RGB8);
    const std::size_t before = VxLoggerGetLogItems().size();
    EXPECT_EQ(image.UpdateImageInfoC(1000000, 2, Mono8), NotFound);
    EXPECT_EQ(image.GetImageInfo()->height, 1U);
    EXPECT_EQ(image.GetImageInfo()->statusA, 1U);
    EXPECT_EQ(image.GetImageInfo()->pixelFormat, 0U);
    ASSERT_EQ(VxLoggerGetLogItems().size(), before + 1);
    EXPECT_EQ(VxLoggerGetLogItems().back()->Info(),
              "UpdateimageInfoC with invalid data, width: 1000000 height: 2 format: 1080001");
    EXPECT_EQ(VxLoggerGetLogItems().back()->Level(), "Error");
    // The width remains, and nothing may believe it.
    const ROIRect roi{0, 0, 1000000, 1};
    EXPECT_EQ(image.Clone(nullptr), nullptr);
    EXPECT_EQ(image.Copy(&roi, nullptr), nullptr);
    EXPECT_EQ(image.Shift(1, nullptr), nullptr);
    EXPECT_EQ(image.Unpack(nullptr), nullptr);
    EXPECT_TRUE(image.CreateHistogram(nullptr, 0).empty());
    const auto bytes = Ramp(1000000);
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
    const ROIRect corner{8, 5, 100, 100};
    const auto crop = image.Copy(&corner, nullptr);
    ASSERT_NE(crop, nullptr);
    EXPECT_EQ(crop->GetImageInfo()->width, 2U);
    EXPECT_EQ(crop->GetImageInfo()->height, 1U);
    EXPECT_EQ(crop->GetImageInfo()->paddingX, 0);
    EXPECT_EQ(std::memcmp(crop->GetImageBuff(0), image.GetImageBuff(5) + 24, 6), 0);
    const ROIRect inner{1, 2, 3, 2};
    const auto middle = image.Copy(&inner, nullptr);
    EXPECT_EQ(std::memcmp(middle->GetImageBuff(1), image.GetImageBuff(3) + 3, 9), 0);
    const ROIRect outside{10, 0, 1, 1};
    EXPECT_EQ(image.Copy(&outside, nullptr)->GetImageInfo()->width, 10U);
    const ROIRect huge{9, 5, UINT32_MAX, UINT32_MAX};
    EXPECT_EQ(image.Copy(&huge, nullptr)->GetImageInfo()->width, 1U);
    const ImageInfo packed = Header(8, 8, Mono10p);
    EXPECT_EQ(AbsImage(&packed, nullptr, 0).Copy(&inner, nullptr), nullptr);
}

TEST(ShiftTest, WidensWithoutSaturating) {
    ImageInfo info = Header(3, 2, Mono8, 1);
    const std::vector<unsigned char> bytes{255, 1, 2, 99, 3, 4, 5, 99};
    const AbsImage image(&info, bytes.data(), 0);
    const auto shifted = image.Shift(8, nullptr);
    ASSERT_NE(shifted, nullptr);
    EXPECT_EQ(shifted->GetImageInfo()->pixelFormat, Mono16);
    EXPECT_EQ(shifted->GetImageInfo()->paddingX, 0);
    EXPECT_EQ(Sample16(*shifted, 0, 0), 65280);
    EXPECT_EQ(Sample16(*shifted, 1, 2), 5 << 8);
    EXPECT_EQ(image.Shift(0, nullptr), nullptr);
    EXPECT_EQ(image.Shift(9, nullptr), nullptr);
    info = Header(1, 2, Mono16, 1); // the second line starts at an odd address
    const std::vector<unsigned char> samples{0x34, 0x12, 0, 0x78, 0x56, 0};
    const auto wide = AbsImage(&info, samples.data(), 0).Shift(4, nullptr);
    EXPECT_EQ(Sample16(*wide, 0, 0), 0x2340);
    EXPECT_EQ(Sample16(*wide, 1, 0), 0x6780);
    info = Header(4, 4, BayerRG10);
    EXPECT_EQ(AbsImage(&info, nullptr, 0).Shift(4, nullptr), nullptr);
}

} // namespace
} // namespace VX3
