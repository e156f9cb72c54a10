// The bytes of one description file and the name they came by.
#pragma once

#include "vx3/core/Export.h"

#include <string>

namespace VX3 {

class VX3_API IXmlData {
public:
    virtual ~IXmlData() = default;
    virtual std::string GetXmlName() const = 0;
    virtual unsigned int GetXmlDataSize() const = 0;
    virtual const unsigned char* GetXmlData() const = 0;
};

} // namespace VX3
