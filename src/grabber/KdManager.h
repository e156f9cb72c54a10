// The transport manager of the PCIe frame grabber: one interface device a card.
#pragma once

#include "device/ManagerAbs.h"

#include <string>

namespace VX3 {

class KdManager final : public ManagerAbs {
public:
    // The device nodes are looked for in the directory that the setting "GrabberDeviceRoot" names, "/dev"
    // without.
    explicit KdManager(const char* name);
    KdManager(const char* name, const std::string& root);

    StatusCode EnumDevices() override;

private:
    const std::string root_;
};

} // namespace VX3
