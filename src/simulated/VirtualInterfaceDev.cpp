#include "simulated/VirtualInterfaceDev.h"

#include "simulated/VirtualDevice.h"
#include "vx3/core/IntfDevType.h"

namespace VX3 {

namespace {
constexpr unsigned int VirtualInterfaceType =
    TypeIds::InterfaceDevice + static_cast<unsigned int>(IntfDevType::Virtual);
constexpr const char* DescriptionPath = "./VirtualCamera01.xml";
} // namespace

VirtualInterfaceDev::VirtualInterfaceDev(const char* name) : InterfaceDevAbs(VirtualInterfaceType, name) {
    for (const char* camera : {"Virtual Device #1", "Virtual Device #2"})
        cameras_.push_back(std::make_shared<VirtualDevice>(camera, DescriptionPath, this));
}

VirtualInterfaceDev::~VirtualInterfaceDev() {
    Shutdown();
}

std::list<std::shared_ptr<IDevice>> VirtualInterfaceDev::EnumSubDevices(unsigned int) {
    return cameras_;
}

} // namespace VX3
