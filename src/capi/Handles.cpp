#include "capi/Handles.h"

namespace VX3::CApi {

namespace {

// Lets go of the managers and devices that a client left behind, so that their threads are joined while the
// library is whole.
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

Tables& GetTables() {
    static Tables& tables = *std::make_unique<Tables>().release();
    static const LetGoAtExit letGo(tables);
    return tables;
}

std::shared_ptr<IDevice> PinDevice(const Device* handle) {
    const auto record = GetTables().devices.Pin(handle);
    return record ? record->device : nullptr;
}

std::shared_ptr<IDevice> PinCamera(const SubDevice* handle) {
    const auto record = GetTables().subDevices.Pin(handle);
    return record ? record->camera.lock() : nullptr;
}

Image* NewImageHandle(std::shared_ptr<IImage> image) {
    auto record = std::make_shared<Image>();
    record->image = std::move(image);
    return GetTables().images.Add(std::move(record));
}

} // namespace VX3::CApi
