#include "gev/GevManager.h"

#include "gev/GevInterfaceDev.h"
#include "gev/net/NICEnumerator.h"

#include <vector>

namespace VX3 {

GevManager::GevManager(const char* name) : ManagerAbs(IntfDevType::GigEVision, name) {}

StatusCode GevManager::EnumDevices() {
    std::vector<std::shared_ptr<IDevice>> devices;
    for (const NICInfo& nic : NICEnumerator::EnumerateNICs())
        devices.push_back(
            std::make_shared<GevInterfaceDev>(nic.name, nic.description, nic.id, nic.macHigh, nic.macLow));
    const auto made = static_cast<StatusCode>(devices.size());
    if (made != 0)
        (void)UpdateDevices(devices, IntfDevType::All);
    return made;
}

} // namespace VX3
