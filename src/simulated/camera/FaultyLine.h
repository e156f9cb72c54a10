// The faults of a stream's first sendings: what is lost, doubled, held back and mixed on the way out. A
// packet without a fault costs a few comparisons and no copy.
#pragma once

#include "simulated/camera/PacketTrain.h"
#include "simulated/camera/PreparedBlock.h"

#include <random>
#include <vector>

namespace VX3 {
namespace Simulated {

class FaultyLine {
public:
    // Both outlive the line.
    FaultyLine(PacketTrain& train, const StreamFaults& faults);

    void Send(const OutPacket& packet) {
        if (faultless_)
            train_.Add(packet.head, packet.data);
        else
            SendFaulty(packet);
    }
    // A frame's packets are out after it, unless they are held back beyond.
    void EndFrame();
    void EndStream();
    std::uint64_t Dropped() const { return dropped_; }
    std::uint64_t Duplicated() const { return duplicated_; }

private:
    using Bytes = std::vector<std::uint8_t>;
    struct Held {
        Bytes packet;
        unsigned remaining;
    };

    void SendFaulty(const OutPacket& packet);
    bool Chance(double probability);
    bool IsLost(const OutPacket& packet);
    void SendCopy(const OutPacket& packet, bool twice);
    void Pass(Bytes packet);
    void ReleaseDue();
    void FlushWindow();
    void Depart(Bytes packet);
    void Flush();

    PacketTrain& train_;
    const StreamFaults& faults_;
    const bool faultless_;
    const bool copies_; // packets outlive their turn, or differ from what the block holds
    std::mt19937 random_;
    unsigned burstLeft_ = 0;
    std::vector<Held> held_;
    std::vector<Bytes> window_;
    std::vector<Bytes> inTrain_;
    std::uint64_t dropped_ = 0;
    std::uint64_t duplicated_ = 0;
};

} // namespace Simulated
} // namespace VX3
