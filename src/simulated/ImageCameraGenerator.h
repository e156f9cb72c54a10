// The frames of a camera made of images, at their rate. Owned by its stream.
#pragma once

#include "simulated/IImageGenerator.h"
#include "vx3/core/Mutex.h"

#include <chrono>
#include <memory>
#include <vector>

namespace VX3 {

class ImageCameraGenerator final : public IImageGenerator {
public:
    // `header`: of every frame. Empty `frames`: the pattern.
    ImageCameraGenerator(const ImageInfo& header, std::vector<std::shared_ptr<IImage>> frames,
                         double framesPerSecond);

    void SetRate(double framesPerSecond) VX3_EXCLUDES(mutex_);

    std::unique_ptr<IImage> Generate(std::shared_ptr<IImagePool> pool, const ImageInfo* info) override;
    void Reset() override VX3_EXCLUDES(mutex_);
    LiveStatistics* GetStatistics() override { return &statistics_; }
    void SetImgInfo(const ImageInfo*) override {} // its frames are what they are
    ImageInfo GetImgInfo() const override { return header_; }
    unsigned int GetFrameTime() const override VX3_EXCLUDES(mutex_);
    unsigned int SetFrameTime(unsigned int ms) override;
    void Interrupt() override VX3_EXCLUDES(mutex_);

private:
    using Clock = std::chrono::steady_clock;

    void WaitForTurn() VX3_EXCLUDES(mutex_);

    const ImageInfo header_;
    const std::vector<std::shared_ptr<IImage>> frames_;
    LiveStatistics statistics_;
    mutable Mutex mutex_;
    CondVar changed_;
    Clock::duration period_ VX3_GUARDED_BY(mutex_);
    Clock::time_point due_ VX3_GUARDED_BY(mutex_);
    bool interrupted_ VX3_GUARDED_BY(mutex_) = false;
};

} // namespace VX3
