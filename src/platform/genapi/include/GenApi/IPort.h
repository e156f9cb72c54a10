// The way from a node map to its device: implemented by whoever owns the registers.
#pragma once

#include "GenApi/IBase.h"

namespace GenApi_3_2 {

// Read and Write transfer all `Length` bytes or throw; a thrown GenericException or C text becomes the
// failure of the node operation that asked.
class IPort : virtual public IBase {
public:
    virtual void Read(void* pBuffer, std::int64_t Address, std::int64_t Length) = 0;
    virtual void Write(const void* pBuffer, std::int64_t Address, std::int64_t Length) = 0;
};

// A port node of the map, to which the device's port is given.
class IPortConstruct : public IPort {
public:
    virtual void SetPortImpl(IPort* pPort) = 0;
};

} // namespace GenApi_3_2
