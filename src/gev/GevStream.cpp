#include "gev/GevStream.h"

#include "gev/receive/GvspReceiver.h"
#include "vx3/core/Logger.h"

#include <utility>

namespace VX3 {

namespace {

// A receiver is heard from within milliseconds; one whose camera does not answer register reads is not held
// up longer than this before the stream starts.
constexpr std::chrono::milliseconds ReadyWait{1000};

std::unique_ptr<IGvspReceiver> MakeReceiver(const char* name, bool useFilter, std::uint32_t gvcpPort) {
    if (useFilter)
        VxLoggerLog(LogLevel::Info, "SDK",
                    "%s: reception through the filter driver is not built in, using the socket receiver",
                    name == nullptr ? "" : name);
    GvspReceiver::Options options;
    options.gvcpPort = gvcpPort;
    return std::make_unique<GvspReceiver>(options);
}

} // namespace

GevStream::GevStream(const char* name, IDevice* device, unsigned int index, bool useFilter,
                     IGevStreamChannels* channels, std::uint32_t gvcpPort)
    : StreamAbs(name, device, index),
      channels_(channels),
      receiver_(MakeReceiver(name, useFilter, gvcpPort)) {}

GevStream::~GevStream() {
    Shutdown();
}

StatusCode GevStream::StartStreamP(std::shared_ptr<IImagePool> pool, unsigned int count) {
    IGevStreamChannels* const channels = Channels();
    if (channels == nullptr)
        return Status::WrongState;
    GevStreamParam param;
    const StatusCode status = channels->StreamParam(StreamIndex(), param);
    if (Failed(status))
        return status;
    param_ = param;
    const StatusCode port = receiver_->StartListen(
        param_, std::move(pool),
        [this](std::unique_ptr<IImage>&& image, unsigned int id) { StreamCallBack(std::move(image), id); },
        count);
    if (Failed(port))
        return port;
    // The camera must not send before somebody listens, and its path may have to be opened first.
    (void)receiver_->WaitUntilReady(ReadyWait);
    return channels->SetStreamDest(StreamIndex(), param_.host.ip, static_cast<std::uint32_t>(port));
}

StatusCode GevStream::StopStreamP() {
    IGevStreamChannels* const channels = Channels();
    if (channels != nullptr && Failed(channels->SetStreamDest(StreamIndex(), 0, 0)))
        VxLoggerLog(LogLevel::Warning, "SDK", "%s: the camera was not told to stop sending", Name().c_str());
    // The thread is joined even when the device is gone: it must not outlive the stream.
    const StatusCode status = receiver_->StopListen();
    return channels == nullptr ? Status::WrongState : status;
}

void GevStream::StreamCallBack(std::unique_ptr<IImage>&& image, unsigned int id) {
    InsertImage(std::move(image), id);
}

} // namespace VX3
