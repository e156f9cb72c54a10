// Options that every verb understands.
#pragma once

#include <string>

namespace VX3::Tool {

struct GlobalOptions {
    bool json = false;
    bool verbose = false;
    std::string interfaceName; // empty: every interface
    std::string transport;     // empty: every transport
};

} // namespace VX3::Tool
