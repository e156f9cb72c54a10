#include "simulated/camera/PreparedBlock.h"

#include <cstring>

namespace VX3 {
namespace Simulated {

PreparedBlock::PreparedBlock(std::shared_ptr<const PacketMaker> maker, bool whole)
    : maker_(std::move(maker)),
      trailerId_(maker_->Layout().TrailerId()),
      payloadHead_(maker_->PayloadHeadSize()),
      leader_(maker_->LargestHeadSize()),
      trailer_(maker_->LargestHeadSize()),
      stride_(payloadHead_ + (whole ? maker_->Layout().LargestSlot() : 0)),
      whole_(whole),
      payload_(stride_ * maker_->Layout().PayloadPackets()) {
    leader_.resize(maker_->MakeHead(0, {}, 0, {leader_.data(), leader_.size()}));
    trailer_.resize(maker_->MakeHead(trailerId_, {}, 0, {trailer_.data(), trailer_.size()}));
    for (std::uint32_t id = 1; id < trailerId_; ++id) {
        std::uint8_t* const packet = payload_.data() + (id - 1) * stride_;
        (void)maker_->MakeHead(id, {}, 0, {packet, payloadHead_});
        if (!whole)
            continue;
        const WireBytes data = maker_->Data(id, {});
        std::memcpy(packet + payloadHead_, data.data, data.size);
    }
}

OutPacket PreparedBlock::Packet(std::uint32_t packetId, const BlockStamp& stamp) {
    OutPacket packet;
    packet.address = {stamp.blockId, packetId};
    packet.trailer = packetId == trailerId_;
    std::uint8_t* head = nullptr;
    if (packetId == 0) {
        packet.head = {head = leader_.data(), leader_.size()};
    } else if (packet.trailer) {
        packet.head = {head = trailer_.data(), trailer_.size()};
    } else {
        packet.head = {head = payload_.data() + (packetId - 1) * stride_, payloadHead_};
        packet.data = maker_->Data(packetId, stamp);
        if (whole_)
            packet.data.data = head + payloadHead_;
    }
    maker_->Restamp(packetId, stamp, head);
    return packet;
}

} // namespace Simulated
} // namespace VX3
