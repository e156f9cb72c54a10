// The records behind the C interface's opaque handles, and the table of those that are alive.
//
// A handle is a number in a pointer's clothes, given out once and never again: a stale one is known as stale
// for ever, and none is the address of anything. The tables own the records; every C function pins the record
// it works on for the length of the call, so that a handle destroyed meanwhile on another thread stays valid
// until the call (or the image callback) that uses it has ended.
#pragma once

#include "vx3/core/Mutex.h"
#include "vx3/device/IDevice.h"
#include "vx3/device/IManager.h"
#include "vx3/image/IImage.h"
#include "vx3/vx3.h"

#include <cstdint>
#include <map>
#include <memory>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

struct Manager {
    VX3::Mutex mutex; // enumeration against look-ups
    std::unique_ptr<VX3::IManager> manager VX3_GUARDED_BY(mutex);
};

struct Device {
    std::shared_ptr<VX3::IDevice> device;
};

struct SubDevice {
    std::weak_ptr<VX3::IDevice> camera;
    const VX3::IDevice* key = nullptr; // the camera's entry in the table of cameras
    SubDevice* handle = nullptr;       // its own
    VX3::Mutex mutex;
    StreamImageCallback callback VX3_GUARDED_BY(mutex) = nullptr;
};

struct Image {
    std::shared_ptr<VX3::IImage> image;
};

namespace VX3::CApi {

// The next number that is no handle yet, of all kinds together, so that no handle is taken for one of another
// kind. Not an address on either machine that this runs on: whoever looks behind it faults.
std::uintptr_t NextHandle();

// The live records of one kind.
template <typename Record>
class HandleTable {
public:
    Record* Add(std::shared_ptr<Record> record) {
        auto* handle = reinterpret_cast<Record*>(NextHandle());
        if constexpr (std::is_same_v<Record, SubDevice>)
            record->handle = handle;
        MutexLock lock(mutex_);
        records_.emplace(handle, std::move(record));
        return handle;
    }
    // The record of a live handle; null for null, destroyed and foreign ones.
    std::shared_ptr<Record> Pin(const Record* handle) const {
        MutexLock lock(mutex_);
        const auto found = records_.find(handle);
        return found == records_.end() ? nullptr : found->second;
    }
    // Takes the record out of the table; the caller drops it outside the lock.
    std::shared_ptr<Record> Remove(const Record* handle) {
        MutexLock lock(mutex_);
        const auto found = records_.find(handle);
        if (found == records_.end())
            return nullptr;
        auto record = std::move(found->second);
        records_.erase(found);
        return record;
    }
    // Empties the table; what is dropped with the result may still call into it.
    std::unordered_map<const Record*, std::shared_ptr<Record>> TakeAll() {
        MutexLock lock(mutex_);
        return std::exchange(records_, {});
    }
    std::vector<std::shared_ptr<Record>> All() const {
        MutexLock lock(mutex_);
        std::vector<std::shared_ptr<Record>> all;
        for (const auto& [handle, record] : records_)
            all.push_back(record);
        return all;
    }

private:
    mutable Mutex mutex_;
    std::unordered_map<const Record*, std::shared_ptr<Record>> records_ VX3_GUARDED_BY(mutex_);
};

// Which handle answers for a camera: the one made last.
class CameraMap {
public:
    void Set(const IDevice* device, SubDevice* handle) {
        MutexLock lock(mutex_);
        handles_[device] = handle;
    }
    SubDevice* Find(const IDevice* device) const {
        MutexLock lock(mutex_);
        const auto found = handles_.find(device);
        return found == handles_.end() ? nullptr : found->second;
    }
    // Leaves the entry alone when a later handle has taken it over.
    void Erase(const IDevice* device, const SubDevice* handle) {
        MutexLock lock(mutex_);
        const auto found = handles_.find(device);
        if (found != handles_.end() && found->second == handle)
            handles_.erase(found);
    }

private:
    mutable Mutex mutex_;
    std::map<const IDevice*, SubDevice*> handles_ VX3_GUARDED_BY(mutex_);
};

// Built on first use. What a client leaves behind is let go at exit, before the library's defaults; the
// tables themselves stay, since image callbacks may still run until then.
struct Tables {
    HandleTable<Manager> managers;
    HandleTable<Device> devices;
    HandleTable<SubDevice> subDevices;
    HandleTable<Image> images;
    CameraMap subDeviceMap;
};
Tables& GetTables();

// The live interface device or camera behind a handle; null otherwise.
std::shared_ptr<IDevice> PinDevice(const Device* handle);
std::shared_ptr<IDevice> PinCamera(const SubDevice* handle);

// The image behind a live handle; null otherwise.
std::shared_ptr<IImage> PinImage(const Image* handle);

// New handles for the client. Null without a camera.
Image* NewImageHandle(std::shared_ptr<IImage> image);
SubDevice* NewCameraHandle(const std::shared_ptr<IDevice>& camera);

} // namespace VX3::CApi
