// What is read out of images, and shown of them: histograms, profiles, planes, false colours; results from
// pools that do not serve.
#include "image/ImagePoolRecycle.h"
#include "processing/colormaps/ColorTables.h"
#include "support/TestImages.h"
#include "vx3/image/HistogramData.h"
#include "vx3/image/ProfileData.h"

#include <gtest/gtest.h>

#include <numeric>
#include <opencv2/imgproc.hpp>

namespace VX3::Test {
namespace {

std::vector<std::uint32_t> CountsOf(const HistogramData& histogram) {
    return {histogram.Data(), histogram.Data() + histogram.Bins()};
}

std::vector<PixelChannelID> ChannelsOf(PixelFormatValue format) {
    std::vector<PixelChannelID> ids;
    for (unsigned int i = 0; i < PixelFormat(format).Channels(); ++i)
        ids.push_back(PixelFormat(format).ChannelID(i));
    return ids;
}

template <class List>
std::vector<PixelChannelID> IdsOf(const List& list) {
    std::vector<PixelChannelID> ids;
    for (const auto& item : list)
        ids.push_back(item.first);
    return ids;
}

// Counts of one channel of a region, sample by sample.
std::vector<std::uint32_t> Counted(const IImage& image, const ROIRect& region, unsigned int channel) {
    const PixelFormat format(image.GetImageInfo()->pixelFormat);
    const unsigned int bytes = format.BitDepth() == 8 ? 1 : 2;
    std::vector<std::uint32_t> counts(std::size_t{1} << format.BitDepth());
    for (unsigned int y = region.y; y < region.y + region.height; ++y) {
        for (unsigned int x = region.x; x < region.x + region.width; ++x) {
            std::uint16_t sample = 0;
            std::memcpy(&sample,
                        image.GetImageBuff(static_cast<int>(y)) + (x * format.Channels() + channel) * bytes,
                        bytes);
            if (sample < counts.size())
                ++counts[sample];
        }
    }
    return counts;
}

TEST(Histogram, CountsEveryLayoutOverWholeImagesAndRegions) {
    const Geometry sizes[] = {{1, 1}, {19, 7}, {130, 33, 3}, {64, 64}};
    for (const PixelFormatValue format :
         {Mono8, Mono10, Mono12, Mono16, RGB8, BGR8, RGBa8, BGRa8, RGB10, BGR14, RGBa12, BGRa16}) {
        SCOPED_TRACE(PixelFormat(format).ToString());
        for (const Geometry& size : sizes) {
            const auto image = RandomImage(format, size); // samples above the nominal range as well
            const ROIRect whole{0, 0, size.width, size.height};
            const ROIRect regions[] = {whole,
                                       {size.width / 3, size.height / 2, 5, 2},
                                       {0, 0, 1, 1},
                                       {size.width - 1, size.height - 1, 100, 0xFFFFFFFFU},
                                       {size.width, 0, 3, 3},
                                       {0, size.height, 3, 3}};
            for (const ROIRect* region = nullptr; region != std::end(regions);
                 region = region == nullptr ? regions : region + 1) {
                ROIRect used = whole;
                if (region != nullptr && region->x < size.width && region->y < size.height) {
                    used = {region->x, region->y, std::min(region->width, size.width - region->x),
                            std::min(region->height, size.height - region->y)};
                }
                const auto histograms = image->CreateHistogram(region, 0);
                ASSERT_EQ(IdsOf(histograms), ChannelsOf(format));
                for (unsigned int i = 0; i < histograms.size(); ++i)
                    ASSERT_EQ(CountsOf(histograms[i].second), Counted(*image, used, i));
            }
        }
    }
}

// Each cell position has its own value, so that a sample counted in the wrong one shows.
TEST(Histogram, BayerCountsCellPositions) {
    for (const PixelFormatValue format : {BayerRG10, BayerGB8}) {
        auto image = NewImage(format, {7, 5, 3});
        for (unsigned int y = 0; y < 5; ++y) {
            for (unsigned int x = 0; x < 7; ++x) {
                const auto value = static_cast<std::uint8_t>(10 + y % 2 * 2 + x % 2);
                image->GetImageBuff(static_cast<int>(y))[format == BayerRG10 ? 2 * x : x] = value;
            }
        }
        const ROIRect odd{1, 1, 4, 3}; // whole pairs: 4 columns, 2 lines
        const std::pair<const ROIRect*, std::uint32_t> cases[] = {{nullptr, 6}, {&odd, 2}};
        for (const auto& [region, each] : cases) {
            const auto histograms = image->CreateHistogram(region, 0);
            ASSERT_EQ(IdsOf(histograms), ChannelsOf(format));
            for (std::size_t i = 0; i < 4; ++i) {
                const auto counts = CountsOf(histograms[i].second);
                EXPECT_EQ(counts.size(), format == BayerRG10 ? 1024U : 256U);
                EXPECT_EQ(counts[10 + i], each) << "position " << i;
                EXPECT_EQ(std::accumulate(counts.begin(), counts.end(), 0U), each);
            }
        }
    }
}

TEST(Histogram, Statistics) {
    HistogramData histogram(256);
    histogram.Data()[10] = 1;
    histogram.Data()[20] = 1;
    // From bin to bin: smallest, largest, count, mean, spread.
    const std::tuple<unsigned int, unsigned int, unsigned int, unsigned int, unsigned int, double, double>
        ranges[] = {{0, 256, 10, 20, 2, 15.0, 7.0710678},
                    {20, 10, 10, 10, 1, 10.0, 0.0},
                    {11, 20, 0, 0, 0, 0.0, 0.0},
                    {300, 400, 10, 20, 2, 15.0, 7.0710678}}; // a start beyond the bins is the first bin
    for (const auto& [first, last, min, max, count, mean, spread] : ranges) {
        const StatisticsInfo info = histogram.CreateStatistics(first, last);
        EXPECT_TRUE(info.IsValid());
        EXPECT_EQ(std::tuple(info.min, info.max, info.count), std::tuple(min, max, count)) << first;
        EXPECT_DOUBLE_EQ(info.mean, mean);
        EXPECT_NEAR(info.stddev, spread, 1e-6);
    }
    EXPECT_FALSE(HistogramData(0).CreateStatistics(0, 256).IsValid());
    EXPECT_EQ(HistogramData(100000).Bins(), 65536U);
    // Equal values: the spread must not go below zero by rounding.
    histogram = HistogramData(256);
    histogram.Data()[255] = 4000000000U;
    EXPECT_EQ(histogram.CreateStatistics(0, 256).stddev, 0.0);
}

TEST(Profile, TakesLinesAndColumns) {
    const auto mono = ImageOf<std::uint8_t>(Mono8, {3, 2, 5}, {1, 2, 3, 4, 5, 6});
    const auto values = [](const ProfileData& profile) {
        return std::vector<std::uint32_t>(profile.Data(), profile.Data() + profile.Size());
    };
    using Values = std::vector<std::uint32_t>;
    EXPECT_EQ(values(mono->CreateProfile(1, ProfileType::Horizontal, 0)[0].second), (Values{4, 5, 6}));
    EXPECT_EQ(values(mono->CreateProfile(2, ProfileType::Vertical, 0)[0].second), (Values{3, 6}));
    EXPECT_EQ(mono->CreateProfile(2, ProfileType::Horizontal, 0)[0].second.Size(), 0U);
    EXPECT_FALSE(mono->CreateProfile(3, ProfileType::Vertical, 0)[0].second.IsVaid());

    const auto colour = ImageOf<std::uint16_t>(BGR12, {2, 2, 2}, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 4095});
    const auto profiles = colour->CreateProfile(1, ProfileType::Vertical, 0);
    ASSERT_EQ(IdsOf(profiles), ChannelsOf(BGR12));
    EXPECT_EQ(values(profiles[0].second), (Values{4, 10}));
    EXPECT_EQ(values(profiles[2].second), (Values{6, 4095}));
    EXPECT_FALSE(profiles[0].second.IsFloat());
}

TEST(Profile, MeansAgreeWithOpenCV) {
    const std::pair<PixelFormatValue, int> formats[] = {{Mono8, CV_8UC1},  {Mono14, CV_16UC1},
                                                        {RGB8, CV_8UC3},   {BGRa8, CV_8UC4},
                                                        {RGB16, CV_16UC3}, {RGBa16, CV_16UC4}};
    for (const auto& [format, type] : formats) {
        for (const Geometry& size : {Geometry{1, 1}, Geometry{37, 300, 6}, Geometry{1100, 9}}) {
            const auto image = RandomImage(format, size);
            const cv::Mat source(static_cast<int>(size.height), static_cast<int>(size.width), type,
                                 image->GetImageBuff(), image->GetImageInfo()->Stride());
            for (const ProfileType along : {ProfileType::Horizontal, ProfileType::Vertical}) {
                const bool horizontal = along == ProfileType::Horizontal;
                cv::Mat sums;
                cv::reduce(source, sums, horizontal ? 0 : 1, cv::REDUCE_SUM, CV_64F);
                const auto profiles = image->CreateProfile(12345, along, 1);
                ASSERT_EQ(IdsOf(profiles), ChannelsOf(format));
                for (std::size_t c = 0; c < profiles.size(); ++c) {
                    const ProfileData& profile = profiles[c].second;
                    ASSERT_TRUE(profile.IsFloat());
                    ASSERT_EQ(profile.Size(), horizontal ? size.width : size.height);
                    for (std::size_t i = 0; i < profile.Size(); ++i) {
                        const double sum = sums.ptr<double>()[i * profiles.size() + c];
                        ASSERT_DOUBLE_EQ(profile.FloatData()[i],
                                         sum / (horizontal ? size.height : size.width));
                    }
                }
            }
        }
    }
}

TEST(Profile, Statistics) {
    ProfileData integers(4, false, true);
    const std::uint32_t samples[] = {4, 8, 8, 100};
    std::copy(std::begin(samples), std::end(samples), integers.Data());
    const StatisticsInfo three = integers.CreateStatistics(3, 0);
    EXPECT_EQ(three.min, 4U);
    EXPECT_EQ(three.max, 8U);
    EXPECT_EQ(three.count, 3U);
    EXPECT_NEAR(three.mean, 20.0 / 3, 1e-12);
    EXPECT_NEAR(three.stddev, 2.3094010767, 1e-9);
    EXPECT_EQ(integers.CreateStatistics(0, 1).stddev, 0.0);
    EXPECT_EQ(integers.CreateStatistics(2, 2).count, 0U);

    ProfileData floats(3, true, true);
    floats.FloatData()[0] = 1.4;
    floats.FloatData()[1] = 2.5;
    floats.FloatData()[2] = 2.1;
    const StatisticsInfo info = floats.CreateStatistics(0, 99);
    EXPECT_EQ(info.min, 1U);
    EXPECT_EQ(info.max, 3U);
    EXPECT_NEAR(info.mean, 2.0, 1e-12);
    EXPECT_FALSE(ProfileData(0, false, false).CreateStatistics(0, 5).IsValid());
    EXPECT_FALSE(ProfileData(0x40000000U, true, false).IsVaid()) << "longer than any buffer";
}

TEST(Split, ColourAgreesWithOpenCV) {
    const std::pair<PixelFormatValue, int> formats[] = {
        {RGB8, CV_8UC3}, {BGRa8, CV_8UC4}, {BGR10, CV_16UC3}, {RGBa12, CV_16UC4}};
    for (const auto& [format, type] : formats) {
        for (const Geometry& size : {Geometry{1, 1}, Geometry{67, 5, 4}, Geometry{129, 4}}) {
            const auto image = RandomImage(format, size);
            const cv::Mat source(static_cast<int>(size.height), static_cast<int>(size.width), type,
                                 image->GetImageBuff(), image->GetImageInfo()->Stride());
            std::vector<cv::Mat> planes;
            cv::split(source, planes);
            const auto parts = image->Split(0, nullptr);
            ASSERT_EQ(IdsOf(parts), ChannelsOf(format));
            for (std::size_t i = 0; i < parts.size(); ++i) {
                IImage& part = *parts[i].second;
                ASSERT_EQ(part.GetImageInfo()->pixelFormat, CV_MAT_DEPTH(type) == CV_8U ? Mono8 : Mono16);
                const cv::Mat ours(source.rows, source.cols, planes[i].type(), part.GetImageBuff());
                ASSERT_EQ(cv::norm(ours, planes[i], cv::NORM_INF), 0);
            }
        }
    }
}

TEST(Split, BayerGivesTheCellPositions) {
    const auto image =
        ImageOf<std::uint8_t>(BayerGB8, {5, 3, 2}, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15});
    const auto parts = image->Split(0, nullptr);
    ASSERT_EQ(IdsOf(parts), ChannelsOf(BayerGB8));
    const std::vector<std::uint8_t> expected[4] = {{1, 3}, {2, 4}, {6, 8}, {7, 9}};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(parts[i].second->GetImageInfo()->height, 1U);
        EXPECT_EQ(SamplesOf<std::uint8_t>(*parts[i].second), expected[i]);
    }
    const auto deep = RandomImage(BayerRG10, {8, 6})->Split(0, nullptr);
    EXPECT_EQ(deep[3].second->GetImageInfo()->pixelFormat, Mono16);
    EXPECT_EQ(deep[3].second->GetImageInfo()->width, 4U);
    EXPECT_EQ(RandomImage(BayerRG8, {1, 1})->Split(0, nullptr).size(), 4U) << "four images without pixels";
}

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
class FaultyPool : public ImagePoolRecycle {
public:
    FaultyPool(int serves, bool small) : ImagePoolRecycle(0, "faulty"), serves_(serves), small_(small) {}
    std::unique_ptr<IImage> Create(const ImageInfo* info, const unsigned char* data,
                                   unsigned int len) override {
        if (serves_-- <= 0)
            return nullptr;
        ImageInfo served = *info;
        served.height = small_ ? 1 : info->height;
        return ImagePoolRecycle::Create(&served, data, len);
    }

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
} // namespace VX3::Test
