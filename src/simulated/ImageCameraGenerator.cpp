#include "simulated/ImageCameraGenerator.h"

#include "vx3/core/Utilities.h"
#include "vx3/simulated/Camera.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace VX3 {

namespace {

constexpr double LongestPeriod = 3600; // s
constexpr std::chrono::milliseconds EmptyPoolWait{2};

std::chrono::steady_clock::duration PeriodOf(double framesPerSecond) {
    const double seconds = framesPerSecond > 0 ? std::min(1 / framesPerSecond, LongestPeriod) : 0;
    return std::chrono::duration_cast<std::chrono::steady_clock::duration>(
        std::chrono::duration<double>(seconds));
}

} // namespace

ImageCameraGenerator::ImageCameraGenerator(const ImageInfo& header,
                                           std::vector<std::shared_ptr<IImage>> frames,
                                           double framesPerSecond)
    : header_(header), frames_(std::move(frames)), period_(PeriodOf(framesPerSecond)) {}

void ImageCameraGenerator::SetRate(double framesPerSecond) {
    MutexLock lock(mutex_);
    period_ = PeriodOf(framesPerSecond);
    changed_.NotifyAll();
}

std::unique_ptr<IImage> ImageCameraGenerator::Generate(std::shared_ptr<IImagePool> pool, const ImageInfo*) {
    WaitForTurn();
    const std::uint64_t now = GetTimeStampLinux();
    const std::uint64_t block = statistics_.blocks + 1;
    ImageInfo header = header_;
    header.timestampHigh = static_cast<std::uint32_t>(now >> 32);
    header.timestampLow = static_cast<std::uint32_t>(now);
    header.blockId = block;
    if (!pool)
        pool = ImagePoolFactory::DefaultImagePool();
    const std::size_t size = header.ImageDataSize();
    const std::uint8_t* const pixels =
        frames_.empty() ? Simulated::Camera::ExpectedData(block, size)
                        : std::as_const(*frames_[(block - 1) % frames_.size()]).GetImageBuff();
    std::unique_ptr<IImage> image = pool->Create(&header, pixels, static_cast<unsigned int>(size));
    if (image)
        LiveStatistics::Add(statistics_.blocks);
    else
        std::this_thread::sleep_for(EmptyPoolWait);
    return image;
}

// A frame that was late does not make those after it late.
void ImageCameraGenerator::WaitForTurn() {
    MutexLock lock(mutex_);
    const auto now = Clock::now();
    due_ = std::max(due_ + period_, now - period_);
    while (!interrupted_ && Clock::now() < std::min(due_, now + period_))
        (void)changed_.WaitUntil(mutex_, std::min(due_, now + period_));
}

void ImageCameraGenerator::Reset() {
    statistics_.Reset();
    MutexLock lock(mutex_);
    interrupted_ = false;
    due_ = Clock::now();
}

void ImageCameraGenerator::Interrupt() {
    MutexLock lock(mutex_);
    interrupted_ = true;
    changed_.NotifyAll();
}

unsigned int ImageCameraGenerator::GetFrameTime() const {
    MutexLock lock(mutex_);
    return static_cast<unsigned int>(std::chrono::duration_cast<std::chrono::milliseconds>(period_).count());
}

unsigned int ImageCameraGenerator::SetFrameTime(unsigned int ms) {
    SetRate(ms == 0 ? 0 : 1000.0 / ms);
    return 0;
}

} // namespace VX3
