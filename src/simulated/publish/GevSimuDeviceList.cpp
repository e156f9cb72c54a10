#include "simulated/publish/GevSimuDeviceList.h"

#include "core/DefaultConfig.h"
#include "vx3/core/LastFailure.h"
#include "vx3/core/Logger.h"

#include <algorithm>
#include <utility>

namespace VX3 {

GevSimuDeviceList& GevSimuDeviceList::Instance() {
    static GevSimuDeviceList list;
    return list;
}

// What its cameras still use while the process ends is made before it, and so outlives it.
GevSimuDeviceList::GevSimuDeviceList() {
    (void)DefaultSystemConfig();
    VxLoggerLog(LogLevel::Debug, "SDK", "publishing cameras");
}

GevSimuDeviceList::~GevSimuDeviceList() {
    for (auto& slot : slots_)
        if (slot != nullptr)
            slot->StopMonitor();
}

std::shared_ptr<GevSimuDevice> GevSimuDeviceList::Start(const std::shared_ptr<IDevice>& device,
                                                        const PublishOptions& options, unsigned slot,
                                                        StatusCode& status) {
    const auto own = static_cast<std::uint16_t>(FirstPort + 2 * slot);
    const std::uint16_t port = options.port != 0 ? options.port : own;
    auto published = CreateGevSimuDevice(port, static_cast<std::uint16_t>(port + 1), device, options, slot);
    status = published->StartMonitor();
    return Failed(status) ? nullptr : published;
}

StatusCode GevSimuDeviceList::Publish(const std::shared_ptr<IDevice>& device, const PublishOptions& options,
                                      unsigned& slot) {
    slot = NoSlot;
    if (!LocalCamera::CanBePublished(device.get()))
        return SetLastFailure(Status::NotSupported, device == nullptr
                                                        ? "there is no camera to publish"
                                                        : device->Name() + " cannot be shared by two users");
    MutexLock lock(mutex_);
    const std::string name = device->UniqueName();
    if (std::any_of(slots_.begin(), slots_.end(),
                    [&](const auto& taken) { return taken != nullptr && taken->UniqueName() == name; }))
        return SetLastFailure(Status::WrongState, name + " is published already");
    StatusCode status = SetLastFailure(Status::NoBuffer, "four cameras are published already, which is all");
    for (unsigned i = 0; i < Slots; ++i) {
        if (slots_[i] != nullptr)
            continue;
        auto published = Start(device, options, i, status);
        if (published != nullptr) {
            slots_[i] = std::move(published);
            slot = i;
            return Status::Ok;
        }
        if (options.port != 0)
            break; // another program of this host may have some of the others, but this one was asked for
    }
    return status;
}

unsigned GevSimuDeviceList::FindEmptyAndinsertSimuDevice(const std::shared_ptr<IDevice>& device) {
    unsigned slot = NoSlot;
    const StatusCode status = Publish(device, {}, slot);
    if (Failed(status))
        VxLoggerLog(LogLevel::Warning, "SDK", "%s is not published: %s",
                    device != nullptr ? device->Name().c_str() : "nothing", LastFailure().text.c_str());
    return slot;
}

std::shared_ptr<GevSimuDevice> GevSimuDeviceList::Find(const std::string& name) const {
    MutexLock lock(mutex_);
    for (const auto& slot : slots_)
        if (slot != nullptr && slot->UniqueName() == name)
            return slot;
    return nullptr;
}

bool GevSimuDeviceList::FindAndDestroySimuDevice(const std::string& name) {
    std::shared_ptr<GevSimuDevice> found;
    {
        MutexLock lock(mutex_);
        for (auto& slot : slots_)
            if (slot != nullptr && slot->UniqueName() == name)
                found = std::move(slot);
    }
    if (found != nullptr)
        found->StopMonitor();
    return found != nullptr;
}

} // namespace VX3
