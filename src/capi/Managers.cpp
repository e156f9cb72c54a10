// Versions and the Manager_* family.
#include "capi/Handles.h"
#include "capi/Results.h"
#include "vx3/library/CameraSearch.h"
#include "vx3/library/System.h"

#include <chrono>
#include <thread>
#include <vector>

using namespace VX3;
using namespace VX3::CApi;

namespace {

constexpr unsigned int MonitorPeriodMs = 10000;
constexpr unsigned int MonitorOffsetMs = 9500;
// Long enough for the first look of an interface that answers at once.
constexpr std::chrono::milliseconds FirstLook{500};

// Runs `body` on the live manager behind a handle, against concurrent enumeration.
template <typename Body>
int WithManager(Manager* handle, Body&& body) {
    return Guarded([&] {
        const auto record = GetTables().managers.Pin(handle);
        if (!record)
            return BadHandle;
        MutexLock lock(record->mutex);
        return record->manager ? body(*record->manager) : BadHandle;
    });
}

Device* OpenDevice(const std::shared_ptr<IDevice>& device) {
    if (!device)
        return nullptr;
    auto record = std::make_shared<Device>();
    record->device = device;
    Device* handle = GetTables().devices.Add(std::move(record));
    // Refused when the device is monitored already, which is as good.
    (void)device->MonitorSubDevices(true, MonitorPeriodMs, MonitorOffsetMs, [](IDevice*, SubDeviceEvents) {});
    std::this_thread::sleep_for(FirstLook);
    return handle;
}

template <typename Select>
Device* OpenSelected(Manager* handle, Select&& select) {
    return Guarded<Device*>(nullptr, [&] {
        std::shared_ptr<IDevice> device;
        (void)WithManager(handle, [&](IManager& manager) {
            device = select(manager);
            return 0;
        });
        return OpenDevice(device);
    });
}

} // namespace

int SDKVersion(char* buf, size_t size) {
    return Guarded([&] { return CopyText(System::SDKVersion(), buf, size, TooSmall); });
}

int SDKBuildVersion(char* buf, size_t size) {
    return Guarded([&] { return CopyText(System::SDKBuildVersion(), buf, size, TooSmall); });
}

Manager* Manager_Create(unsigned int types) {
    return Guarded<Manager*>(nullptr, [&] {
        auto record = std::make_shared<Manager>();
        {
            MutexLock lock(record->mutex);
            record->manager = System::CreateManager(types);
        }
        return GetTables().managers.Add(std::move(record));
    });
}

void Manager_Destory(Manager* manager) {
    (void)Guarded([&] {
        const auto record = GetTables().managers.Remove(manager);
        if (!record)
            return BadHandle;
        std::unique_ptr<IManager> dropped;
        {
            MutexLock lock(record->mutex);
            dropped = std::move(record->manager);
        }
        dropped.reset();
        return 0;
    });
}

int Manager_DeviceTypeSupportedCount(Manager* manager) {
    return WithManager(manager, [](IManager& m) { return static_cast<int>(m.DeviceTypeSupported().size()); });
}

int Manager_DeviceTypeSupportedByIndex(Manager* manager, unsigned int index, unsigned int* type) {
    return WithManager(manager, [&](IManager& m) {
        const auto& types = m.DeviceTypeSupported();
        // An index past the end is answered like a bad handle.
        if (type == nullptr || index >= types.size())
            return BadHandle;
        *type = static_cast<unsigned int>(types[index]);
        return 0;
    });
}

int Manager_EnumDevices(Manager* manager) {
    return WithManager(manager, [](IManager& m) { return static_cast<int>(m.EnumDevices()); });
}

int Manager_GetDevices(Manager* manager, unsigned int type) {
    return WithManager(manager, [&](IManager& m) { return m.GetDevices(static_cast<IntfDevType>(type)); });
}

Device* Manager_GetDeviceByIndex(Manager* manager, unsigned int index, unsigned int type) {
    return OpenSelected(manager,
                        [&](IManager& m) { return m.GetDevice(index, static_cast<IntfDevType>(type)); });
}

Device* Manager_GetDeviceByName(Manager* manager, const char* name) {
    if (name == nullptr)
        return nullptr;
    return OpenSelected(manager, [&](IManager& m) { return m.GetDevice(std::string(name)); });
}

SubDevice* Manager_FindSubDevice(Manager* handle, const char* text, unsigned int timeout) {
    return Guarded<SubDevice*>(nullptr, [&]() -> SubDevice* {
        // Looked for without the manager's lock: that takes a while.
        std::vector<std::shared_ptr<IDevice>> interfaces;
        const int found = WithManager(handle, [&](IManager& manager) {
            for (int i = 0; i < manager.GetDevices(IntfDevType::All); ++i)
                interfaces.push_back(manager.GetDevice(static_cast<unsigned int>(i), IntfDevType::All));
            return 0;
        });
        if (found != 0)
            return nullptr;
        return NewCameraHandle(
            FindCamera(interfaces, text != nullptr ? text : "", std::chrono::milliseconds(timeout)));
    });
}

int Manager_DeviceName(Manager* manager, unsigned int index, unsigned int type, char* buf, size_t size) {
    return WithManager(manager, [&](IManager& m) {
        return CopyText(m.DeviceName(index, static_cast<IntfDevType>(type)), buf, size, TooSmall);
    });
}
