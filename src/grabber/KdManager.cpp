#include "grabber/KdManager.h"

#include "core/DefaultConfig.h"
#include "grabber/KdInterfaceDev.h"

namespace VX3 {

namespace {

std::string ConfiguredRoot() {
    const std::string root = ConfigString("GrabberDeviceRoot");
    return root.empty() ? "/dev" : root;
}

} // namespace

KdManager::KdManager(const char* name) : KdManager(name, ConfiguredRoot()) {}

KdManager::KdManager(const char* name, const std::string& root)
    : ManagerAbs(IntfDevType::Grabber, name), root_(root) {}

StatusCode KdManager::EnumDevices() {
    std::vector<std::shared_ptr<IDevice>> devices;
    for (const KdDeviceInfo& card : KdDeviceSys::GetDevicePaths(root_))
        devices.push_back(std::make_shared<KdInterfaceDev>(card, card.friendlyName.c_str()));
    return UpdateDevices(devices, IntfDevType::All);
}

} // namespace VX3
