#include "support/TestImages.h"
#include "vx3/image/HistogramData.h"
#include "vx3/image/ProfileData.h"

#include <opencv2/imgproc.hpp>

#include <gtest/gtest.h>

#include <numeric>

using namespace VX3;
using namespace VX3::Testing;

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

TEST(Histogram, AgreesWithOpenCV) {
    const auto image = RandomImage(Mono12, {300, 200}, 0x0FFF);
    const cv::Mat source(200, 300, CV_16UC1, image->GetImageBuff());
    const int channels[] = {0};
    const int bins[] = {4096};
    const float range[] = {0, 4096};
    const float* ranges[] = {range};
    cv::Mat counts;
    cv::calcHist(&source, 1, channels, cv::Mat(), counts, 1, bins, ranges);
    const auto ours = CountsOf(image->CreateHistogram(nullptr, 0)[0].second);
    for (int i = 0; i < 4096; ++i)
        ASSERT_EQ(static_cast<float>(ours[static_cast<std::size_t>(i)]), counts.at<float>(i)) << i;
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
    StatisticsInfo info = histogram.CreateStatistics(0, 256);
    EXPECT_EQ(info.min, 10U);
    EXPECT_EQ(info.max, 20U);
    EXPECT_EQ(info.count, 2U);
    EXPECT_DOUBLE_EQ(info.mean, 15.0);
    EXPECT_NEAR(info.stddev, 7.0710678, 1e-6);
    info = histogram.CreateStatistics(20, 10);
    EXPECT_EQ(info.min, 10U);
    EXPECT_EQ(info.max, 10U);
    EXPECT_EQ(info.stddev, 0.0);
    info = histogram.CreateStatistics(11, 20);
    EXPECT_EQ(info.min, 0U);
    EXPECT_EQ(info.count, 0U);
    EXPECT_TRUE(info.IsValid());
    EXPECT_EQ(histogram.CreateStatistics(300, 400).count, 2U) << "a start beyond the bins is the first bin";
    EXPECT_FALSE(HistogramData(0).CreateStatistics(0, 256).IsValid());
    EXPECT_EQ(HistogramData(100000).Bins(), 65536U);
    // Equal values: the spread must not go below zero by rounding.
    histogram.Data()[10] = 0;
    histogram.Data()[20] = 0;
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

} // namespace
