// Frames of the beam pattern at a settable size and pace. Owned by a soft stream.
#pragma once

#include "simulated/DataGeneratorBeam.h"
#include "simulated/IImageGenerator.h"
#include "vx3/core/Mutex.h"

#include <memory>

namespace VX3 {

class ImageGeneratorSimple : public IImageGenerator {
public:
    // 400 x 400 Mono8 every 200 ms.
    ImageGeneratorSimple();

    std::unique_ptr<IImage> Generate(std::shared_ptr<IImagePool> pool, const ImageInfo* info) override
        VX3_EXCLUDES(mutex_);
    void Reset() override VX3_EXCLUDES(mutex_);
    LiveStatistics* GetStatistics() override { return &statistics_; }
    void SetImgInfo(const ImageInfo* info) override VX3_EXCLUDES(mutex_);
    ImageInfo GetImgInfo() const override VX3_EXCLUDES(mutex_);
    unsigned int GetFrameTime() const override VX3_EXCLUDES(mutex_);
    unsigned int SetFrameTime(unsigned int ms) override VX3_EXCLUDES(mutex_);
    void Interrupt() override VX3_EXCLUDES(mutex_);

private:
    void Fill(IImage& image, const ImageInfo& header);
    void WaitFrameTime(unsigned int atLeastMs) VX3_EXCLUDES(mutex_);

    DataGeneratorBeam beam_;
    LiveStatistics statistics_;
    mutable Mutex mutex_;
    CondVar changed_;
    ImageInfo header_ VX3_GUARDED_BY(mutex_);
    unsigned int frameTimeMs_ VX3_GUARDED_BY(mutex_) = 200;
    bool interrupted_ VX3_GUARDED_BY(mutex_) = false;
};

} // namespace VX3
