// One image channel of a camera.
//
//   closed --Open--> open --Start--> streaming --Stop--> open --Close--> closed
//
// Calls out of order are refused with a code. The image callback runs on the stream's delivery thread.
#pragma once

#include "vx3/core/IObject.h"
#include "vx3/core/Status.h"
#include "vx3/device/Statistics.h"
#include "vx3/device/Types.h"
#include "vx3/image/IImage.h"

#include <chrono>
#include <functional>
#include <memory>

namespace VX3 {

using ImageCallback = std::function<void(std::shared_ptr<IImage> image, IDevice* device,
                                         unsigned int streamIndex, unsigned int miscValue, void* userData)>;

class VX3_API IStream : public IObject {
public:
    // Starts the delivery thread and lets the transport allocate `bufferCount` buffers. An empty pool is the
    // stream's own. AlreadyOpen. After any other failure the stream counts as open and must be closed.
    [[nodiscard]] virtual StatusCode Open(unsigned int bufferCount, std::shared_ptr<IImagePool> pool) = 0;
    // AlreadyStreaming, NotOpen, or the transport's code. `count`: blocks in flight (0: the transport's own).
    [[nodiscard]] virtual StatusCode Start(ImageCallback callback, void* userData, unsigned int count,
                                           std::shared_ptr<IImagePool> pool) = 0;
    // No image is received afterwards; those that wait for delivery still reach the callback until Close.
    virtual StatusCode Stop() = 0;
    // NotOpen, StillStreaming. The callback does not run after it (called inside the callback: after that
    // returns).
    virtual StatusCode Close() = 0;
    // NotSupported unless the transport can stop local delivery while the camera keeps streaming.
    [[nodiscard]] virtual StatusCode Pause() = 0;
    [[nodiscard]] virtual StatusCode Restart() = 0;
    // The next image, or null after `timeoutMs` or when not streaming.
    [[nodiscard]] virtual std::shared_ptr<IImage> Snap(unsigned int timeoutMs, SnapMode mode) = 0;
    virtual Statistics GetStatistics() const = 0;
    virtual IDevice* Parent() = 0;
    virtual bool IsStreamingLocally() const = 0;
    virtual bool IsStreaming() const = 0;
    virtual unsigned int StreamIndex() const = 0;
    // Frames a second over the last second, at most 128 frames.
    virtual double Fps() const = 0;
    virtual std::chrono::steady_clock::time_point StartTimePoint() = 0;
    // WrongState while streaming.
    [[nodiscard]] virtual StatusCode SetHistoryFrames(unsigned int count, FrameType type) = 0;
    // Oldest first; null while streaming or past the end.
    virtual std::shared_ptr<IImage> GetHistoryFrame(unsigned int index) = 0;
    // Bytes of one frame; 0 when unknown.
    virtual unsigned int PayloadSize() const = 0;
    // The transport's live counters.
    virtual LiveStatistics* GetStatistics() = 0;

protected:
    virtual unsigned int PayloadSizeP() const = 0;
    virtual bool IsStreamingP() const = 0;
    [[nodiscard]] virtual StatusCode OpenP(std::shared_ptr<IImagePool> pool, unsigned int bufferCount) = 0;
    [[nodiscard]] virtual StatusCode StartStreamP(std::shared_ptr<IImagePool> pool, unsigned int count) = 0;
    virtual StatusCode StopStreamP() = 0;
    virtual StatusCode CloseP() = 0;
};

} // namespace VX3
