#include "genicam/GenIDevicePort.h"

#include "genicam/PortFailure.h"
#include "vx3/core/Utilities.h"

#include <string>
#include <utility>

namespace VX3::GenICam {

namespace {

// An owner that tells how much it moved, and moved less, has not carried the access out.
StatusCode Whole(StatusCode moved, std::int64_t length, StatusCode otherwise) {
    return moved > 0 && moved < length ? otherwise : moved;
}

void Check(StatusCode code, const char* what, std::int64_t address, std::int64_t length) {
    if (!Failed(code))
        return;
    const std::string text = what +
                             StringFormat(" %lld bytes at 0x%llX: ", static_cast<long long>(length),
                                          static_cast<unsigned long long>(address)) +
                             StatusText(code);
    if (code == Status::TimeOut)
        throw PortException<GenICam_3_2::TimeoutException>(code, text.c_str());
    throw PortException<GenICam_3_2::AccessException>(code, text.c_str());
}

} // namespace

GenIDevicePort::GenIDevicePort(std::weak_ptr<IGenIObj> owner) : owner_(std::move(owner)) {}

GenApi_3_2::EAccessMode GenIDevicePort::GetAccessMode() const {
    const std::shared_ptr<IGenIObj> owner = owner_.lock();
    return owner && !owner->IsWritable() ? GenApi_3_2::RO : GenApi_3_2::RW;
}

void GenIDevicePort::Read(void* buffer, std::int64_t address, std::int64_t length) {
    const std::shared_ptr<IGenIObj> owner = owner_.lock();
    const StatusCode moved =
        owner ? owner->ReadPort(static_cast<unsigned long long>(address), static_cast<unsigned char*>(buffer),
                                static_cast<unsigned int>(length))
              : Status::NotConnected;
    Check(Whole(moved, length, Status::Malformed), "Read from GenIPort Error.", address, length);
}

void GenIDevicePort::Write(const void* buffer, std::int64_t address, std::int64_t length) {
    const std::shared_ptr<IGenIObj> owner = owner_.lock();
    const StatusCode moved =
        owner ? owner->WritePort(static_cast<unsigned long long>(address),
                                 static_cast<const unsigned char*>(buffer), static_cast<unsigned int>(length))
              : Status::NotConnected;
    Check(Whole(moved, length, Status::IncompleteWrite), "Write to GenIObject Error.", address, length);
}

} // namespace VX3::GenICam
