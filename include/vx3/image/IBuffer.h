// A raw memory block lent by a pool; it goes back on destruction.
#pragma once

#include "vx3/core/IObject.h"

namespace VX3 {

class VX3_API IBuffer : public IObject {
public:
    // Bytes allocated.
    virtual unsigned int BlockSize() const = 0;
    virtual const unsigned char* Pointer() const = 0;
    // The number the pool gave the block: a serial, or a ring's slot index.
    virtual unsigned int MiscValue() const = 0;
    virtual unsigned char* Pointer() = 0;
};

} // namespace VX3
