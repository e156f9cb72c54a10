// From the text of a setting to serial ports: paths and patterns ("/dev/ttyS1, /dev/serial/by-id/*"),
// separated by commas, semicolons or blanks.
#pragma once

#include <string>
#include <vector>

namespace CLProtocol {

class PortList {
public:
    static constexpr std::size_t MostPorts = 64;

    static std::vector<std::string> Split(const std::string& text);
    // The character devices that are there now, in the order of the patterns, and by name within each. A
    // device under two names is there once, by the first. At most MostPorts.
    static std::vector<std::string> Expand(const std::string& text);
    // Whether two paths name one device.
    static bool IsSame(const std::string& port, const std::string& other);
};

} // namespace CLProtocol
