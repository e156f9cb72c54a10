#include "device/ManagerAbs.h"

namespace VX3 {

namespace {

unsigned int ManagerTypeId(IntfDevType type) {
    switch (type) {
    case IntfDevType::Virtual:
        return TypeIds::Manager + 1;
    case IntfDevType::GigEVision:
        return TypeIds::Manager + 2;
    case IntfDevType::Usb3Vision:
        return TypeIds::Manager + 3;
    case IntfDevType::All:
        return TypeIds::Manager + 0xFF;
    default:
        return TypeIds::Manager;
    }
}

} // namespace

ManagerAbs::ManagerAbs(IntfDevType type, const char* name)
    : object_(std::make_unique<ObjectAbs>(ManagerTypeId(type), name)), type_(type), supported_{type} {}

ManagerAbs::~ManagerAbs() = default;

int ManagerAbs::GetDevices(IntfDevType type) const {
    return Serves(type) ? static_cast<int>(devices_.size()) : 0;
}

const std::shared_ptr<IDevice>* ManagerAbs::Select(unsigned int index, IntfDevType type) const {
    return Serves(type) && index < devices_.size() ? &devices_[index] : nullptr;
}

std::shared_ptr<IDevice> ManagerAbs::GetDevice(unsigned int index, IntfDevType type) {
    const auto* device = Select(index, type);
    return device != nullptr ? *device : nullptr;
}

std::shared_ptr<IDevice> ManagerAbs::GetDevice(const std::string& name) {
    for (const auto& device : devices_)
        if (device->Name() == name)
            return device;
    return nullptr;
}

std::string ManagerAbs::DeviceName(unsigned int index, IntfDevType type) const {
    const auto* device = Select(index, type);
    return device != nullptr ? (*device)->Name() : std::string();
}

StatusCode ManagerAbs::UpdateDevices(std::vector<std::shared_ptr<IDevice>>& list, IntfDevType type) {
    if (!Serves(type))
        return Status::WrongState;
    devices_ = list;
    return static_cast<StatusCode>(devices_.size());
}

} // namespace VX3
