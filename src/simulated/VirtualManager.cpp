#include "simulated/VirtualManager.h"

#include "simulated/VirtualInterfaceDev.h"

namespace VX3 {

VirtualManager::VirtualManager(const char* name) : ManagerAbs(IntfDevType::Virtual, name) {}

StatusCode VirtualManager::EnumDevices() {
    std::vector<std::shared_ptr<IDevice>> devices{
        std::make_shared<VirtualInterfaceDev>("Virtual Interface 1")};
    return UpdateDevices(devices, IntfDevType::All);
}

} // namespace VX3
