#include "simulated/SoftStream.h"

#include "vx3/core/Logger.h"

#include <exception>
#include <utility>

namespace VX3 {

SoftStream::SoftStream(const char* name, unsigned int index, std::unique_ptr<IImageGenerator>&& generator,
                       IDevice* parent)
    : RemotableStream(name, parent, index),
      generator_(std::move(generator)),
      worker_([this](const std::atomic<bool>& running, const std::shared_ptr<IImagePool>& pool) {
          Produce(running, pool);
      }) {}

SoftStream::~SoftStream() {
    Shutdown();
}

StatusCode SoftStream::SetImageInfo(const ImageInfo* info) {
    if (info == nullptr)
        return Status::NotFound;
    generator_->SetImgInfo(info);
    return Status::Ok;
}

StatusCode SoftStream::StartStreamP(std::shared_ptr<IImagePool> pool, unsigned int) {
    generator_->Reset();
    return worker_.Start(std::move(pool)) ? Status::Ok : Status::AlreadyStreaming;
}

StatusCode SoftStream::StopStreamP() {
    worker_.RequestStop();
    generator_->Interrupt();
    worker_.Stop();
    return Status::Ok;
}

void SoftStream::Produce(const std::atomic<bool>& running, const std::shared_ptr<IImagePool>& pool) {
    try {
        while (running)
            if (auto image = generator_->Generate(pool, nullptr))
                InsertImage(std::move(image), 0);
    } catch (const std::exception& error) {
        VxLoggerLog(LogLevel::Error, "SDK", "%s: %s", Name().c_str(), error.what());
    }
}

} // namespace VX3
