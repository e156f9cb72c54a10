// What a node map's port needs of its owner (a device or a stream).
#pragma once

#include "vx3/core/Export.h"
#include "vx3/core/Status.h"

#include <cstdint>

namespace VX3 {

class VX3_API IGenIObj {
public:
    // Register access; 0 or positive on success, a negative status on failure.
    [[nodiscard]] virtual StatusCode ReadPort(unsigned long long address, unsigned char* buffer,
                                              unsigned int length) = 0;
    [[nodiscard]] virtual StatusCode WritePort(unsigned long long address, const unsigned char* buffer,
                                               unsigned int length) = 0;
    // Where the URL of the description stands; -1 when there is none.
    virtual std::int64_t GetXmlUrlAddr() = 0;
    virtual bool IsManifestSupported() = 0;
    virtual ~IGenIObj() = default;
    // False while registers may only be read (monitor access): their nodes are then read-only.
    virtual bool IsWritable() const { return true; }
    // False once nothing answers any more, because the owner was disconnected or lost: sleeping nodes wake
    // up.
    virtual bool IsReachable() const { return true; }
};

} // namespace VX3
