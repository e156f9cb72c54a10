// Transport families, one bit each, and the type ids built from them.
#pragma once

#include <cstdint>

namespace VX3 {

enum class IntfDevType : std::uint32_t {
    Virtual = 1,
    GigEVision = 2,
    Usb3Vision = 4,
    GenCP = 8,
    Uvc = 16,
    Grabber = 32,
    GenTL = 64,
    Misc = 128, // GenTL producers loaded at run time
    Pipelines = 256,
    Remote = 1024,
    All = 65535,
};

// Several families at once.
constexpr IntfDevType operator|(IntfDevType a, IntfDevType b) {
    return static_cast<IntfDevType>(static_cast<std::uint32_t>(a) | static_cast<std::uint32_t>(b));
}

namespace TypeIds {
constexpr unsigned int CategoryMask = 0xFF000000U;
constexpr unsigned int Buffer = 0x03000000U;
constexpr unsigned int CommPort = 0x04000000U;
constexpr unsigned int BufferPool = 0x05000000U;
constexpr unsigned int Manager = 0x06000000U;
constexpr unsigned int Image = 0x0A000000U;
constexpr unsigned int ImagePool = 0x0B000000U;
// Devices have category 0; a device's type id is one of these plus its IntfDevType.
constexpr unsigned int InterfaceDevice = 0x00010000U;
constexpr unsigned int SubDevice = 0x00030000U;
} // namespace TypeIds

} // namespace VX3
