// The Device_* family and the SubDevice_* functions that do not stream.
#include "capi/Handles.h"
#include "capi/Results.h"
#include "vx3/core/Utilities.h"
#include "vx3/device/IEnumerationRounds.h"

#include <chrono>
#include <climits>
#include <thread>

using namespace VX3;
using namespace VX3::CApi;

namespace {

constexpr std::chrono::milliseconds RoundPoll{5};

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

int Device_FinishedRounds(Device* device) {
    return Guarded([&] {
        return WithDevice(PinDevice(device), [](IDevice& d) {
            const auto* rounds = dynamic_cast<const IEnumerationRounds*>(&d);
            return rounds != nullptr ? static_cast<int>(rounds->FinishedRounds() & INT_MAX)
                                     : static_cast<int>(Status::NotSupported);
        });
    });
}

int Device_UpdateSubDevices(Device* device) {
    return Guarded(
        [&] { return WithDevice(PinDevice(device), [](IDevice& d) { return d.UpdateSubDevices(true); }); });
}

int Device_WaitForRound(Device* device, unsigned int rounds, unsigned int timeout) {
    return Guarded([&] {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout);
        const auto pinned = PinDevice(device);
        if (!pinned)
            return BadHandle;
        const auto* counter = dynamic_cast<const IEnumerationRounds*>(pinned.get());
        if (counter == nullptr)
            return static_cast<int>(Status::NotSupported);
        while (counter->FinishedRounds() < rounds) {
            if (std::chrono::steady_clock::now() >= deadline)
                return SetLastFailure(
                    Status::TimeOut,
                    StringFormat("%s has finished %u looks for its cameras, %u were waited for",
                                 pinned->Name().c_str(), counter->FinishedRounds(), rounds));
            std::this_thread::sleep_for(RoundPoll);
        }
        return static_cast<int>(pinned->SubDevices().size());
    });
}

SubDevice* Device_GetSubDeviceByIndex(Device* device, unsigned int index) {
    return Guarded<SubDevice*>(nullptr, [&]() -> SubDevice* {
        const auto interfaceDevice = PinDevice(device);
        if (!interfaceDevice)
            return nullptr;
        const auto cameras = interfaceDevice->SubDevices();
        if (index >= cameras.size()) {
            SetLastFailure(Status::NotFound,
                           StringFormat("%s: there is no camera %u, %zu were found so far",
                                        interfaceDevice->Name().c_str(), index, cameras.size()));
            return nullptr;
        }
        return NewCameraHandle(cameras[index].lock());
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

int SubDevice_ConnectMonitor(SubDevice* camera) {
    return Guarded([&] {
        return WithDevice(PinCamera(camera), [](IDevice& c) { return c.Connect(DeviceAccess::Monitor); });
    });
}

int SubDevice_DisConnect(SubDevice* camera) {
    return Guarded([&] { return WithDevice(PinCamera(camera), [](IDevice& c) { return c.DisConnect(); }); });
}
