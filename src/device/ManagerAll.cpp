#include "device/ManagerAll.h"

#include "vx3/core/Logger.h"

#include <algorithm>

namespace VX3 {

namespace {

bool IsOfFamily(const IManager& manager, IntfDevType type) {
    const auto& families = manager.DeviceTypeSupported();
    return !families.empty() && families.front() == type;
}

// One family that cannot look for devices does not keep the others from it.
int Enumerate(IManager& manager) {
    const StatusCode count = manager.EnumDevices();
    if (Failed(count))
        VxLoggerLog(LogLevel::Warning, "SDK", "%s: no devices are found: %s", manager.Name().c_str(),
                    StatusText(count).c_str());
    return std::max(0, count);
}

} // namespace

ManagerAll::ManagerAll(unsigned int types, const char* name, const TransportTable& transports)
    : ManagerAbs(IntfDevType::All, name) {
    for (const TransportEntry& transport : transports) {
        if ((types & static_cast<unsigned int>(transport.family)) == 0)
            continue;
        managers_.push_back(transport.create(transport.managerName));
        types_.push_back(transport.family);
    }
    for (const auto& manager : managers_)
        (void)Enumerate(*manager); // GetDevices counts
}

ManagerAll::~ManagerAll() {
    while (!managers_.empty())
        managers_.pop_front();
}

StatusCode ManagerAll::EnumDevices() {
    StatusCode sum = 0;
    for (const auto& manager : managers_)
        sum += Enumerate(*manager);
    return sum;
}

int ManagerAll::GetDevices(IntfDevType type) const {
    int sum = 0;
    for (const auto& manager : managers_)
        if (type == IntfDevType::All || IsOfFamily(*manager, type))
            sum += std::max(0, manager->GetDevices(IntfDevType::All));
    return sum;
}

std::pair<IManager*, unsigned int> ManagerAll::Select(unsigned int index, IntfDevType type) const {
    for (const auto& manager : managers_) {
        if (type != IntfDevType::All) {
            if (IsOfFamily(*manager, type))
                return {manager.get(), index};
            continue;
        }
        const int count = manager->GetDevices(IntfDevType::All);
        if (count < 0)
            break;
        if (index < static_cast<unsigned int>(count))
            return {manager.get(), index};
        index -= static_cast<unsigned int>(count);
    }
    return {nullptr, 0};
}

std::shared_ptr<IDevice> ManagerAll::GetDevice(unsigned int index, IntfDevType type) {
    const auto [manager, local] = Select(index, type);
    return manager != nullptr ? manager->GetDevice(local, IntfDevType::All) : nullptr;
}

std::shared_ptr<IDevice> ManagerAll::GetDevice(const std::string& name) {
    for (const auto& manager : managers_)
        if (auto device = manager->GetDevice(name))
            return device;
    return nullptr;
}

std::string ManagerAll::DeviceName(unsigned int index, IntfDevType type) const {
    const auto [manager, local] = Select(index, type);
    return manager != nullptr ? manager->DeviceName(local, IntfDevType::All) : std::string();
}

} // namespace VX3
