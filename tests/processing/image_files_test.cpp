#include "support/TempDir.h"
#include "vx3/core/Status.h"
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

namespace VX3 {
namespace {

constexpr auto Ok = static_cast<unsigned int>(Status::Ok);
constexpr auto NotFound = static_cast<unsigned int>(Status::NotFound);
constexpr auto NotAvailable = static_cast<unsigned int>(Status::NotAvailable);
constexpr auto WrongState = static_cast<unsigned int>(Status::WrongState);

ImageBaseInfo Base(unsigned int width, unsigned int height, PixelFormatValue format,
                   unsigned int padding = 0) {
    ImageBaseInfo base;
    base.width = width;
    base.height = height;
    base.format = format;
    base.paddingX = padding;
    return base;
}

// Every byte differs from its neighbours; padding holds 0xEE.
std::shared_ptr<IImage> Pattern(const ImageBaseInfo& base) {
    const ImageInfo info = ImageInfoCreator::CreateImageInfo(base);
    std::shared_ptr<IImage> image = ImageCreator::Create(&info, nullptr, nullptr);
    const unsigned int used = info.Stride() - info.paddingX;
    for (unsigned int y = 0; y < info.height; ++y) {
        unsigned char* line = image->GetImageBuff(static_cast<int>(y));
        for (unsigned int x = 0; x < info.Stride(); ++x)
            line[x] = x < used ? static_cast<unsigned char>(7 * x + 13 * y) : 0xEE;
    }
    return image;
}

std::vector<unsigned char> BytesOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<unsigned char> PixelsOf(const IImage& image) {
    return {image.GetImageBuff(), image.GetImageBuff() + image.GetImageInfo()->ImageDataSize()};
}

void ExpectSamePixels(const IImage& a, const IImage& b) {
    const ImageInfo& info = *a.GetImageInfo();
    ASSERT_EQ(info.width, b.GetImageInfo()->width);
    ASSERT_EQ(info.height, b.GetImageInfo()->height);
    const unsigned int used = info.Stride() - info.paddingX;
    for (int y = 0; static_cast<unsigned int>(y) < info.height; ++y)
        ASSERT_EQ(std::memcmp(a.GetImageBuff(y), b.GetImageBuff(y), used), 0) << "line " << y;
}

class ImageFiles : public ::testing::Test {
protected:
    VX3::Test::TempDir dir_;
};

TEST_F(ImageFiles, LosslessPicturesKeepEveryPixel) {
    for (const char* name : {"a.png", "b.BMP", "c.tiff"})
        for (const unsigned int padding : {0U, 5U}) {
            const auto image = Pattern(Base(33, 7, BGR8, padding));
            ASSERT_EQ(SaveLoadImage::Save2File(image, dir_ / name, 1), Ok) << name;
            const auto loaded = SaveLoadImage::LoadFromFile(dir_ / name, nullptr, nullptr);
            ASSERT_NE(loaded, nullptr) << name;
            EXPECT_EQ(loaded->GetImageInfo()->pixelFormat, BGR8);
            ExpectSamePixels(*image, *loaded);
        }
}

TEST_F(ImageFiles, SixteenBitPicturesKeepTheirDepth) {
    for (const unsigned int padding : {0U, 1U, 2U}) { // an odd row step as well
        const auto image = Pattern(Base(9, 5, Mono12, padding));
        ASSERT_EQ(SaveLoadImage::Save2File(image, dir_ / "deep.png", 0), Ok);
        const cv::Mat mat = cv::imread(dir_ / "deep.png", cv::IMREAD_UNCHANGED);
        ASSERT_EQ(mat.type(), CV_16UC1);
        for (int y = 0; y < 5; ++y)
            ASSERT_EQ(std::memcmp(mat.ptr(y), image->GetImageBuff(y), 18), 0) << padding;
    }
}

TEST_F(ImageFiles, ColoursAreWrittenAsBgr) {
    const auto image = Pattern(Base(2, 1, RGB8));
    ASSERT_EQ(SaveLoadImage::Save2File(image, dir_ / "rgb.png", 0), Ok);
    const auto loaded = SaveLoadImage::LoadFromFile(dir_ / "rgb.png", nullptr, nullptr);
    EXPECT_EQ(PixelsOf(*loaded), PixelsOf(*image)); // red and blue exchanged: the bytes are taken as BGR8
    std::shared_ptr<IImage> bgr = SaveLoadImage::LoadFromFile(dir_ / "rgb.png", nullptr, nullptr);
    std::shared_ptr<IImage> rgb;
    ASSERT_EQ(SaveLoadImage::ConvertBGR2RGB(bgr, rgb), Ok);
    EXPECT_EQ(rgb->GetImageInfo()->pixelFormat, RGB8);
    EXPECT_EQ(rgb->GetImageBuff()[0], bgr->GetImageBuff()[2]);
    EXPECT_EQ(SaveLoadImage::ConvertBGR2RGB(rgb, bgr), NotFound);
    ASSERT_EQ(SaveLoadImage::ConvertBGR2RGB(bgr, bgr), Ok); // in place
    EXPECT_EQ(PixelsOf(*bgr), PixelsOf(*rgb));
    const auto bgra = Pattern(Base(3, 2, BGRa8, 1));
    std::shared_ptr<IImage> rgba = Pattern(Base(64, 64, Mono8, 3));
    ASSERT_EQ(SaveLoadImage::ConvertBGRA2RGBA(bgra, rgba), Ok);
    EXPECT_EQ(rgba->GetImageInfo()->width, 3U);
    EXPECT_EQ(rgba->GetImageBuff(1)[4], bgra->GetImageBuff(1)[6]);
    EXPECT_EQ(rgba->GetImageBuff(1)[7], bgra->GetImageBuff(1)[7]);
}

TEST_F(ImageFiles, RawNamesCarryTheDescription) {
    const auto image = Pattern(Base(6, 4, Mono12));
    ASSERT_EQ(SaveLoadImage::Save2File(image, dir_ / "frame.raw", 1), Ok);
    EXPECT_EQ(BytesOf(dir_ / "frame.6_4_MONO12.raw"), PixelsOf(*image));
    const auto loaded = SaveLoadImage::LoadFromFile(dir_ / "frame.6_4_MONO12.raw", nullptr, nullptr);
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(PixelsOf(*loaded), PixelsOf(*image));

    const auto bayer = Pattern(Base(4, 4, BayerRG8, 3));
    EXPECT_EQ(SaveLoadImage::Save2File(bayer, dir_ / "x.PNG", 0), NotAvailable);
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
    const auto image = Pattern(Base(4, 2, Mono8));
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
    const auto shorter = SaveLoadImage::LoadFromFile(write("s.10_10_MONO8.raw"), nullptr, nullptr);
    ASSERT_NE(shorter, nullptr);
    EXPECT_EQ(std::memcmp(shorter->GetImageBuff(), "abcdefghijklmnopqrstuvwxyz", 26), 0);
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
    const auto image = Pattern(Base(8, 8, Mono8));
    EXPECT_EQ(SaveLoadImage::Save2File(nullptr, dir_ / "a.png", 0), NotFound);
    for (const char* name : {"no/such/dir.raw", "no/such/dir.png", ""})
        EXPECT_EQ(SaveLoadImage::Save2File(image, dir_ / name, 0), WrongState) << name;
    EXPECT_EQ(SaveLoadImage::Save2File(image, "/dev/full", 0), WrongState);
    EXPECT_TRUE(std::filesystem::exists("/dev/full"));
}

TEST_F(ImageFiles, AFullDiskLeavesNoTruncatedFile) {
    const auto image = Pattern(Base(400, 400, Mono8));
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit tight = before;
    tight.rlim_cur = 1000;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &tight), 0);
    const unsigned int raw = SaveLoadImage::Save2File(image, dir_ / "a.raw", 0);
    const unsigned int bmp = SaveLoadImage::Save2File(image, dir_ / "a.bmp", 0);
    const unsigned int png = SaveLoadImage::Save2File(image, dir_ / "a.png", 0);
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, oldHandler);
    EXPECT_EQ(raw, WrongState);
    EXPECT_EQ(bmp, WrongState);
    EXPECT_EQ(png, WrongState);
    EXPECT_TRUE(std::filesystem::is_empty(dir_.Path()));
    EXPECT_EQ(SaveLoadImage::Save2File(image, dir_ / "a.raw", 0), Ok);
}

TEST(Matrices, KnowFourTypes) {
    EXPECT_TRUE(Image2Mat(nullptr).empty());
    EXPECT_TRUE(Image2Mat(Pattern(Base(4, 4, Mono12p)).get()).empty());
    const auto image = Pattern(Base(5, 4, BGRa8, 3));
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
    const auto copied = SaveLoadImage::LoadFromBuffer(bytes.data(), 6, &base, nullptr);
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
} // namespace VX3
