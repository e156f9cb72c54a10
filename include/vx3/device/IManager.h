// The interface devices of one transport family, or of all. Not locked: serialise EnumDevices against
// look-ups.
#pragma once

#include "vx3/core/IObject.h"
#include "vx3/core/IntfDevType.h"
#include "vx3/core/Status.h"
#include "vx3/device/IDevice.h"

#include <memory>
#include <string>
#include <vector>

namespace VX3 {

class VX3_API IManager : public IObject {
public:
    virtual const std::vector<IntfDevType>& DeviceTypeSupported() const = 0;
    // Number of interface devices found, or a negative status.
    [[nodiscard]] virtual StatusCode EnumDevices() = 0;
    // IntfDevType::All means any family, here and below.
    virtual int GetDevices(IntfDevType type) const = 0;
    // Null past the end. Devices stay valid after a later enumeration for as long as they are held.
    virtual std::shared_ptr<IDevice> GetDevice(unsigned int index, IntfDevType type) = 0;
    virtual std::shared_ptr<IDevice> GetDevice(const std::string& name) = 0;
    virtual std::string DeviceName(unsigned int index, IntfDevType type) const = 0;
};

} // namespace VX3
