// One region of a soft device's register space.
#pragma once

#include <cstdint>

namespace VX3 {

struct StructRegDesc {
    unsigned char* memory = nullptr; // owned by the device that declares the region
    std::uint32_t size = 0;          // bytes
    std::uint32_t address = 0;       // of the first byte
};

} // namespace VX3
