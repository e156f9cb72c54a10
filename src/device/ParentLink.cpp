#include "device/ParentLink.h"

#include "device/DeviceAbs.h"

namespace VX3 {

std::shared_ptr<ParentLink> ParentLink::To(IDevice* parent) {
    if (auto* device = dynamic_cast<DeviceAbs*>(parent))
        return device->children_;
    return std::make_shared<ParentLink>(parent);
}

} // namespace VX3
