#include "capi/Handles.h"

#include "vx3/core/LastFailure.h"

#include <atomic>

namespace VX3::CApi {

namespace {

// Lets go of the managers and devices that a client left behind, so that their threads are joined while the
// library is whole. The client is called no more by then (core/ClientCall.h).
class LetGoAtExit {
public:
    explicit LetGoAtExit(Tables& tables) : tables_(tables) {}
    LetGoAtExit(const LetGoAtExit&) = delete;
    LetGoAtExit& operator=(const LetGoAtExit&) = delete;
    ~LetGoAtExit() {
        tables_.managers.TakeAll();
        tables_.devices.TakeAll();
        tables_.subDevices.TakeAll();
        tables_.images.TakeAll();
    }

private:
    Tables& tables_;
};

} // namespace

// 46 bits: ten thousand handles a second last two hundred years. The lowest four are zero, as of an address.
std::uintptr_t NextHandle() {
    static_assert(sizeof(std::uintptr_t) == 8, "handles need 64 bits");
    constexpr std::uintptr_t NoAddress = std::uintptr_t{0x5AA5} << 48;
    static std::atomic<std::uintptr_t> next{1};
    return NoAddress | next.fetch_add(1, std::memory_order_relaxed) << 4;
}

Tables& GetTables() {
    static Tables& tables = *std::make_unique<Tables>().release();
    static const LetGoAtExit letGo(tables);
    return tables;
}

namespace {

// Why a handle leads nowhere.
std::nullptr_t NotAlive(const void* handle, const char* kind) {
    SetLastFailure(
        -1, std::string(handle == nullptr ? "the handle of a " : "not alive (any more): the handle of a ") +
                kind + (handle == nullptr ? " is null" : ""));
    return nullptr;
}

} // namespace

std::shared_ptr<IDevice> PinDevice(const Device* handle) {
    const auto record = GetTables().devices.Pin(handle);
    return record ? record->device : NotAlive(handle, "Device");
}

std::shared_ptr<IDevice> PinCamera(const SubDevice* handle) {
    const auto record = GetTables().subDevices.Pin(handle);
    if (!record)
        return NotAlive(handle, "SubDevice");
    auto camera = record->camera.lock();
    if (!camera)
        SetLastFailure(-1, "the camera is gone: it was lost, or its manager was destroyed");
    return camera;
}

std::shared_ptr<IImage> PinImage(const Image* handle) {
    const auto record = GetTables().images.Pin(handle);
    return record ? record->image : NotAlive(handle, "Image");
}

Image* NewImageHandle(std::shared_ptr<IImage> image) {
    auto record = std::make_shared<Image>();
    record->image = std::move(image);
    return GetTables().images.Add(std::move(record));
}

SubDevice* NewCameraHandle(const std::shared_ptr<IDevice>& camera) {
    if (!camera)
        return nullptr;
    auto record = std::make_shared<SubDevice>();
    record->camera = camera;
    record->key = camera.get();
    SubDevice* handle = GetTables().subDevices.Add(std::move(record));
    GetTables().subDeviceMap.Set(camera.get(), handle);
    return handle;
}

} // namespace VX3::CApi
