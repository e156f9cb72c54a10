// The aggregate over every requested transport family: owns one manager a family and fans each call out. What
// System::CreateManager hands to clients.
#pragma once

#include "device/ManagerAbs.h"
#include "device/TransportTable.h"

#include <list>
#include <memory>
#include <string>
#include <vector>

namespace VX3 {

class ManagerAll : public ManagerAbs {
public:
    // A manager for each entry of `transports` whose bit is set in `types`; enumerates once.
    ManagerAll(unsigned int types, const char* name, const TransportTable& transports);
    ~ManagerAll() override;

    const std::vector<IntfDevType>& DeviceTypeSupported() const override { return types_; }
    StatusCode EnumDevices() override;
    int GetDevices(IntfDevType type) const override;
    std::shared_ptr<IDevice> GetDevice(unsigned int index, IntfDevType type) override;
    std::shared_ptr<IDevice> GetDevice(const std::string& name) override;
    std::string DeviceName(unsigned int index, IntfDevType type) const override;

private:
    // The manager that holds device `index` of `type`, and the index within it; null when there is none.
    std::pair<IManager*, unsigned int> Select(unsigned int index, IntfDevType type) const;

    std::list<std::unique_ptr<IManager>> managers_;
    std::vector<IntfDevType> types_;
};

} // namespace VX3
