// The one virtual interface; owns its two virtual cameras, which are always there. Owned by the virtual
// manager.
#pragma once

#include "device/InterfaceDevAbs.h"

#include <list>
#include <memory>

namespace VX3 {

class VirtualInterfaceDev final : public InterfaceDevAbs {
public:
    explicit VirtualInterfaceDev(const char* name);
    ~VirtualInterfaceDev() override;

    std::list<std::shared_ptr<IDevice>> EnumSubDevices(unsigned int timeoutMs) override;

protected:
    StatusCode ConnectP() override { return Status::Ok; }
    StatusCode DisConnectP() override { return Status::Ok; }

private:
    std::list<std::shared_ptr<IDevice>> cameras_;
};

} // namespace VX3
