// Where the frames of a soft stream come from. Owned by its stream; one thread generates, any thread sets.
#pragma once

#include "vx3/device/Statistics.h"
#include "vx3/image/IImage.h"
#include "vx3/image/IImagePool.h"

#include <memory>

namespace VX3 {

class IImageGenerator {
public:
    // The next frame, after waiting the frame time; empty when the pool gave no image. A null `info` is the
    // generator's own header.
    virtual std::unique_ptr<IImage> Generate(std::shared_ptr<IImagePool> pool, const ImageInfo* info) = 0;
    // Back to frame 0, and Generate waits again after an Interrupt.
    virtual void Reset() = 0;
    virtual LiveStatistics* GetStatistics() = 0;
    // The header of the frames from the next one on; swapped as a whole.
    virtual void SetImgInfo(const ImageInfo* info) = 0;
    virtual ImageInfo GetImgInfo() const = 0;
    // Milliseconds.
    virtual unsigned int GetFrameTime() const = 0;
    virtual unsigned int SetFrameTime(unsigned int ms) = 0;
    // Ends the waiting of Generate now, and of every later call until Reset.
    virtual void Interrupt() = 0;
    virtual ~IImageGenerator() = default;
};

} // namespace VX3
