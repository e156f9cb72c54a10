// A block whose packets are laid out once: sending it again changes block ids and the time stamp, nothing
// else. Owned and used by one sending thread.
#pragma once

#include "simulated/camera/PacketMaker.h"
#include "vx3/simulated/CameraScript.h"

#include <memory>
#include <vector>

namespace VX3 {
namespace Simulated {

// A packet ready to be sent. Head and data belong to others.
struct OutPacket {
    PacketAddress address;
    bool trailer = false;
    WireBytes head;
    WireBytes data;
};

class PreparedBlock {
public:
    // `whole`: heads and data side by side, which sends fastest and takes the data's size in memory once
    // more. Otherwise data are sent from where they lie.
    PreparedBlock(std::shared_ptr<const PacketMaker> maker, bool whole);

    const std::shared_ptr<const PacketMaker>& Maker() const { return maker_; }
    // The packet as part of the block `stamp` names; its head is good until the packet is asked for again.
    OutPacket Packet(std::uint32_t packetId, const BlockStamp& stamp);

private:
    std::shared_ptr<const PacketMaker> maker_;
    std::uint32_t trailerId_;
    std::size_t payloadHead_;
    std::vector<std::uint8_t> leader_;
    std::vector<std::uint8_t> trailer_;
    std::size_t stride_; // from one payload packet's head to the next one's
    bool whole_;
    std::vector<std::uint8_t> payload_;
};

} // namespace Simulated
} // namespace VX3
