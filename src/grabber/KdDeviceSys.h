// Finds the frame grabber cards whose driver has made all its device nodes.
#pragma once

#include <string>
#include <vector>

namespace VX3 {

// One found card.
struct KdDeviceInfo {
    std::string friendlyName;
    std::string hardwareId; // the same for every card
    std::string devicePath; // the names of its nodes begin with this
};

class KdDeviceSys {
public:
    static constexpr unsigned int MostCards = 8;

    // In the order of the card numbers. `root`: the directory of the device nodes.
    static std::vector<KdDeviceInfo> GetDevicePaths(const std::string& root = "/dev");
};

} // namespace VX3
