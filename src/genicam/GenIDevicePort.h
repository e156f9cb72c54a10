// The port through which GenApi reaches its owner's registers. Owned by the node map it is connected to.
#pragma once

#include "GenApi/IPort.h"
#include "vx3/genicam/IGenIObj.h"

#include <memory>

namespace VX3::GenICam {

// The owner is locked for each access: one that is gone is not called, and the access does nothing. The first
// time-out makes the port inert for good, so that one dead camera costs one wait and not one a register.
// Called with the node map's lock held.
class GenIDevicePort : public GenApi_3_2::IPort {
public:
    explicit GenIDevicePort(std::weak_ptr<IGenIObj> owner);

    GenApi_3_2::EAccessMode GetAccessMode() const override { return GenApi_3_2::RW; }
    // Throw a C text on a time-out of the owner; any other failure of the owner is not reported.
    void Read(void* buffer, std::int64_t address, std::int64_t length) override;
    void Write(const void* buffer, std::int64_t address, std::int64_t length) override;

private:
    std::weak_ptr<IGenIObj> owner_;
};

} // namespace VX3::GenICam
