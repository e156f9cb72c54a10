// Colours of images through the C interface.
#include "vx3/vx3.h"

#include "support/VirtualCamera.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace {

constexpr uint32_t Rgb8 = 0x02180014;
constexpr uint32_t Rgba8 = 0x02200016;
constexpr auto NotSupported = static_cast<int>(0x80000006U);

TEST(CApiColors, ImagesConvertAndShowInFalseColour) {
    VX3::Test::VirtualCamera camera(0);
    ASSERT_EQ(SubDevice_Connect(camera.Get()), 0);
    ASSERT_EQ(SubDevice_OpenStreamByIndex(camera.Get(), 0, 4), 0);
    ASSERT_EQ(SubDevice_StartStreamByIndex(camera.Get(), 0, nullptr, nullptr, 0), 0);
    Image* grey = SubDevice_SnapA(camera.Get(), 0, 5000);
    ASSERT_NE(grey, nullptr);
    const unsigned char level = Image_GetImageBuff(grey)[0];
    Image* made = nullptr;
    ASSERT_EQ(Image_ConvertTo(grey, Rgb8, &made), 0);
    EXPECT_EQ(Image_GetImageInfo(made).pixelFormat, Rgb8);
    EXPECT_EQ(Image_GetImageInfo(made).dataSize, 3 * Image_GetImageInfo(grey).dataSize);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(Image_GetImageBuff(made)), 3),
              std::string(3, static_cast<char>(level)));
    Image* mapped = made;
    EXPECT_EQ(Image_Map2RGB8(made, 0, 0, 255, &mapped), NotSupported) << "no false colour of colours";
    EXPECT_EQ(mapped, nullptr);
    Image_Recycle(made);
    EXPECT_EQ(Image_ConvertTo(grey, Rgba8, &made), NotSupported);
    EXPECT_EQ(Image_ConvertTo(grey, Rgb8, nullptr), -1);
    const int jet = ColorMap_Find("JET");
    ASSERT_GE(jet, 0);
    ASSERT_EQ(Image_Map2RGB8(grey, static_cast<unsigned int>(jet), 255, 0, &mapped), 0);
    EXPECT_EQ(Image_GetImageInfo(mapped).pixelFormat, Rgba8);
    const unsigned char coldest[] = {0, 0, 128, 255}; // all but the brightest lie below the window
    EXPECT_EQ(std::memcmp(Image_GetImageBuff(mapped), coldest, 4), 0) << "level " << int{level};
    Image_Recycle(mapped);
    Image_Recycle(grey);
    EXPECT_EQ(Image_ConvertTo(grey, Rgb8, &made), -1) << "no longer alive";
    EXPECT_EQ(made, nullptr);
}

TEST(CApiColors, MapsHaveNames) {
    char name[32];
    ASSERT_EQ(ColorMap_Count(), 12);
    for (int map = 0; map < ColorMap_Count(); ++map) {
        ASSERT_EQ(ColorMap_Name(static_cast<unsigned int>(map), name, sizeof name), 0);
        EXPECT_EQ(ColorMap_Find(name), map) << name;
    }
    EXPECT_STREQ(name, "Mono");
    EXPECT_EQ(ColorMap_Name(11, name, 4), -2);
    EXPECT_EQ(ColorMap_Name(12, name, sizeof name), -1);
    EXPECT_EQ(ColorMap_Find("sepia"), -1);
    EXPECT_EQ(ColorMap_Find(nullptr), -1);
}

} // namespace
