// Base of the ports: their identity as objects of the library.
#pragma once

#include "core/ObjectAbs.h"
#include "gev/net/ICommPort.h"
#include "vx3/core/IntfDevType.h"

#include <list>
#include <string>
#include <utility>

namespace VX3 {

class CommPortAbs : public ICommPort {
public:
    explicit CommPortAbs(const char* name) : object_(TypeIds::CommPort, name) {}

    std::string Name() const override { return object_.Name(); }
    std::uint64_t ObjID() const override { return object_.ObjID(); }
    bool IsConfigurable() const override { return false; }
    IConfigurer* GetConfigurer() override { return nullptr; }
    unsigned int ObjType() const override { return object_.ObjType(); }
    std::list<std::pair<std::string, std::string>> GetInfo() const override { return object_.GetInfo(); }
    unsigned int TypeId() const override { return object_.TypeId(); }

private:
    ObjectAbs object_;
};

} // namespace VX3
