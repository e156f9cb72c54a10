// Image processing against what a user would pick instead, one thread each, in pairs within one run.
// Usage: bench_processing [--smoke] [--threads N] [FILTER]
//   --smoke    small images and few pairs: does it run, not how fast
//   --threads  threads of this library (the rivals keep one)
//   FILTER     only lines whose name contains it
#include "vx3/image/IFormatConvertor.h"
#include "vx3/image/IImage.h"
#include "vx3/processing/ColorConversion.h"
#include "vx3/processing/ProcessingThreads.h"

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <time.h>

using namespace VX3;

namespace {

struct Options {
    int width = 4096;
    int height = 3000;
    int pairs = 15;
    int repeats = 3; // of each side in a pair
    std::string filter;
};
Options g_options;
bool g_missed = false;

// One thread is measured by the time it ran, so that what else the machine does falls out; several by the
// clock.
double Now() {
    timespec now{};
    clock_gettime(ProcessingThreads() == 1 ? CLOCK_THREAD_CPUTIME_ID : CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) * 1e-6;
}

double Milliseconds(const std::function<void()>& work) {
    const double start = Now();
    for (int i = 0; i < g_options.repeats; ++i)
        work();
    return (Now() - start) / g_options.repeats;
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// Prints how many times as long ours takes as the rival's: 0.5 is twice as fast. `aim` is the most it should
// be.
void Compare(const std::string& name, const std::string& rival, double aim, const std::function<void()>& ours,
             const std::function<void()>& theirs) {
    if (name.find(g_options.filter) == std::string::npos)
        return;
    ours(); // fills the pools and the caches alike
    theirs();
    std::vector<double> ratios;
    std::vector<double> oursTimes;
    std::vector<double> theirTimes;
    for (int i = 0; i < g_options.pairs; ++i) {
        oursTimes.push_back(Milliseconds(ours));
        theirTimes.push_back(Milliseconds(theirs));
        ratios.push_back(oursTimes.back() / theirTimes.back());
    }
    const double ratio = Median(ratios);
    const auto [least, most] = std::minmax_element(ratios.begin(), ratios.end());
    g_missed = g_missed || ratio > aim;
    std::printf("%-28s %7.2f ms  %-34s %7.2f ms  ratio %5.2f [%4.2f..%4.2f]  aim %4.2f %s\n", name.c_str(),
                Median(oursTimes), rival.c_str(), Median(theirTimes), ratio, *least, *most, aim,
                ratio <= aim ? "met" : "MISSED");
    std::fflush(stdout);
}

std::unique_ptr<IImage> RandomImage(PixelFormatValue format) {
    ImageBaseInfo base;
    base.width = static_cast<std::uint32_t>(g_options.width);
    base.height = static_cast<std::uint32_t>(g_options.height);
    base.format = format;
    const ImageInfo info = ImageInfoCreator::CreateImageInfo(base);
    auto image = ImageCreator::Create(&info, nullptr, nullptr);
    std::mt19937 random(static_cast<unsigned int>(format));
    const PixelFormat pixel(format);
    const bool wide = !pixel.IsPacked() && pixel.BitDepth() > 8;
    std::uint8_t* data = image->GetImageBuff();
    for (std::size_t i = 0; i + 1 < info.ImageDataSize(); i += 2) {
        // A scene rather than noise: a slope with noise on it, within the nominal range.
        const unsigned int depth = wide ? pixel.BitDepth() : 8;
        const auto slope = static_cast<unsigned int>((i * 7 / 64) & ((1U << depth) - 1));
        const unsigned int value = (slope + (random() & 0x1FU)) & ((1U << depth) - 1);
        if (wide) {
            const auto sample = static_cast<std::uint16_t>(value);
            std::memcpy(data + i, &sample, sizeof sample);
        } else {
            data[i] = static_cast<std::uint8_t>(value);
            data[i + 1] = static_cast<std::uint8_t>(random() >> 8);
        }
    }
    return image;
}

cv::Mat Wrap(IImage& image, int type) {
    const ImageInfo* info = image.GetImageInfo();
    return cv::Mat(static_cast<int>(info->height), static_cast<int>(info->width), type, image.GetImageBuff(),
                   info->Stride());
}

void Require(bool result, const char* what) {
    if (!result) {
        std::fprintf(stderr, "no result: %s\n", what);
        std::exit(1);
    }
}

// memcpy reads and writes each byte: copying half of all bytes moves as many as the operation does.
void CompareWithMemcpy(const std::string& name, IImage& image, bool reduce) {
    std::size_t moved = 0;
    const auto operation = [&] {
        const auto result = reduce ? image.Unpack2Image8(8, nullptr) : image.Unpack(nullptr);
        Require(result != nullptr, name.c_str());
        moved = image.GetImageInfo()->ImageDataSize() + std::size_t{result->GetImageInfo()->ImageDataSize()};
    };
    operation();
    std::vector<std::uint8_t> from(moved, 1);
    std::vector<std::uint8_t> to(moved, 2);
    Compare(name, "memcpy, same traffic", 1.5, operation,
            [&] { std::memcpy(to.data(), from.data(), moved / 2); });
}

void Packed() {
    struct Case {
        const char* name;
        PixelFormatValue format;
    };
    for (const Case& c : {Case{"Mono10p", Mono10p}, Case{"Mono12p", Mono12p},
                          Case{"Mono10Packed", Mono10Packed}, Case{"Mono12Packed", Mono12Packed}}) {
        const auto image = RandomImage(c.format);
        CompareWithMemcpy(std::string(c.name) + " unpack", *image, false);
        CompareWithMemcpy(std::string(c.name) + " to 8 bit", *image, true);
    }
}

void Reduction() {
    for (const unsigned int depth : {10U, 12U, 16U}) {
        const auto image = RandomImage(depth == 10 ? Mono10 : depth == 12 ? Mono12 : Mono16);
        const cv::Mat source = Wrap(*image, CV_16UC1);
        cv::Mat target;
        const double scale = 1.0 / (1U << (depth - 8));
        Compare(
            "Mono" + std::to_string(depth) + " to 8 bit", "convertTo with scale", 1.0,
            [&] { Require(image->Unpack2Image8(8, nullptr) != nullptr, "reduce"); },
            [&] { source.convertTo(target, CV_8U, scale); });
    }
    const auto image = RandomImage(RGB12);
    const cv::Mat source = Wrap(*image, CV_16UC3);
    cv::Mat target;
    Compare(
        "RGB12 to 8 bit", "convertTo with scale", 1.0,
        [&] { Require(image->Unpack2Image8(8, nullptr) != nullptr, "reduce"); },
        [&] { source.convertTo(target, CV_8U, 1.0 / 16); });
}

// How near a demosaiced scene comes to the one that it was made of, in dB: speed alone would hide that ours
// repeats neighbouring samples where the rival interpolates.
void DemosaicQuality(const char* name, double detail) {
    const int width = g_options.width;
    const int height = g_options.height;
    cv::Mat scene(height, width, CV_8UC3); // red, green, blue
    const auto wave = [detail](double x, double period) {
        return static_cast<std::uint8_t>(127.5 + 100.0 * std::sin(6.283185307 * detail * x / period));
    };
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            scene.at<cv::Vec3b>(y, x) = {wave(x + y, 60), wave(x - y, 45), wave(2 * x + y, 90)};
    const auto mosaic = RandomImage(BayerRG8);
    cv::Mat samples = Wrap(*mosaic, CV_8UC1);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            samples.at<std::uint8_t>(y, x) = scene.at<cv::Vec3b>(y, x)[y % 2 + x % 2];
    const auto ours = mosaic->Unpack2Image8(8, nullptr);
    Require(ours != nullptr, "demosaic");
    const bool blueFirst = PixelFormat(ours->GetImageInfo()->pixelFormat) == BGR8;
    cv::Mat ourColours = Wrap(*ours, CV_8UC3);
    if (blueFirst)
        cv::cvtColor(ourColours, ourColours, cv::COLOR_BGR2RGB);
    cv::Mat theirColours;
    cv::cvtColor(samples, theirColours, cv::COLOR_BayerBG2RGB); // OpenCV names the second line's pair
    const cv::Rect inner(2, 2, width - 4, height - 4);
    std::printf("%-28s %7.1f dB  %-34s %7.1f dB\n", name, cv::PSNR(ourColours(inner), scene(inner)),
                "cvtColor bilinear", cv::PSNR(theirColours(inner), scene(inner)));
}

void Demosaicing() {
    const auto image8 = RandomImage(BayerRG8);
    const cv::Mat source8 = Wrap(*image8, CV_8UC1);
    cv::Mat target;
    Compare(
        "BayerRG8 demosaic", "cvtColor, which interpolates", 1 / 1.5,
        [&] { Require(image8->Unpack2Image8(8, nullptr) != nullptr, "demosaic"); },
        [&] { cv::cvtColor(source8, target, cv::COLOR_BayerRG2RGB); });
    for (const unsigned int depth : {10U, 12U}) {
        const auto image = RandomImage(depth == 10 ? BayerRG10 : BayerRG12);
        const cv::Mat source = Wrap(*image, CV_16UC1);
        cv::Mat narrow;
        Compare(
            "BayerRG" + std::to_string(depth) + " demosaic", "convertTo, cvtColor interpolating", 1 / 1.5,
            [&] { Require(image->Unpack2Image8(8, nullptr) != nullptr, "demosaic"); },
            [&] {
                source.convertTo(narrow, CV_8U, 1.0 / (1U << (depth - 8)));
                cv::cvtColor(narrow, target, cv::COLOR_BayerRG2RGB);
            });
    }
}

void SwapsAndSplits() {
    const auto rgb = RandomImage(RGB8);
    const auto rgba = RandomImage(RGBa8);
    const auto bgra16 = RandomImage(BGRa16);
    const auto rgb12 = RandomImage(RGB12);
    const auto bayer = RandomImage(BayerRG8);
    const cv::Mat rgbMat = Wrap(*rgb, CV_8UC3);
    const cv::Mat rgbaMat = Wrap(*rgba, CV_8UC4);
    cv::Mat target;
    cv::Mat narrow;
    std::vector<cv::Mat> planes;
    Compare(
        "RGB8 swap", "cvtColor", 1.0, [&] { Require(rgb->Unpack2Image8(8, nullptr) != nullptr, "swap"); },
        [&] { cv::cvtColor(rgbMat, target, cv::COLOR_RGB2BGR); });
    Compare(
        "RGBa8 swap", "cvtColor", 1.0, [&] { Require(rgba->Unpack2Image8(8, nullptr) != nullptr, "swap"); },
        [&] { cv::cvtColor(rgbaMat, target, cv::COLOR_RGBA2BGRA); });
    cv::Mat mixed(rgbaMat.size(), CV_8UC4);
    Compare(
        "RGBa8 swap", "mixChannels", 1.0,
        [&] { Require(rgba->Unpack2Image8(8, nullptr) != nullptr, "swap"); },
        [&] {
            const int order[] = {0, 2, 1, 1, 2, 0, 3, 3};
            cv::mixChannels(&rgbaMat, 1, &mixed, 1, order, 4);
        });
    const cv::Mat bgra16Mat = Wrap(*bgra16, CV_16UC4);
    Compare(
        "BGRa16 to RGBa8", "convertTo, cvtColor", 1.0,
        [&] { Require(bgra16->Unpack2Image8(8, nullptr) != nullptr, "swap"); },
        [&] {
            bgra16Mat.convertTo(narrow, CV_8U, 1.0 / 256);
            cv::cvtColor(narrow, target, cv::COLOR_BGRA2RGBA);
        });
    Compare(
        "RGB8 split", "split", 1.0, [&] { Require(rgb->Split(0, nullptr).size() == 3, "split"); },
        [&] { cv::split(rgbMat, planes); });
    Compare(
        "RGBa8 split", "split", 1.0, [&] { Require(rgba->Split(0, nullptr).size() == 4, "split"); },
        [&] { cv::split(rgbaMat, planes); });
    const cv::Mat rgb12Mat = Wrap(*rgb12, CV_16UC3);
    Compare(
        "RGB12 split", "split", 1.0, [&] { Require(rgb12->Split(0, nullptr).size() == 3, "split"); },
        [&] { cv::split(rgb12Mat, planes); });
    // A Bayer image seen as pairs of lines of 2-channel pixels, so that mixChannels can part it.
    const int half = g_options.width / 2;
    const int rows = g_options.height / 2;
    const std::size_t stride = bayer->GetImageInfo()->Stride();
    const cv::Mat top(rows, half, CV_8UC2, bayer->GetImageBuff(), 2 * stride);
    const cv::Mat bottom(rows, half, CV_8UC2, bayer->GetImageBuff() + stride, 2 * stride);
    cv::Mat parts[4];
    for (cv::Mat& part : parts)
        part.create(rows, half, CV_8UC1);
    Compare(
        "BayerRG8 split", "mixChannels", 1.0, [&] { Require(bayer->Split(0, nullptr).size() == 4, "split"); },
        [&] {
            const cv::Mat sources[] = {top, bottom};
            const int order[] = {0, 0, 1, 1, 2, 2, 3, 3};
            cv::mixChannels(sources, 2, parts, 4, order, 4);
        });
}

void Recoloring() {
    struct Case {
        const char* name;
        PixelFormatValue format;
        PixelFormatValue target;
        int type;
        int code;
    };
    for (const Case& c : {Case{"RGB8 to Mono8", RGB8, Mono8, CV_8UC3, cv::COLOR_RGB2GRAY},
                          Case{"BGRa8 to Mono8", BGRa8, Mono8, CV_8UC4, cv::COLOR_BGRA2GRAY},
                          Case{"Mono8 to RGB8", Mono8, RGB8, CV_8UC1, cv::COLOR_GRAY2RGB},
                          Case{"RGBa8 to RGB8", RGBa8, RGB8, CV_8UC4, cv::COLOR_RGBA2RGB},
                          Case{"RGBa8 to BGR8", RGBa8, BGR8, CV_8UC4, cv::COLOR_RGBA2BGR}}) {
        const auto image = RandomImage(c.format);
        const cv::Mat source = Wrap(*image, c.type);
        cv::Mat target;
        Compare(
            c.name, "cvtColor", 1.0,
            [&] { Require(ConvertTo(*image, c.target, nullptr) != nullptr, c.name); },
            [&] { cv::cvtColor(source, target, c.code); });
    }
}

void Histograms() {
    struct Case {
        const char* name;
        PixelFormatValue format;
        int type;
        float top;
    };
    for (const Case& c :
         {Case{"Mono8 histogram", Mono8, CV_8UC1, 256}, Case{"Mono12 histogram", Mono12, CV_16UC1, 4096},
          Case{"Mono16 histogram", Mono16, CV_16UC1, 65536}}) {
        const auto image = RandomImage(c.format);
        const cv::Mat source = Wrap(*image, c.type);
        cv::Mat counts;
        Compare(
            c.name, "calcHist", 1.0,
            [&] { Require(image->CreateHistogram(nullptr, 0).size() == 1, "histogram"); },
            [&] {
                const int channels[] = {0};
                const int bins[] = {static_cast<int>(c.top)};
                const float range[] = {0, c.top};
                const float* ranges[] = {range};
                cv::calcHist(&source, 1, channels, cv::Mat(), counts, 1, bins, ranges);
            });
    }
    const auto image = RandomImage(RGB8);
    const cv::Mat source = Wrap(*image, CV_8UC3);
    cv::Mat counts;
    Compare(
        "RGB8 histogram", "calcHist of 3 channels", 1.0,
        [&] { Require(image->CreateHistogram(nullptr, 0).size() == 3, "histogram"); },
        [&] {
            for (int channel = 0; channel < 3; ++channel) {
                const int bins[] = {256};
                const float range[] = {0, 256};
                const float* ranges[] = {range};
                cv::calcHist(&source, 1, &channel, cv::Mat(), counts, 1, bins, ranges);
            }
        });
    const auto mono = RandomImage(Mono8);
    const cv::Mat monoMat = Wrap(*mono, CV_8UC1);
    cv::Mat means;
    Compare(
        "Mono8 mean profile", "reduce", 1.0,
        [&] { Require(mono->CreateProfile(0, ProfileType::Horizontal, 1).size() == 1, "profile"); },
        [&] { cv::reduce(monoMat, means, 0, cv::REDUCE_AVG, CV_64F); });
}

void Mapping() {
    const auto mono8 = RandomImage(Mono8);
    const cv::Mat source = Wrap(*mono8, CV_8UC1);
    cv::Mat target;
    Compare(
        "Mono8 colour map", "applyColorMap", 1.0,
        [&] { Require(mono8->Map2RGB8(10, 0, 255, nullptr) != nullptr, "map"); },
        [&] { cv::applyColorMap(source, target, cv::COLORMAP_VIRIDIS); });
    const auto mono16 = RandomImage(Mono16);
    std::vector<std::uint32_t> table(16384, 0xFF102030U);
    std::vector<std::uint32_t> mapped(static_cast<std::size_t>(g_options.width) *
                                      static_cast<std::size_t>(g_options.height));
    const std::uint32_t low = 1000;
    const std::uint32_t high = 61000;
    Compare(
        "Mono16 colour map", "plain scalar look-up", 1.0,
        [&] { Require(mono16->Map2RGB8(10, low, high - low, nullptr) != nullptr, "map"); },
        [&] {
            const std::uint8_t* const samples = mono16->GetImageBuff(); // a virtual call, once
            for (std::size_t i = 0; i < mapped.size(); ++i) {
                std::uint16_t sample;
                std::memcpy(&sample, samples + 2 * i, sizeof sample);
                if (sample < low)
                    mapped[i] = table[0];
                else if (sample <= high)
                    mapped[i] = table[(sample - low) >> 2];
                else
                    mapped[i] = table[16383];
            }
        });
}

} // namespace

int main(int argc, char** argv) {
    unsigned int threads = 1;
    for (int i = 1; i < argc; ++i)
        if (std::strcmp(argv[i], "--smoke") == 0)
            g_options = {512, 384, 5, 4, g_options.filter};
        else if (std::strcmp(argv[i], "--threads") == 0 && i + 1 < argc)
            threads = static_cast<unsigned int>(std::atoi(argv[++i]));
        else
            g_options.filter = argv[i];
    SetProcessingThreads(threads);
    cv::setNumThreads(1);
    std::printf("%d x %d pixels, %u thread(s), %d pairs; ratio is our time over the rival's\n",
                g_options.width, g_options.height, ProcessingThreads(), g_options.pairs);
    Packed();
    Reduction();
    Demosaicing();
    if (std::string("BayerRG8 demosaic").find(g_options.filter) != std::string::npos) {
        DemosaicQuality("PSNR, smooth scene", 1.0); // waves of some 20 to 45 pixels
        DemosaicQuality("PSNR, detailed scene", 5.0);
    }
    SwapsAndSplits();
    Recoloring();
    Histograms();
    Mapping();
    std::printf("%s\n", g_missed ? "some aims were missed" : "every aim was met");
    return 0;
}
