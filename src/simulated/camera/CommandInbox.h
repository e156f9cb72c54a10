// Takes what waits at a command socket in one go, so that the server can choose whom to answer first. Owned
// and used by the server's thread; its room is allocated once.
#pragma once

#include "simulated/camera/CameraSocket.h"

#include <array>
#include <cstddef>
#include <vector>

namespace VX3 {
namespace Simulated {

class CommandInbox {
public:
    static constexpr std::size_t MostDatagrams = 64;
    static constexpr std::size_t LargestCommand = 2048; // longer ones are cut, and refused for their length

    struct Arrived {
        WireBytes bytes;
        NET_ENDPOINT from;
        std::uint32_t to = 0; // the address of ours it was sent to; 0 when the system does not tell
    };

    CommandInbox() : room_(MostDatagrams * LargestCommand) {}

    // What is there already; how many.
    std::size_t Fill(const CameraSocket& socket);
    const Arrived& At(std::size_t index) const { return arrived_[index]; }

private:
    std::vector<std::uint8_t> room_;
    std::array<Arrived, MostDatagrams> arrived_{};
};

} // namespace Simulated
} // namespace VX3
