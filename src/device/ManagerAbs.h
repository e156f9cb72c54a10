// Common base of the transport managers: keeps the interface devices of one family. Not locked.
#pragma once

#include "core/ObjectAbs.h"
#include "vx3/device/IManager.h"

#include <list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace VX3 {

class ManagerAbs : public IManager {
public:
    ManagerAbs(IntfDevType type, const char* name);
    ~ManagerAbs() override;
    ManagerAbs(const ManagerAbs&) = delete;
    ManagerAbs& operator=(const ManagerAbs&) = delete;

    std::string Name() const override { return object_->Name(); }
    std::uint64_t ObjID() const override { return object_->ObjID(); }
    bool IsConfigurable() const override { return object_->IsConfigurable(); }
    IConfigurer* GetConfigurer() override { return object_->GetConfigurer(); }
    unsigned int ObjType() const override { return object_->ObjType(); }
    std::list<std::pair<std::string, std::string>> GetInfo() const override { return object_->GetInfo(); }
    unsigned int TypeId() const override { return object_->TypeId(); }

    const std::vector<IntfDevType>& DeviceTypeSupported() const override { return supported_; }
    StatusCode EnumDevices() override { return 0; }
    int GetDevices(IntfDevType type) const override;
    std::shared_ptr<IDevice> GetDevice(unsigned int index, IntfDevType type) override;
    std::shared_ptr<IDevice> GetDevice(const std::string& name) override;
    std::string DeviceName(unsigned int index, IntfDevType type) const override;

protected:
    // Replaces the list and returns the new count; WrongState for a foreign family.
    StatusCode UpdateDevices(std::vector<std::shared_ptr<IDevice>>& list, IntfDevType type);

private:
    bool Serves(IntfDevType type) const { return type == IntfDevType::All || type == type_; }
    const std::shared_ptr<IDevice>* Select(unsigned int index, IntfDevType type) const;

    std::unique_ptr<ObjectAbs> object_;
    IntfDevType type_;
    std::vector<std::shared_ptr<IDevice>> devices_;
    std::vector<IntfDevType> supported_;
};

} // namespace VX3
