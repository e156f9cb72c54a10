// One host network interface: finds the cameras that other hosts publish behind it, on their four ports at
// once. Owned by its manager; owns its cameras.
#pragma once

#include "gev/GevInterfaceDev.h"

#include <memory>
#include <string>
#include <vector>

namespace VX3 {

class RemoteInterfaceDev final : public GevInterfaceDev {
public:
    RemoteInterfaceDev(const std::string& name, const std::string& description, const std::string& id,
                       std::uint32_t macHigh, std::uint32_t macLow);
    ~RemoteInterfaceDev() override;

    // NotSupported.
    StatusCode AddSubDevice(const std::string& text) override;

protected:
    std::vector<std::uint16_t> Ports() const override { return {56000, 56002, 56004, 56006}; }
    std::shared_ptr<IDevice> MakeDevice(const std::string& name, const GevDiscovered& found,
                                        bool noFilter) override;
};

} // namespace VX3
