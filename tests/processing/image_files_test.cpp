#include "support/TempDir.h"
#include "support/TestImages.h"
#include "vx3/core/LastFailure.h"
#include "vx3/processing/SaveLoadImage.h"

#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <numeric>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <sys/resource.h>
#include <sys/stat.h>

// A codec behind OpenCV's takes two mutexes of its own in both orders, on one thread, when it registers
// itself.
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_suppressions() {
    return "deadlock:libgdal\n";
}

namespace VX3::Test {
namespace {

std::shared_ptr<IImage> Picture(PixelFormatValue format, const Geometry& geometry) {
    return RandomImage(format, geometry);
}

std::vector<unsigned char> BytesOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<unsigned char> PixelsOf(const IImage& image) {
    return {image.GetImageBuff(), image.GetImageBuff() + image.GetImageInfo()->ImageDataSize()};
}

class ImageFiles : public ::testing::Test {
protected:
    TempDir dir_;
};

TEST_F(ImageFiles, LosslessPicturesKeepEveryPixel) {
    for (const char* name : {"a.png", "b.BMP", "c.tiff"})
        for (const unsigned int padding : {0U, 5U}) {
            const auto image = Picture(BGR8, {33, 7, padding});
            ASSERT_EQ(SaveLoadImage::Save2File(image, dir_ / name, 1), Ok) << name;
            const auto loaded = SaveLoadImage::LoadFromFile(dir_ / name, nullptr, nullptr);
            ASSERT_NE(loaded, nullptr) << name;
            EXPECT_EQ(loaded->GetImageInfo()->pixelFormat, BGR8);
            EXPECT_EQ(SamplesOf<std::uint8_t>(*loaded, 3), SamplesOf<std::uint8_t>(*image, 3));
        }
}

TEST_F(ImageFiles, SixteenBitPicturesKeepTheirDepth) {
    for (const unsigned int padding : {0U, 1U, 2U}) { // an odd row step as well
        const auto image = Picture(Mono12, {9, 5, padding});
        ASSERT_EQ(SaveLoadImage::Save2File(image, dir_ / "deep.png", 0), Ok);
        const cv::Mat mat = cv::imread(dir_ / "deep.png", cv::IMREAD_UNCHANGED);
        ASSERT_EQ(mat.type(), CV_16UC1);
        for (int y = 0; y < 5; ++y)
            ASSERT_EQ(std::memcmp(mat.ptr(y), image->GetImageBuff(y), 18), 0) << padding;
    }
}

// One colour in every format, held against OpenCV's reading of the file: B, G, R (and for grey the
// luminance).
TEST_F(ImageFiles, EveryFormatBecomesAPictureOfTheRightColour) {
    for (std::uint32_t code = 0; code < 2; ++code)
        for (const PixelFormatValue format :
             {Mono8, Mono10, Mono12, Mono16, BayerRG8, BayerGR8, BayerBG8, BayerGB8, BayerRG10, BayerGB12,
              RGB8, BGR8, RGBa8, BGRa8, RGB10, BGR12, RGB16, RGBa10, BGRa16}) {
            const char* name = code == 0 ? "a.png" : "a.bmp";
            SCOPED_TRACE(PixelFormat(format).ToString() + " " + name);
            const PixelFormat pixel(format);
            const std::shared_ptr<IImage> image =
                FlatImage(pixel, {7, 5, 2}, {200, 100, 50, 255}); // odd sizes
            const bool grey = pixel.ToString().rfind("MONO", 0) == 0;
            ASSERT_EQ(SaveLoadImage::Save2File(image, dir_ / name, 0), Ok) << LastFailure().text;
            const cv::Mat mat = cv::imread(dir_ / name, cv::IMREAD_UNCHANGED);
            ASSERT_EQ(std::pair(mat.cols, mat.rows), std::pair(7, 5));
            std::vector<cv::Mat> planes;
            cv::split(mat, planes);
            const bool deep = mat.depth() == CV_16U;
            EXPECT_EQ(deep, code == 0 && grey && pixel.BitDepth() > 8)
                << "16 bits where the picture has them";
            const double expected[] = {50, 100, 200, 255};
            const double unit = deep ? 1 << (pixel.BitDepth() - 8) : 1;
            for (std::size_t plane = 0; plane < planes.size(); ++plane) {
                const double level = (grey ? 200 : expected[plane]) * unit;
                EXPECT_EQ(
                    cv::norm(planes[plane], cv::Mat(5, 7, mat.depth(), cv::Scalar(level)), cv::NORM_INF), 0)
                    << "plane " << plane;
            }
        }
    EXPECT_EQ(SaveLoadImage::Save2File(Picture(RawBlock, {4, 4}), dir_ / "x.PNG", 0), NotAvailable);
}

TEST_F(ImageFiles, ColoursChangeTheirOrder) {
    const auto image = Picture(BGR8, {2, 1});
    ASSERT_EQ(SaveLoadImage::Save2File(image, dir_ / "bgr.png", 0), Ok);
    std::shared_ptr<IImage> bgr = SaveLoadImage::LoadFromFile(dir_ / "bgr.png", nullptr, nullptr);
    EXPECT_EQ(PixelsOf(*bgr), PixelsOf(*image));
    std::shared_ptr<IImage> rgb;
    ASSERT_EQ(SaveLoadImage::ConvertBGR2RGB(bgr, rgb), Ok);
    EXPECT_EQ(rgb->GetImageInfo()->pixelFormat, RGB8);
    EXPECT_EQ(rgb->GetImageBuff()[0], bgr->GetImageBuff()[2]);
    EXPECT_EQ(SaveLoadImage::ConvertBGR2RGB(rgb, bgr), NotFound);
    ASSERT_EQ(SaveLoadImage::ConvertBGR2RGB(bgr, bgr), Ok); // in place
    EXPECT_EQ(PixelsOf(*bgr), PixelsOf(*rgb));
    const auto bgra = Picture(BGRa8, {3, 2, 1});
    std::shared_ptr<IImage> rgba = Picture(Mono8, {64, 64, 3});
    ASSERT_EQ(SaveLoadImage::ConvertBGRA2RGBA(bgra, rgba), Ok);
    EXPECT_EQ(rgba->GetImageInfo()->width, 3U);
    EXPECT_EQ(rgba->GetImageBuff(1)[4], bgra->GetImageBuff(1)[6]);
    EXPECT_EQ(rgba->GetImageBuff(1)[7], bgra->GetImageBuff(1)[7]);
}

TEST_F(ImageFiles, RawNamesCarryTheDescription) {
    const auto image = Picture(Mono12, {6, 4});
    ASSERT_EQ(SaveLoadImage::Save2File(image, dir_ / "frame.raw", 1), Ok);
    EXPECT_EQ(BytesOf(dir_ / "frame.6_4_MONO12.raw"), PixelsOf(*image));
    const auto loaded = SaveLoadImage::LoadFromFile(dir_ / "frame.6_4_MONO12.raw", nullptr, nullptr);
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(PixelsOf(*loaded), PixelsOf(*image));

    const auto bayer = Picture(BayerRG8, {4, 4, 3});
    ASSERT_EQ(SaveLoadImage::Save2File(bayer, dir_ / "x.raw", 1), Ok);
    const auto padded = SaveLoadImage::LoadFromFile(dir_ / "x.4_4_BAYER RG8_P3.raw", nullptr, nullptr);
    ASSERT_NE(padded, nullptr);
    EXPECT_EQ(PixelsOf(*padded), PixelsOf(*bayer));

    ASSERT_EQ(SaveLoadImage::Save2File(image, dir_ / "plain.raw", 0), Ok);
    EXPECT_EQ(BytesOf(dir_ / "plain.raw").size(), 48U);
    ASSERT_EQ(SaveLoadImage::Save2File(image, dir_ / "noextension", 1), Ok);
    EXPECT_EQ(BytesOf(dir_ / "noextension").size(), 48U);
}

TEST_F(ImageFiles, DotsInDirectoriesSayNothing) {
    std::filesystem::create_directory(dir_ / "v1.png");
    const std::string file = dir_ / "v1.png/frame";
    const auto image = Picture(Mono8, {4, 2});
    ASSERT_EQ(SaveLoadImage::Save2File(image, file, 1), Ok);
    EXPECT_EQ(BytesOf(file), PixelsOf(*image));
}

TEST_F(ImageFiles, NameWinsAndBaseFills) {
    const auto write = [this](const std::string& name) {
        std::ofstream(dir_ / name, std::ios::binary) << "abcdefghijklmnopqrstuvwxyz";
        return dir_ / name;
    };
    ImageBaseInfo base = Base(3, 2, Mono16, 2);
    base.timestamp = 0x100000005ULL;
    base.blockId = 8;
    base.bigEndian = 1;
    EXPECT_EQ(SaveLoadImage::LoadFromFile(write("none.raw"), nullptr, nullptr), nullptr);
    const auto filled = SaveLoadImage::LoadFromFile(write("none.raw"), &base, nullptr);
    ASSERT_NE(filled, nullptr);
    EXPECT_EQ(filled->GetImageInfo()->width, 3U);
    EXPECT_EQ(filled->GetImageInfo()->blockId, 8U);
    EXPECT_EQ(std::memcmp(filled->GetImageBuff(), "badcfegh", 8), 0); // swapped but for the padding
    const auto named = SaveLoadImage::LoadFromFile(write("n.4_3_MONO8_T9_EL.raw"), &base, nullptr);
    ASSERT_NE(named, nullptr);
    EXPECT_EQ(named->GetImageInfo()->width, 4U);
    EXPECT_EQ(named->GetImageInfo()->paddingX, 2); // the name is silent
    EXPECT_EQ(named->GetImageInfo()->timestampLow, 9U);
    EXPECT_EQ(named->GetImageInfo()->timestampHigh, 0U);
    EXPECT_EQ(std::memcmp(named->GetImageBuff(1), "ghij", 4), 0);
    const auto little = SaveLoadImage::LoadFromFile(write("l.2_1_MONO16_P0_EL.raw"), &base, nullptr);
    EXPECT_EQ(std::memcmp(little->GetImageBuff(), "abcd", 4), 0);
    const auto big = SaveLoadImage::LoadFromFile(write("b.2_1_MONO16_EB.raw"), nullptr, nullptr);
    EXPECT_EQ(std::memcmp(big->GetImageBuff(), "badc", 4), 0);
    for (const char* shorter : {"s.9_3_MONO8.raw", "s.10_10_MONO8.raw", "s.30000_30000_MONO16.raw"}) {
        EXPECT_EQ(SaveLoadImage::LoadFromFile(write(shorter), nullptr, nullptr), nullptr)
            << "the rest would be another image's";
        EXPECT_NE(LastFailure().text.find("has 26 bytes"), std::string::npos) << LastFailure().text;
    }
    const auto ring = ImagePoolFactory::CreateRingAImagePool(64, 8, 64, "ring"); // slots without slack
    const auto cut = SaveLoadImage::LoadFromFile(write("c.4_2_MONO8.raw"), nullptr, ring);
    ASSERT_NE(cut, nullptr);
    EXPECT_EQ(std::memcmp(cut->GetImageBuff(), "abcdefgh\0", 9), 0); // the next slot is untouched
}

TEST_F(ImageFiles, NamesThatLieAreRefused) {
    for (const char* name : {"a.-5_-5_MONO8.raw", "a.2000000000_2_MONO8.raw", "a.65536_65536_MONO8.raw",
                             "a.99999999999_1_MONO8.raw", "a.x_y_z.raw", "a.1_1_MONO8_P-1.raw",
                             "a.1_1_MONO8_Pq.raw", "a.0_1_MONO8.raw", "a.4_4_FOO.raw"}) {
        std::ofstream(dir_ / name) << "0123456789";
        EXPECT_EQ(SaveLoadImage::LoadFromFile(dir_ / name, nullptr, nullptr), nullptr) << name;
    }
    const ImageBaseInfo base = Base(2, 2, Mono8);
    EXPECT_NE(SaveLoadImage::LoadFromFile(dir_ / "a.x_y_z.raw", &base, nullptr), nullptr);
}

TEST_F(ImageFiles, MissingAndBrokenFilesLoadAsNothing) {
    const ImageBaseInfo base = Base(2, 2, Mono8);
    for (const char* name : {"missing.png", "missing.raw", "."})
        EXPECT_EQ(SaveLoadImage::LoadFromFile(dir_ / name, &base, nullptr), nullptr) << name;
    ASSERT_EQ(::mkfifo((dir_ / "pipe.raw").c_str(), 0600), 0);
    EXPECT_EQ(SaveLoadImage::LoadFromFile(dir_ / "pipe.raw", &base, nullptr), nullptr);
    std::ofstream(dir_ / "broken.png") << "\x89PNG\r\n\x1a\nnonsense";
    std::ofstream(dir_ / "empty.jpg");
    EXPECT_EQ(SaveLoadImage::LoadFromFile(dir_ / "broken.png", &base, nullptr), nullptr);
    EXPECT_EQ(SaveLoadImage::LoadFromFile(dir_ / "empty.jpg", &base, nullptr), nullptr);
}

TEST_F(ImageFiles, UnwritableTargetsHaveAStatus) {
    const auto image = Picture(Mono8, {8, 8});
    EXPECT_EQ(SaveLoadImage::Save2File(nullptr, dir_ / "a.png", 0), NotFound);
    for (const char* name : {"no/such/dir.raw", "no/such/dir.png", ""})
        EXPECT_EQ(SaveLoadImage::Save2File(image, dir_ / name, 0), WrongState) << name;
    EXPECT_EQ(SaveLoadImage::Save2File(image, "/dev/full", 0), WrongState);
    EXPECT_TRUE(std::filesystem::exists("/dev/full"));
}

TEST_F(ImageFiles, AFullDiskLeavesNoTruncatedFile) {
    const auto image = Picture(Mono8, {400, 400});
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit tight = before;
    tight.rlim_cur = 1000;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &tight), 0);
    std::vector<unsigned int> statuses;
    for (const char* name : {"a.raw", "a.bmp", "a.png"})
        statuses.push_back(SaveLoadImage::Save2File(image, dir_ / name, 0));
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, oldHandler);
    EXPECT_EQ(statuses, std::vector<unsigned int>(3, WrongState));
    EXPECT_TRUE(std::filesystem::is_empty(dir_.Path()));
    EXPECT_EQ(SaveLoadImage::Save2File(image, dir_ / "a.raw", 0), Ok);
}

TEST(Matrices, KnowFourTypes) {
    EXPECT_TRUE(Image2Mat(nullptr).empty());
    EXPECT_TRUE(Image2Mat(Picture(Mono12p, {4, 4}).get()).empty());
    const auto image = Picture(BGRa8, {5, 4, 3});
    const cv::Mat mat = Image2Mat(image.get());
    EXPECT_EQ(mat.data, image->GetImageBuff());
    EXPECT_EQ(mat.step[0], 23U);
    EXPECT_EQ(mat.type(), CV_8UC4);

    ImageBaseInfo base = Base(99, 99, RGB16, 9);
    base.blockId = 4;
    for (const auto& [type, format] : std::vector<std::pair<int, PixelFormatValue>>{
             {CV_8UC1, Mono8}, {CV_8UC3, BGR8}, {CV_8UC4, BGRa8}, {CV_16UC1, Mono16}}) {
        cv::Mat whole(6, 8, type);
        cv::randu(whole, 0, 255);
        cv::Mat part = whole(cv::Rect(1, 2, 5, 3)); // rows that are not contiguous
        const auto converted = Mat2Image(part, base, nullptr);
        ASSERT_NE(converted, nullptr);
        EXPECT_EQ(converted->GetImageInfo()->pixelFormat, format);
        EXPECT_EQ(converted->GetImageInfo()->blockId, 4U);
        EXPECT_EQ(cv::norm(Image2Mat(converted.get()), part, cv::NORM_INF), 0);
    }
    cv::Mat real(2, 2, CV_32FC1, cv::Scalar(1));
    cv::Mat none;
    EXPECT_EQ(Mat2Image(real, base, nullptr), nullptr);
    EXPECT_EQ(Mat2Image(none, base, nullptr), nullptr);
}

TEST(ImageBuffers, CopiedWrappedDecodedAdded) {
    std::vector<unsigned char> bytes(24);
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(1));
    ImageBaseInfo base = Base(3, 2, Mono16, 0);
    base.bigEndian = 1;
    EXPECT_EQ(SaveLoadImage::LoadFromBuffer(bytes.data(), 11, &base, nullptr), nullptr) << "one byte short";
    const auto copied = SaveLoadImage::LoadFromBuffer(bytes.data(), 12, &base, nullptr);
    ASSERT_NE(copied, nullptr);
    EXPECT_EQ(copied->GetImageBuff()[0], 2);
    EXPECT_EQ(SaveLoadImage::LoadFromBuffer(bytes.data(), bytes.size(), nullptr, nullptr),
              nullptr); // no picture
    EXPECT_EQ(SaveLoadImage::LoadFromBuffer(nullptr, 5, &base, nullptr), nullptr);
    std::vector<unsigned char> png;
    cv::imencode(".png", cv::Mat(2, 2, CV_8UC3, cv::Scalar(1, 2, 3)), png);
    EXPECT_EQ(SaveLoadImage::LoadFromBuffer(png.data(), png.size(), nullptr, nullptr)->GetImageBuff()[2], 3);

    const std::shared_ptr<IImage> wrapped = SaveLoadImage::WrapFromBuffer(bytes.data(), 2, 4, RGB8, 0);
    ASSERT_NE(wrapped, nullptr);
    EXPECT_TRUE(wrapped->IsNull());
    EXPECT_EQ(wrapped->GetImageBuff(3), bytes.data() + 18);
    EXPECT_EQ(SaveLoadImage::WrapFromBuffer(nullptr, 2, 4, RGB8, 0), nullptr);
    EXPECT_EQ(SaveLoadImage::WrapFromBuffer(bytes.data(), 0x80000000U, 4, RGB8, 0), nullptr);
    EXPECT_EQ(SaveLoadImage::WrapFromBuffer(bytes.data(), 2, 4, RGB8, 70000), nullptr);

    const std::uint16_t samples[] = {4000, 100};
    std::vector<unsigned char> raw(4);
    std::memcpy(raw.data(), samples, 4);
    const std::shared_ptr<IImage> deep = SaveLoadImage::WrapFromBuffer(raw.data(), 2, 1, Mono12, 0);
    const auto sum = SaveLoadImage::ImagesAdd(deep, deep, nullptr);
    ASSERT_NE(sum, nullptr);
    std::uint16_t out[2];
    std::memcpy(out, sum->GetImageBuff(), 4);
    EXPECT_EQ(out[0], 4095);
    EXPECT_EQ(out[1], 200);
    EXPECT_EQ(SaveLoadImage::ImagesAdd(deep, wrapped, nullptr), nullptr);
}

} // namespace
} // namespace VX3::Test
