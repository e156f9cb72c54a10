// A frame grabber card as an interface device, with its one frame device. Owned by the grabber's manager.
#pragma once

#include "device/InterfaceDevAbs.h"
#include "grabber/KdDeviceSys.h"

#include <list>
#include <memory>
#include <string>
#include <utility>

namespace VX3 {

class KdInterfaceDev final : public InterfaceDevAbs {
public:
    KdInterfaceDev(const KdDeviceInfo& card, const char* name);
    ~KdInterfaceDev() override;

    std::string DevicePath() const override { return card_.devicePath; }
    std::string FriendlyName() const override { return card_.friendlyName; }
    std::list<std::pair<std::string, std::string>> GetInfo() const override;
    bool IsRegistersValid() const { return false; } // the card's registers are the frame device's
    std::list<std::shared_ptr<IDevice>> EnumSubDevices(unsigned int timeoutMs) override;

protected:
    StatusCode ConnectP() override { return Status::Ok; }
    StatusCode DisConnectP() override { return Status::Ok; }

private:
    const KdDeviceInfo card_;
    std::shared_ptr<IDevice> frame_;
};

} // namespace VX3
