// The description that hosts get of a published camera: a copy of the camera's own whose registers are moved
// into the window of addresses behind the server's, and whose stream, heartbeat and time stamp features name
// the server's registers. Pure functions over foreign bytes.
#pragma once

#include "simulated/publish/AddressWindow.h"

#include <string>
#include <string_view>
#include <vector>

namespace VX3 {

struct PublishedDescription {
    std::string archive; // zip; empty when there is none
    std::string url;
    AddressWindow window;
    // The camera's registers behind AcquisitionStart, AcquisitionStop and TLParamsLocked: acquisition follows
    // the stream channel, and the lock with it.
    std::vector<std::uint64_t> ignoredRegisters;
    std::string failure; // why there is none, in words

    // `name`: becomes the file's. `description`: XML, or a zip archive with it. `gigEVision`: its camera is
    // one, and registers that every such camera has mean the server's.
    static PublishedDescription Make(const std::string& name, std::string_view description, bool gigEVision);
};

} // namespace VX3
