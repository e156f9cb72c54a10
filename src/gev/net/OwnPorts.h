// The control ports on which this process itself answers as a GigE Vision camera: what it publishes it does
// not find. One list a process; any thread.
#pragma once

#include <cstdint>

namespace VX3 {

class OwnPorts {
public:
    static void Add(std::uint16_t port);
    static void Remove(std::uint16_t port);
    // Whether a camera at that address and port is this process.
    static bool IsOwn(std::uint32_t ip, std::uint16_t port);
};

} // namespace VX3
