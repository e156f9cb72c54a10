// Opening, starting, stopping, snapping and the statistics of a camera's streams.
#include "capi/Handles.h"
#include "capi/Results.h"
#include "device/StopForOne.h"
#include "vx3/core/Utilities.h"

using namespace VX3;
using namespace VX3::CApi;

namespace {

template <typename Result, typename Body>
Result WithStream(SubDevice* handle, unsigned int index, Result badHandle, Result noStream, Body&& body) {
    return Guarded<Result>(badHandle, [&] {
        const auto camera = PinCamera(handle);
        if (!camera)
            return badHandle;
        const auto stream = camera->ShareStream(index);
        return stream ? body(*stream) : noStream;
    });
}

template <typename Body>
int WithStream(SubDevice* handle, unsigned int index, Body&& body) {
    return WithStream<int>(handle, index, BadHandle, NoStream, body);
}

StreamImageCallback CallbackOf(SubDevice& record) {
    MutexLock lock(record.mutex);
    return record.callback;
}

// Hands one frame to the client: to the handle that was made last for the camera or, when that one never
// started a stream, to the one that did. The record stays pinned for the whole call.
void Dispatch(const std::weak_ptr<SubDevice>& starter, std::shared_ptr<IImage> image, const IDevice* camera,
              unsigned int streamIndex, unsigned int miscValue, void* userData) {
    Tables& tables = GetTables();
    auto record = tables.subDevices.Pin(tables.subDeviceMap.Find(camera));
    StreamImageCallback callback = record ? CallbackOf(*record) : nullptr;
    if (callback == nullptr) {
        record = starter.lock();
        if (!record || !tables.subDevices.Pin(record->handle))
            return; // destroyed while the stream delivers: the frame goes back to its pool
        callback = CallbackOf(*record);
    }
    if (callback != nullptr)
        callback(NewImageHandle(std::move(image)), record->handle, streamIndex, miscValue, userData);
}

} // namespace

int SubDevice_OpenStreamByIndex(SubDevice* camera, unsigned int streamIndex, unsigned int bufferCount) {
    return WithStream(camera, streamIndex, [&](IStream& s) { return s.Open(bufferCount, nullptr); });
}

int SubDevice_StartStreamByIndex(SubDevice* camera, unsigned int streamIndex, StreamImageCallback callback,
                                 void* userData, unsigned int count) {
    return WithStream(camera, streamIndex, [&](IStream& s) {
        const auto record = GetTables().subDevices.Pin(camera);
        if (!record)
            return BadHandle;
        {
            MutexLock lock(record->mutex);
            record->callback = callback;
        }
        const std::weak_ptr<SubDevice> starter = record;
        return s.Start(
            [starter](std::shared_ptr<IImage> image, IDevice* device, unsigned int index, unsigned int misc,
                      void* user) { Dispatch(starter, std::move(image), device, index, misc, user); },
            userData, count, nullptr);
    });
}

int SubDevice_StopStreamByIndex(SubDevice* camera, unsigned int streamIndex) {
    return WithStream(camera, streamIndex, [](IStream& s) { return StopForLocalUser(s); });
}

int SubDevice_CloseStreamByIndex(SubDevice* camera, unsigned int streamIndex) {
    return WithStream(camera, streamIndex, [](IStream& s) { return s.Close(); });
}

int Remote_StartLocalStream(SubDevice* camera, unsigned int streamIndex) {
    return WithStream(camera, streamIndex, [](IStream& s) { return s.Restart(); });
}

int Remote_StopLocalStream(SubDevice* camera, unsigned int streamIndex) {
    return WithStream(camera, streamIndex, [](IStream& s) { return s.Pause(); });
}

Image* SubDevice_SnapA(SubDevice* camera, unsigned int streamIndex, unsigned int timeout) {
    return WithStream<Image*>(camera, streamIndex, nullptr, nullptr, [&](IStream& s) -> Image* {
        auto image = s.Snap(timeout, SnapMode::Default);
        if (image)
            return NewImageHandle(std::move(image));
        if (s.IsStreaming())
            SetLastFailure(Status::TimeOut, StringFormat("no frame came within %u ms", timeout));
        else
            SetLastFailure(Status::WrongState, "the stream does not run");
        return nullptr;
    });
}

StreamStatistics SubDevice_GetStreamStatisticsByIndex(SubDevice* camera, unsigned int streamIndex) {
    return WithStream<StreamStatistics>(camera, streamIndex, {}, {}, [](IStream& s) {
        const Statistics now = static_cast<const IStream&>(s).GetStatistics();
        return StreamStatistics{now.blocks,         now.lostBlocks,       now.resentPackets,
                                now.missingPackets, now.incompleteBlocks, now.reserved};
    });
}
