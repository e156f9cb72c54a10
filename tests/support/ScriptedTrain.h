// Sends packets cheaply: gathers them and hands the kernel whole trains, paced where a rate is set.
#pragma once

#include "support/ScriptedPackets.h"
#include "vx3/gev/NetParam.h"

#include <chrono>
#include <cstddef>
#include <vector>

namespace VX3 {
namespace Test {

class ScriptedTrain {
public:
    // bytesPerSecond 0: flat out.
    ScriptedTrain(int socket, const NET_ENDPOINT& destination, bool segmentation, double bytesPerSecond);

    void Add(const OutPacket& packet);
    void Flush();

private:
    std::size_t RunLength(std::size_t first) const;
    bool SendSegmented(std::size_t first, std::size_t count);
    void SendSingly(std::size_t first, std::size_t count);
    void Pace(std::size_t bytes);

    int socket_;
    NET_ENDPOINT destination_;
    bool segmentation_;
    double bytesPerSecond_;
    std::chrono::steady_clock::time_point due_;
    std::vector<OutPacket> packets_;
};

} // namespace Test
} // namespace VX3
