#include "device/StopForOne.h"

#include "device/IRemotableStream.h"
#include "vx3/core/Logger.h"

namespace VX3 {

namespace {

void GoOn(IStream& stream, bool forOther) {
    if (!forOther || stream.IsStreaming())
        return;
    const StatusCode status = stream.Restart();
    if (Failed(status))
        VxLoggerLog(LogLevel::Error, "SDK", "%s does not go on for its other user: %s", stream.Name().c_str(),
                    StatusText(status).c_str());
}

} // namespace

StatusCode StopForLocalUser(IStream& stream) {
    const StatusCode status = stream.Stop();
    const auto* shared = dynamic_cast<IRemotableStream*>(&stream);
    GoOn(stream, shared != nullptr && shared->IsStreamingRemotely());
    return status;
}

StatusCode StopForRemoteUser(IStream& stream) {
    auto* shared = dynamic_cast<IRemotableStream*>(&stream);
    if (shared == nullptr)
        return Status::NotSupported;
    const StatusCode status = shared->StopRemotely();
    GoOn(stream, stream.IsStreamingLocally());
    return status;
}

} // namespace VX3
