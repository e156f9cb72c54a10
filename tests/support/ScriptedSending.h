// The faults of a stream's first sendings: what is lost, doubled, held back and mixed on the way out.
#pragma once

#include "support/ScriptedTrain.h"

#include <random>
#include <vector>

namespace VX3 {
namespace Test {

class ScriptedSending {
public:
    ScriptedSending(int socket, const NET_ENDPOINT& destination, const StreamScript& script);

    void Send(OutPacket packet);
    void EndFrame();
    void EndStream();
    // frames, packets, dropped, duplicated.
    const StreamCounts& Counts() const { return counts_; }

private:
    struct Held {
        OutPacket packet;
        unsigned remaining;
    };

    bool Chance(double probability);
    void Pass(const OutPacket& packet);
    void ReleaseDue();
    void FlushWindow();

    const StreamScript& script_;
    ScriptedTrain train_;
    std::mt19937 random_;
    std::vector<Held> held_;
    std::vector<OutPacket> window_;
    StreamCounts counts_;
};

} // namespace Test
} // namespace VX3
