// The port through which GenApi reaches its owner's registers. Owned by the node map it is connected to.
#pragma once

#include "GenApi/IPort.h"
#include "vx3/genicam/IGenIObj.h"

#include <memory>

namespace VX3::GenICam {

// The owner is locked for each access: one that is gone is not called. Whether a silent camera still costs
// waits is its owner's business: one that is lost refuses at once. Called with the node map's lock held.
class GenIDevicePort : public GenApi_3_2::IPort {
public:
    explicit GenIDevicePort(std::weak_ptr<IGenIObj> owner);

    // Read-only where the owner may only be read (monitor access).
    GenApi_3_2::EAccessMode GetAccessMode() const override;
    // Throw a PortException for whatever the owner does not do: GenApi's TimeoutException where it timed out,
    // AccessException otherwise. GenApi keeps nothing of such an access.
    void Read(void* buffer, std::int64_t address, std::int64_t length) override;
    void Write(const void* buffer, std::int64_t address, std::int64_t length) override;

private:
    std::weak_ptr<IGenIObj> owner_;
};

} // namespace VX3::GenICam
