// One setting for every connected camera, and the setters that choose between one camera and all.
#include "capi/Features.h"
#include "capi/Results.h"

#include <atomic>
#include <functional>

using namespace VX3;
using namespace VX3::CApi;
using VX3::GenICam::CommandValue;
using VX3::GenICam::NodeValue;

namespace {

std::atomic<bool> enableParamSync{false};
std::atomic<bool> streamEnableParamSync{false};

using MakeTarget = std::function<Target(std::shared_ptr<IDevice>)>;

Target CameraTarget(std::shared_ptr<IDevice> camera) {
    return Target::Camera(std::move(camera));
}
Target FirstStreamTarget(std::shared_ptr<IDevice> camera) {
    return Target::Stream(std::move(camera), 0);
}

// Every connected camera of every live manager, in the managers' and their devices' order.
std::vector<std::shared_ptr<IDevice>> ConnectedCameras() {
    std::vector<std::shared_ptr<IDevice>> cameras;
    for (const auto& record : GetTables().managers.All()) {
        MutexLock lock(record->mutex);
        if (!record->manager)
            continue;
        const int devices = record->manager->GetDevices(IntfDevType::All);
        for (int i = 0; i < devices; ++i) {
            const auto device = record->manager->GetDevice(static_cast<unsigned int>(i), IntfDevType::All);
            if (!device)
                continue;
            for (const auto& weak : device->SubDevices()) {
                auto camera = weak.lock();
                if (camera && camera->IsConnected())
                    cameras.push_back(std::move(camera));
            }
        }
    }
    return cameras;
}

int SetAll(const MakeTarget& makeTarget, const char* name, const NodeValue& value,
           DeviceParamSetResult* results, unsigned int capacity, unsigned int* count) {
    return Guarded([&] {
        if (results == nullptr || count == nullptr || name == nullptr)
            return BadHandle;
        unsigned int n = 0;
        for (const auto& camera : ConnectedCameras()) {
            if (n >= capacity)
                break;
            DeviceParamSetResult& result = results[n++];
            result = {};
            const std::string cameraName = camera->Name();
            std::strncpy(result.name, cameraName.c_str(), sizeof result.name - 1);
            result.status = Set(makeTarget(camera), name, value);
        }
        *count = n;
        return 0;
    });
}

} // namespace

void SetParamSyncEnabled(bool enabled) {
    enableParamSync = enabled;
}
void Stream_SetParamSyncEnabled(bool enabled) {
    streamEnableParamSync = enabled;
}

// ---- All cameras ----

int SetNodeValueAllDev_Int(const char* name, int64_t value, DeviceParamSetResult* results,
                           unsigned int capacity, unsigned int* count) {
    return SetAll(CameraTarget, name, NodeValue(static_cast<long>(value)), results, capacity, count);
}
int SetNodeValueAllDev_Double(const char* name, double value, DeviceParamSetResult* results,
                              unsigned int capacity, unsigned int* count) {
    return SetAll(CameraTarget, name, NodeValue(value), results, capacity, count);
}
int SetNodeValueAllDev_Bool(const char* name, bool value, DeviceParamSetResult* results,
                            unsigned int capacity, unsigned int* count) {
    return SetAll(CameraTarget, name, NodeValue(value), results, capacity, count);
}
int SetNodeValueAllDev_Chars(const char* name, const char* value, DeviceParamSetResult* results,
                             unsigned int capacity, unsigned int* count) {
    if (value == nullptr)
        return BadHandle;
    return Guarded([&] { return SetAll(CameraTarget, name, NodeValue(value), results, capacity, count); });
}
int SetNodeValueAllDev_Command(const char* name, DeviceParamSetResult* results, unsigned int capacity,
                               unsigned int* count) {
    return SetAll(CameraTarget, name, NodeValue(CommandValue::Execute), results, capacity, count);
}
int SetNodeValueAllDev_Buffer(const char* name, const uint8_t* data, unsigned int length,
                              DeviceParamSetResult* results, unsigned int capacity, unsigned int* count) {
    if (data == nullptr)
        return BadHandle;
    return Guarded(
        [&] { return SetAll(CameraTarget, name, NodeValue(data, length), results, capacity, count); });
}

// ---- Stream 0 of all cameras ----

int Stream_SetNodeValueAllDev_Int(const char* name, int64_t value, DeviceParamSetResult* results,
                                  unsigned int capacity, unsigned int* count) {
    return SetAll(FirstStreamTarget, name, NodeValue(static_cast<long>(value)), results, capacity, count);
}
int Stream_SetNodeValueAllDev_Double(const char* name, double value, DeviceParamSetResult* results,
                                     unsigned int capacity, unsigned int* count) {
    return SetAll(FirstStreamTarget, name, NodeValue(value), results, capacity, count);
}
int Stream_SetNodeValueAllDev_Bool(const char* name, bool value, DeviceParamSetResult* results,
                                   unsigned int capacity, unsigned int* count) {
    return SetAll(FirstStreamTarget, name, NodeValue(value), results, capacity, count);
}
int Stream_SetNodeValueAllDev_Chars(const char* name, const char* value, DeviceParamSetResult* results,
                                    unsigned int capacity, unsigned int* count) {
    if (value == nullptr)
        return BadHandle;
    return Guarded(
        [&] { return SetAll(FirstStreamTarget, name, NodeValue(value), results, capacity, count); });
}
int Stream_SetNodeValueAllDev_Command(const char* name, DeviceParamSetResult* results, unsigned int capacity,
                                      unsigned int* count) {
    return SetAll(FirstStreamTarget, name, NodeValue(CommandValue::Execute), results, capacity, count);
}
int Stream_SetNodeValueAllDev_Buffer(const char* name, const uint8_t* data, unsigned int length,
                                     DeviceParamSetResult* results, unsigned int capacity,
                                     unsigned int* count) {
    if (data == nullptr)
        return BadHandle;
    return Guarded(
        [&] { return SetAll(FirstStreamTarget, name, NodeValue(data, length), results, capacity, count); });
}

// ---- One camera or all ----

int AutoSetNodeValue_Int(SubDevice* camera, const char* name, int64_t value, DeviceParamSetResult* results,
                         unsigned int capacity, unsigned int* count) {
    return enableParamSync ? SetNodeValueAllDev_Int(name, value, results, capacity, count)
                           : SetNodeValue_Int(camera, name, value);
}
int AutoSetNodeValue_Double(SubDevice* camera, const char* name, double value, DeviceParamSetResult* results,
                            unsigned int capacity, unsigned int* count) {
    return enableParamSync ? SetNodeValueAllDev_Double(name, value, results, capacity, count)
                           : SetNodeValue_Double(camera, name, value);
}
int AutoSetNodeValue_Bool(SubDevice* camera, const char* name, bool value, DeviceParamSetResult* results,
                          unsigned int capacity, unsigned int* count) {
    return enableParamSync ? SetNodeValueAllDev_Bool(name, value, results, capacity, count)
                           : SetNodeValue_Bool(camera, name, value);
}
int AutoSetNodeValue_Chars(SubDevice* camera, const char* name, const char* value,
                           DeviceParamSetResult* results, unsigned int capacity, unsigned int* count) {
    return enableParamSync ? SetNodeValueAllDev_Chars(name, value, results, capacity, count)
                           : SetNodeValue_Chars(camera, name, value);
}
int AutoSetNodeValue_Command(SubDevice* camera, const char* name, DeviceParamSetResult* results,
                             unsigned int capacity, unsigned int* count) {
    return enableParamSync ? SetNodeValueAllDev_Command(name, results, capacity, count)
                           : SetNodeValue_Command(camera, name);
}
int AutoSetNodeValue_Buffer(SubDevice* camera, const char* name, const uint8_t* data, unsigned int length,
                            DeviceParamSetResult* results, unsigned int capacity, unsigned int* count) {
    return enableParamSync ? SetNodeValueAllDev_Buffer(name, data, length, results, capacity, count)
                           : SetNodeValue_Buffer(camera, name, data, length);
}

// ---- Stream 0 of one camera or of all; the stream index is accepted and not used ----

int Stream_AutoSetNodeValue_Int(SubDevice* camera, unsigned int, const char* name, int64_t value,
                                DeviceParamSetResult* results, unsigned int capacity, unsigned int* count) {
    return streamEnableParamSync ? Stream_SetNodeValueAllDev_Int(name, value, results, capacity, count)
                                 : Stream_SetNodeValue_Int(camera, 0, name, value);
}
int Stream_AutoSetNodeValue_Double(SubDevice* camera, unsigned int, const char* name, double value,
                                   DeviceParamSetResult* results, unsigned int capacity,
                                   unsigned int* count) {
    return streamEnableParamSync ? Stream_SetNodeValueAllDev_Double(name, value, results, capacity, count)
                                 : Stream_SetNodeValue_Double(camera, 0, name, value);
}
int Stream_AutoSetNodeValue_Bool(SubDevice* camera, unsigned int, const char* name, bool value,
                                 DeviceParamSetResult* results, unsigned int capacity, unsigned int* count) {
    return streamEnableParamSync ? Stream_SetNodeValueAllDev_Bool(name, value, results, capacity, count)
                                 : Stream_SetNodeValue_Bool(camera, 0, name, value);
}
int Stream_AutoSetNodeValue_Chars(SubDevice* camera, unsigned int, const char* name, const char* value,
                                  DeviceParamSetResult* results, unsigned int capacity, unsigned int* count) {
    return streamEnableParamSync ? Stream_SetNodeValueAllDev_Chars(name, value, results, capacity, count)
                                 : Stream_SetNodeValue_Chars(camera, 0, name, value);
}
int Stream_AutoSetNodeValue_Command(SubDevice* camera, unsigned int, const char* name,
                                    DeviceParamSetResult* results, unsigned int capacity,
                                    unsigned int* count) {
    return streamEnableParamSync ? Stream_SetNodeValueAllDev_Command(name, results, capacity, count)
                                 : Stream_SetNodeValue_Command(camera, 0, name);
}
int Stream_AutoSetNodeValue_Buffer(SubDevice* camera, unsigned int, const char* name, const uint8_t* data,
                                   unsigned int length, DeviceParamSetResult* results, unsigned int capacity,
                                   unsigned int* count) {
    return streamEnableParamSync
               ? Stream_SetNodeValueAllDev_Buffer(name, data, length, results, capacity, count)
               : Stream_SetNodeValue_Buffer(camera, 0, name, data, length);
}
