// The one implementation of object identity; every abstract base owns one and forwards to it.
#pragma once

#include "vx3/core/IObject.h"

namespace VX3 {

class ObjectAbs : public IObject {
public:
    // A null name is an empty name.
    ObjectAbs(unsigned int typeId, const char* name);

    std::string Name() const override { return name_; }
    std::uint64_t ObjID() const override { return objId_; }
    bool IsConfigurable() const override { return false; }
    IConfigurer* GetConfigurer() override { return nullptr; }
    unsigned int ObjType() const override { return typeId_ & 0xFF000000U; }
    std::list<std::pair<std::string, std::string>> GetInfo() const override { return {}; }
    unsigned int TypeId() const override { return typeId_; }

private:
    std::string name_;
    std::uint64_t objId_;
    unsigned int typeId_;
};

} // namespace VX3
