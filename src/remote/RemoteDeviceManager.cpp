#include "remote/RemoteDeviceManager.h"

#include "gev/net/NICEnumerator.h"
#include "remote/RemoteInterfaceDev.h"

#include <vector>

namespace VX3 {

RemoteDeviceManager::RemoteDeviceManager(const char* name) : ManagerAbs(IntfDevType::Remote, name) {}

StatusCode RemoteDeviceManager::EnumDevices() {
    std::vector<std::shared_ptr<IDevice>> devices;
    for (const NICInfo& nic : NICEnumerator::EnumerateNICs())
        devices.push_back(
            std::make_shared<RemoteInterfaceDev>(nic.name, nic.description, nic.id, nic.macHigh, nic.macLow));
    const auto made = static_cast<StatusCode>(devices.size());
    if (made != 0)
        (void)UpdateDevices(devices, IntfDevType::All);
    return made;
}

} // namespace VX3
