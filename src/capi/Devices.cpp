// The Device_* family and the SubDevice_* functions that do not stream.
#include "capi/Handles.h"
#include "capi/Results.h"

using namespace VX3;
using namespace VX3::CApi;

namespace {

template <typename Body>
int WithDevice(const std::shared_ptr<IDevice>& device, Body&& body) {
    return device ? body(*device) : BadHandle;
}

} // namespace

int Device_GetDeviceName(Device* device, char* buf, size_t size) {
    return Guarded([&] {
        return WithDevice(PinDevice(device),
                          [&](IDevice& d) { return CopyText(d.Name(), buf, size, TooSmall); });
    });
}

void Device_Destory(Device* device) {
    (void)Guarded([&] { return GetTables().devices.Remove(device) ? 0 : BadHandle; });
}

int Device_Connect(Device* device) {
    return Guarded([&] { return WithDevice(PinDevice(device), [](IDevice& d) { return d.Connect(); }); });
}

int Device_DisConnect(Device* device) {
    return Guarded([&] { return WithDevice(PinDevice(device), [](IDevice& d) { return d.DisConnect(); }); });
}

int Device_GetSubDeviceCount(Device* device) {
    return Guarded([&] {
        return WithDevice(PinDevice(device),
                          [](IDevice& d) { return static_cast<int>(d.SubDevices().size()); });
    });
}

SubDevice* Device_GetSubDeviceByIndex(Device* device, unsigned int index) {
    return Guarded<SubDevice*>(nullptr, [&]() -> SubDevice* {
        const auto interfaceDevice = PinDevice(device);
        if (!interfaceDevice)
            return nullptr;
        const auto cameras = interfaceDevice->SubDevices();
        if (index >= cameras.size())
            return nullptr;
        const auto camera = cameras[index].lock();
        auto record = std::make_shared<SubDevice>();
        record->camera = camera;
        record->key = camera.get();
        SubDevice* handle = GetTables().subDevices.Add(std::move(record));
        if (camera)
            GetTables().subDeviceMap.Set(camera.get(), handle);
        return handle;
    });
}

int SubDevice_GetSubDeviceName(SubDevice* camera, char* buf, size_t size) {
    return Guarded([&] {
        return WithDevice(PinCamera(camera),
                          [&](IDevice& c) { return CopyText(c.Name(), buf, size, TooSmall); });
    });
}

void SubDevice_Destory(SubDevice* camera) {
    (void)Guarded([&] {
        const auto record = GetTables().subDevices.Remove(camera);
        if (!record)
            return BadHandle;
        GetTables().subDeviceMap.Erase(record->key, camera);
        return 0;
    });
}

int SubDevice_Connect(SubDevice* camera) {
    return Guarded([&] { return WithDevice(PinCamera(camera), [](IDevice& c) { return c.Connect(); }); });
}

int SubDevice_DisConnect(SubDevice* camera) {
    return Guarded([&] { return WithDevice(PinCamera(camera), [](IDevice& c) { return c.DisConnect(); }); });
}
