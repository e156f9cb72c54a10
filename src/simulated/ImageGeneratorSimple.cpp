#include "simulated/ImageGeneratorSimple.h"

#include "vx3/core/Status.h"
#include "vx3/core/Utilities.h"

#include <algorithm>
#include <chrono>

namespace VX3 {

namespace {

constexpr unsigned int BeamSize = 400;
constexpr unsigned int BeamSigma = 20;
// How long an empty pool is left alone, even at frame time 0.
constexpr unsigned int EmptyPoolWaitMs = 2;

} // namespace

ImageGeneratorSimple::ImageGeneratorSimple() : beam_(BeamSize, true, BeamSigma, nullptr) {
    header_.width = BeamSize;
    header_.height = BeamSize;
    header_.pixelFormat = Mono8;
    statistics_.reserved = 1;
}

std::unique_ptr<IImage> ImageGeneratorSimple::Generate(std::shared_ptr<IImagePool> pool,
                                                       const ImageInfo* info) {
    LiveStatistics::Add(statistics_.blocks);
    const std::uint64_t now = GetTimeStampLinux();
    ImageInfo header = info != nullptr ? *info : GetImgInfo();
    header.timestampHigh = static_cast<std::uint32_t>(now >> 32);
    header.timestampLow = static_cast<std::uint32_t>(now);
    header.blockId = statistics_.blocks;
    if (!pool)
        pool = ImagePoolFactory::DefaultImagePool();
    std::unique_ptr<IImage> image = header.SizesFit() ? pool->Create(&header, nullptr, 0) : nullptr;
    if (image)
        Fill(*image, header);
    WaitFrameTime(image ? 0 : EmptyPoolWaitMs);
    return image;
}

// The pattern has a byte a pixel; formats with less get as many lines as fit.
void ImageGeneratorSimple::Fill(IImage& image, const ImageInfo& header) {
    unsigned char* pixels = image.GetImageBuff();
    if (pixels == nullptr || header.width == 0)
        return;
    const unsigned int lines = std::min(header.height, header.ImageDataSize() / header.width);
    beam_.GenerateData(pixels, header.width, lines, PixelFormat(header.pixelFormat));
}

// A new frame time counts from the frame that is being waited for.
void ImageGeneratorSimple::WaitFrameTime(unsigned int atLeastMs) {
    const auto start = std::chrono::steady_clock::now();
    MutexLock lock(mutex_);
    while (!interrupted_) {
        const auto deadline = start + std::chrono::milliseconds(std::max(frameTimeMs_, atLeastMs));
        if (deadline == start || std::chrono::steady_clock::now() >= deadline)
            return;
        changed_.WaitUntil(mutex_, deadline);
    }
}

void ImageGeneratorSimple::Reset() {
    statistics_.Reset();
    statistics_.reserved = 1;
    beam_.Reset();
    MutexLock lock(mutex_);
    interrupted_ = false;
}

void ImageGeneratorSimple::Interrupt() {
    MutexLock lock(mutex_);
    interrupted_ = true;
    changed_.NotifyAll();
}

void ImageGeneratorSimple::SetImgInfo(const ImageInfo* info) {
    if (info == nullptr)
        return;
    MutexLock lock(mutex_);
    header_ = *info;
}

ImageInfo ImageGeneratorSimple::GetImgInfo() const {
    MutexLock lock(mutex_);
    return header_;
}

unsigned int ImageGeneratorSimple::GetFrameTime() const {
    MutexLock lock(mutex_);
    return frameTimeMs_;
}

unsigned int ImageGeneratorSimple::SetFrameTime(unsigned int ms) {
    MutexLock lock(mutex_);
    frameTimeMs_ = ms;
    changed_.NotifyAll();
    return Status::Ok;
}

} // namespace VX3
