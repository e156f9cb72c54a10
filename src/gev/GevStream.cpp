#include "gev/GevStream.h"

#include "gev/GevDevice.h"
#include "gev/receive/GvspReceiver.h"
#include "vx3/core/Logger.h"

#include <utility>

namespace VX3 {

namespace {

// A receiver is heard from within milliseconds; one whose camera does not answer register reads is not held
// up longer than this before the stream starts.
constexpr std::chrono::milliseconds readyWait{1000};

std::unique_ptr<IGvspReceiver> MakeReceiver(const char* name, const GevDevice* device, bool useFilter) {
    if (useFilter)
        VxLoggerLog(LogLevel::Info, "SDK",
                    "%s: reception through the filter driver is not built in, using the socket receiver",
                    name == nullptr ? "" : name);
    return std::make_unique<GvspReceiver>(DatagramSource::MethodFromEnvironment(),
                                          device == nullptr ? Gvcp::Port : device->GvcpPort());
}

} // namespace

GevStream::GevStream(const char* name, GevDevice* device, unsigned int index, bool useFilter)
    : StreamAbs(name, device, index),
      useFilter_(useFilter),
      receiver_(MakeReceiver(name, device, useFilter)) {}

GevStream::~GevStream() {
    Shutdown();
}

StatusCode GevStream::StartStreamP(std::shared_ptr<IImagePool> pool, unsigned int count) {
    auto* device = dynamic_cast<GevDevice*>(Parent());
    if (device == nullptr)
        return Status::WrongState;
    GevStreamParam param;
    const StatusCode status = device->StreamParam(StreamIndex(), param);
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
    (void)receiver_->WaitUntilReady(readyWait);
    return device->SetStreamDest(StreamIndex(), param_.host.ip, static_cast<std::uint32_t>(port));
}

StatusCode GevStream::StopStreamP() {
    auto* device = dynamic_cast<GevDevice*>(Parent());
    if (device != nullptr)
        (void)device->SetStreamDest(StreamIndex(), 0, 0);
    // The thread is joined even when the device is gone: it must not outlive the stream.
    const StatusCode status = receiver_->StopListen();
    return device == nullptr ? Status::WrongState : status;
}

void GevStream::StreamCallBack(std::unique_ptr<IImage>&& image, unsigned int id) {
    InsertImage(std::move(image), id);
}

} // namespace VX3
