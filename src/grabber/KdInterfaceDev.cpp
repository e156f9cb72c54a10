#include "grabber/KdInterfaceDev.h"

#include "grabber/KdFrameDevice.h"
#include "vx3/core/IntfDevType.h"

namespace VX3 {

namespace {
constexpr unsigned int KdInterfaceType =
    TypeIds::InterfaceDevice + static_cast<unsigned int>(IntfDevType::Grabber);
}

KdInterfaceDev::KdInterfaceDev(const KdDeviceInfo& card, const char* name)
    : InterfaceDevAbs(KdInterfaceType, name),
      card_(card),
      frame_(
          std::make_shared<KdFrameDevice>(("frame0@" + card.friendlyName).c_str(), card.devicePath, this)) {}

KdInterfaceDev::~KdInterfaceDev() {
    Shutdown();
}

// The keys are what clients look for, as they are spelt.
std::list<std::pair<std::string, std::string>> KdInterfaceDev::GetInfo() const {
    return {{"Name", Name()},
            {"UserName", UserName()},
            {"FriendlyNam", card_.friendlyName},
            {"hardwareId", card_.hardwareId},
            {"devicePath", card_.devicePath}};
}

std::list<std::shared_ptr<IDevice>> KdInterfaceDev::EnumSubDevices(unsigned int) {
    return {frame_};
}

} // namespace VX3
