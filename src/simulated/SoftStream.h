// A stream whose frames an image generator makes on a thread of the stream's own. Owned by its soft device.
#pragma once

#include "device/RemotableStream.h"
#include "device/StreamAbs.h"
#include "device/ThreadEx.h"
#include "simulated/IImageGenerator.h"

#include <memory>

namespace VX3 {

class SoftStream final : public RemotableStream<StreamAbs> {
public:
    SoftStream(const char* name, unsigned int index, std::unique_ptr<IImageGenerator>&& generator,
               IDevice* parent);
    ~SoftStream() override;

    // From the next frame on. NotFound for a null header.
    StatusCode SetImageInfo(const ImageInfo* info);
    ImageInfo GetImageInfo() const { return generator_->GetImgInfo(); }
    unsigned int SetFrameTime(unsigned int ms) { return generator_->SetFrameTime(ms); }
    unsigned int GetFrameTime() const { return generator_->GetFrameTime(); }

    using StreamAbs::GetStatistics;
    LiveStatistics* GetStatistics() override { return generator_->GetStatistics(); }

protected:
    unsigned int PayloadSizeP() const override { return generator_->GetImgInfo().ImageDataSize(); }
    bool IsStreamingP() const override { return worker_.IsRunning(); }
    StatusCode StartStreamP(std::shared_ptr<IImagePool> pool, unsigned int count) override;
    StatusCode StopStreamP() override;

private:
    void Produce(const std::atomic<bool>& running, const std::shared_ptr<IImagePool>& pool);

    std::unique_ptr<IImageGenerator> generator_;
    ThreadEx<std::shared_ptr<IImagePool>> worker_;
};

} // namespace VX3
