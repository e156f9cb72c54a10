// The GenTL producers (*.cti) that this process has found, and what became of each.
#pragma once

#include "vx3/core/Export.h"

#include <string>
#include <vector>

namespace VX3 {

struct VX3_API GenTLProducer {
    std::string path;
    // As the producer says, control characters replaced; empty where it does not say, or is not used.
    std::string vendor;
    std::string model;
    std::string version;
    std::string tlType;  // "GEV", "U3V", "CXP", "Mixed", ...
    std::string failure; // empty, or why it is not used, in words
};

// Those of the managers that exist now, and those that a manager has refused since the process began, in the
// order they were found. Any thread.
VX3_API std::vector<GenTLProducer> GenTLProducers();

} // namespace VX3
