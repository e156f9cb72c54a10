#include "processing/colormaps/ColorTables.h"

#include "support/TestImages.h"

#include <gtest/gtest.h>

using namespace VX3;
using namespace VX3::Testing;

namespace {

struct Window {
    unsigned int low;
    unsigned int range;
};

// The entry that one sample is shown as.
std::uint32_t Shown(PixelFormatValue format, unsigned int sample, unsigned int map, const Window& window) {
    auto image = NewImage(format, {1, 1});
    std::memcpy(image->GetImageBuff(), &sample, format == Mono8 ? 1 : 2);
    const auto mapped = image->Map2RGB8(map, window.low, window.range, nullptr);
    EXPECT_EQ(mapped->GetImageInfo()->pixelFormat, RGBa8);
    return SamplesOf<std::uint32_t>(*mapped)[0];
}

TEST(Map, EightBitWindowsClipWithoutStretching) {
    const std::uint32_t* table = g_colorTable[10][0];
    EXPECT_EQ(Shown(Mono8, 99, 10, {100, 50}), table[0]);
    EXPECT_EQ(Shown(Mono8, 120, 10, {100, 50}), table[120]);
    EXPECT_EQ(Shown(Mono8, 150, 10, {100, 50}), table[150]);
    EXPECT_EQ(Shown(Mono8, 151, 10, {100, 50}), table[255]);
    EXPECT_EQ(Shown(Mono8, 254, 10, {5000, 1}), table[0]);
    EXPECT_EQ(Shown(Mono8, 7, 10, {3, 0xFFFFFFFFU}), table[7]) << "a sum beyond 32 bits";
}

TEST(Map, SixteenBitWindowsChooseResolutionAndShift) {
    EXPECT_EQ(Shown(Mono16, 1000, 6, {1000, 65535}), g_colorTable[6][6][0]);
    EXPECT_EQ(Shown(Mono16, 5000, 6, {1000, 65535}), g_colorTable[6][6][1000]);
    EXPECT_EQ(Shown(Mono16, 20001, 6, {1, 32768}), g_colorTable[6][6][10000]);
    EXPECT_EQ(Shown(Mono16, 2047, 6, {0, 2048}), g_colorTable[6][3][2047]);
    EXPECT_EQ(Shown(Mono16, 2048, 6, {0, 2048}), g_colorTable[6][3][2047]) << "one beyond the table";
    EXPECT_EQ(Shown(Mono16, 2050, 6, {0, 2048}), g_colorTable[6][3][2047]);
    EXPECT_EQ(Shown(Mono16, 256, 6, {0, 256}), g_colorTable[6][0][255]);
    EXPECT_EQ(Shown(Mono16, 257, 6, {0, 257}), g_colorTable[6][1][257]);
    EXPECT_EQ(Shown(Mono16, 65535, 6, {70000, 10}), g_colorTable[6][0][0]) << "a window above every sample";
}

TEST(Map, DepthsBetweenHaveTheirOwnLimits) {
    EXPECT_EQ(Shown(Mono14, 100, 9, {0, 2046}), g_colorTable[9][3][100]);
    EXPECT_EQ(Shown(Mono14, 100, 9, {0, 2047}), g_colorTable[9][4][100]);
    EXPECT_EQ(Shown(Mono10, 1000, 9, {0, 60000}), g_colorTable[9][2][1000]);
    EXPECT_EQ(Shown(Mono12, 4095, 9, {0, 60000}), g_colorTable[9][4][4095]);
    EXPECT_EQ(Shown(Mono10, 5000, 9, {0, 60000}), g_colorTable[9][2][1023]) << "above the nominal range";
    EXPECT_EQ(Shown(Mono14, 16000, 9, {0, 16383}), g_colorTable[9][6][16000]);
    // A window that begins above the nominal range shows all below it as its first entry.
    EXPECT_EQ(Shown(Mono10, 1500, 9, {2000, 10}), g_colorTable[9][0][0]);
    EXPECT_EQ(Shown(Mono10, 2001, 9, {2000, 10}), g_colorTable[9][0][255]);
}

TEST(Map, UnknownMapsAreGreyAndColourIsRefused) {
    EXPECT_EQ(Shown(Mono8, 90, 12, {0, 255}), 0xFF5A5A5AU);
    EXPECT_EQ(Shown(Mono8, 90, 0xFFFFFFFFU, {0, 255}), 0xFF5A5A5AU);
    for (const PixelFormatValue format : {BayerRG8, RGB8, Mono10p, Mono12Packed, Mono32f})
        EXPECT_EQ(NewImage(format, {4, 4})->Map2RGB8(0, 0, 255, nullptr), nullptr);
}

// A pool that refuses after some images, or serves others than were asked for.
class FaultyPool : public IImagePool {
public:
    FaultyPool(int serves, bool small) : serves_(serves), small_(small) {}
    std::unique_ptr<IImage> Create(const ImageInfo* info, const unsigned char* data,
                                   unsigned int len) override {
        if (serves_-- <= 0)
            return nullptr;
        ImageInfo served = *info;
        served.height = small_ ? 1 : info->height;
        return ImagePoolFactory::DefaultImagePool()->Create(&served, data, len);
    }
    unsigned int Release(std::unique_ptr<IImage>&&) override { return 0; }
    unsigned int PoolType() const override { return 2; }
    std::uint64_t PoolSize() const override { return 0; }
    std::string Name() const override { return "FaultyPool"; }
    std::uint64_t ObjID() const override { return 0; }
    bool IsConfigurable() const override { return false; }
    IConfigurer* GetConfigurer() override { return nullptr; }
    unsigned int ObjType() const override { return 0; }
    std::list<std::pair<std::string, std::string>> GetInfo() const override { return {}; }
    unsigned int TypeId() const override { return 0; }

private:
    int serves_;
    bool small_;
};

TEST(Pools, ResultsAreEmptyWhenThePoolDoesNotServe) {
    const auto rgb = RandomImage(RGB8, {20, 20});
    const auto packed = RandomImage(Mono10p, {20, 20});
    for (const bool small : {false, true}) {
        const auto pool = [small] { return std::make_shared<FaultyPool>(small ? 100 : 0, small); };
        EXPECT_EQ(rgb->Unpack2Image8(8, pool()), nullptr);
        EXPECT_EQ(packed->Unpack(pool()), nullptr);
        EXPECT_EQ(RandomImage(Mono8, {20, 20})->Map2RGB8(0, 0, 1, pool()), nullptr);
        EXPECT_EQ(RandomImage(BayerRG8, {20, 20})->Unpack2Image8(8, pool()), nullptr);
        EXPECT_TRUE(rgb->Split(0, pool()).empty());
    }
    EXPECT_TRUE(rgb->Split(0, std::make_shared<FaultyPool>(2, false)).empty()) << "two of three channels";
}

// A user's own memory holds exactly the lines; whatever is made of them must not look beyond.
TEST(Pools, ExactRingSlotsAreNeverLeft) {
    const Geometry sizes[] = {{1, 1}, {7, 3}, {65, 4}, {101, 5, 1}};
    for (const PixelFormatValue format : {Mono10p, Mono12p, Mono10Packed, Mono12Packed, Mono16, Mono32f,
                                          BayerGR8, BayerGB12, RGB8, BGRa8, RGB12, BGRa16, Mono8, Mono10}) {
        for (const Geometry& size : sizes) {
            const ImageInfo info = *NewImage(format, size)->GetImageInfo();
            // One slot: source and results share it, as rings do when they run over.
            const auto ring =
                ImagePoolFactory::CreateRingAImagePool(info.ImageDataSize(), info.ImageDataSize(), 64, "r");
            const auto image = ring->Create(&info, nullptr, 0);
            ASSERT_NE(image, nullptr);
            std::memset(image->GetImageBuff(), 0xFF, info.ImageDataSize());
            (void)image->Unpack(nullptr);
            (void)image->Unpack2Image8(8, nullptr);
            (void)image->Unpack2Image8(8,
                                       ring); // larger results are refused, smaller ones overwrite the source
            (void)image->Split(0, ring);
            (void)image->CreateHistogram(nullptr, 0);
            (void)image->CreateProfile(0, ProfileType::Vertical, 0);
            (void)image->CreateProfile(0, ProfileType::Horizontal, 1);
            (void)image->Map2RGB8(3, 0, 255, nullptr);
        }
    }
}

TEST(Pools, HeadersThatClaimMoreThanTheImageHasGiveNothing) {
    const auto image = RandomImage(Mono12, {64, 64});
    for (const auto& [width, height] : {std::pair{0x40000000U, 4U}, {65535U, 65535U}, {4U, 0x80000000U}}) {
        ImageInfo info = *image->GetImageInfo();
        info.width = width;
        info.height = height;
        EXPECT_NE(image->UpdateImageInfo(&info), 0U);
        EXPECT_NE(image->UpdateImageInfoC(width, height, Mono12), 0U);
        EXPECT_EQ(image->Unpack2Image8(8, nullptr), nullptr);
        EXPECT_EQ(image->Map2RGB8(0, 0, 1, nullptr), nullptr);
        EXPECT_TRUE(image->CreateHistogram(nullptr, 0).empty());
        EXPECT_TRUE(image->CreateProfile(0, ProfileType::Horizontal, 1).empty());
    }
}

} // namespace
