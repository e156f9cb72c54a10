#include "cameralink/GenCpManager.h"

#include "cameralink/GenCpInterfaceDev.h"

namespace VX3 {

GenCpManager::GenCpManager(const char* name) : ManagerAbs(IntfDevType::GenCP, name) {}

StatusCode GenCpManager::EnumDevices() {
    std::vector<std::shared_ptr<IDevice>> devices{std::make_shared<GenCpInterfaceDev>("GenCP Interface")};
    return UpdateDevices(devices, IntfDevType::All);
}

} // namespace VX3
