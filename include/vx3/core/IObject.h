// Identity of every object a client can hold: managers, devices, streams, buffers, images, pools, ports,
// configurers.
#pragma once

#include "vx3/core/Export.h"

#include <cstdint>
#include <list>
#include <string>
#include <utility>

namespace VX3 {

class IConfigurer;

class VX3_API IObject {
public:
    virtual std::string Name() const = 0;
    // Unique in the process; grows by one per object in creation order.
    virtual std::uint64_t ObjID() const = 0;
    virtual bool IsConfigurable() const = 0;
    // Not owned; null when the object has no features (or is not connected).
    virtual IConfigurer* GetConfigurer() = 0;
    // Object category: the high byte of the type id, in place.
    virtual unsigned int ObjType() const = 0;
    // Descriptive key/value pairs, for display.
    virtual std::list<std::pair<std::string, std::string>> GetInfo() const = 0;
    virtual unsigned int TypeId() const = 0;
    virtual ~IObject() = default;
};

} // namespace VX3
