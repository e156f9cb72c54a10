#include "image/AbsBuffer.h"
#include "image/AbsImage.h"
#include "image/BufferCreator.h"
#include "image/DefaultPools.h"
#include "vx3/core/IntfDevType.h"
#include "vx3/core/Logger.h"
#include "vx3/core/Status.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <numeric>

namespace VX3::Test {
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
    EXPECT_EQ(image.GetImageInfo()->pixelFormat, Mono16);
    EXPECT_EQ(image.GetImageInfo()->blockId, 0x100000001ULL);
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
    EXPECT_EQ(image.UpdateImageInfo(nullptr), static_cast<unsigned int>(Status::NotAvailable));
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
    const std::size_t before = VxLoggerGetLogItems().size();
    EXPECT_EQ(image.UpdateImageInfoC(1000000, 2, Mono8), NotFound);
    const ImageInfo& now = *image.GetImageInfo();
    EXPECT_EQ(std::tuple(now.height, now.statusA, now.pixelFormat), std::tuple(1U, 1U, 0U));
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
    EXPECT_EQ(size({10, 0, 1, 1}), std::tuple(10U, 6U, 0U)) << "outside: the whole image";
    EXPECT_EQ(size({0, 6, 1, 1}), std::tuple(10U, 6U, 0U));
    EXPECT_EQ(size({9, 5, UINT32_MAX, UINT32_MAX}), std::tuple(1U, 1U, 0U));
    EXPECT_EQ(image.Copy(nullptr, nullptr)->GetImageInfo()->height, 6U);
    const ROIRect inner{1, 2, 3, 2};
    const auto middle = image.Copy(&inner, nullptr);
    for (const int line : {0, 1})
        EXPECT_EQ(std::memcmp(middle->GetImageBuff(line), image.GetImageBuff(2 + line) + 3, 9), 0);
    const ImageInfo packed = Header(8, 8, Mono10p);
    EXPECT_EQ(AbsImage(&packed, nullptr, 0).Copy(&inner, nullptr), nullptr);
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
    info = Header(4, 4, BayerRG10);
    EXPECT_EQ(AbsImage(&info, nullptr, 0).Shift(4, nullptr), nullptr);
}

} // namespace
} // namespace VX3::Test
