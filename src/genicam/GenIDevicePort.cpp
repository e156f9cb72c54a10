#include "genicam/GenIDevicePort.h"

#include <utility>

namespace VX3::GenICam {

GenIDevicePort::GenIDevicePort(std::weak_ptr<IGenIObj> owner) : owner_(std::move(owner)) {}

void GenIDevicePort::Read(void* buffer, std::int64_t address, std::int64_t length) {
    const std::shared_ptr<IGenIObj> owner = owner_.lock();
    if (!owner)
        return;
    const StatusCode result =
        owner->ReadPort(static_cast<unsigned long long>(address), static_cast<unsigned char*>(buffer),
                        static_cast<unsigned int>(length));
    if (result != Status::TimeOut)
        return;
    owner_.reset();
    throw "Read from GenIPort Error.";
}

void GenIDevicePort::Write(const void* buffer, std::int64_t address, std::int64_t length) {
    const std::shared_ptr<IGenIObj> owner = owner_.lock();
    if (!owner)
        return;
    const StatusCode result =
        owner->WritePort(static_cast<unsigned long long>(address), static_cast<const unsigned char*>(buffer),
                         static_cast<unsigned int>(length));
    if (result != Status::TimeOut)
        return;
    owner_.reset();
    throw "Write to GenIObject Error.";
}

} // namespace VX3::GenICam
