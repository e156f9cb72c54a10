// What the leaders and the first trailer of a stream settled, and which later packets fit that: header
// form, geometry, lengths of datagrams. Knows no blocks. Owned by the parser; its thread only.
#pragma once

#include "gev/stream/GvspGeometry.h"
#include "gev/stream/GvspPacket.h"

#include <cstddef>
#include <cstdint>

namespace VX3 {

class GvspStreamForm {
public:
    const GvspGeometry& Geometry() const { return geometry_; }
    bool IsFixed() const { return geometry_.IsFixed(); }
    void Fix(const GvspGeometry& geometry, const GvspPacket& leader) {
        geometry_ = geometry;
        leaderLength_ = leader.length;
    }
    void FixTrailer(const GvspPacket& trailer) { trailerLength_ = trailer.length; }

    // Belongs to a block, in the stream's header form.
    bool Takes(const GvspPacket& packet) const {
        return packet.addr.blockId != 0 && (!IsFixed() || packet.header.extended == geometry_.extended);
    }
    [[nodiscard]] bool TakesLeader(const GvspPacket& packet, Gvsp::Leader& leader) const {
        return (leaderLength_ == 0 || packet.length == leaderLength_) && packet.addr.packetId == 0 &&
               Gvsp::DecodeLeader(packet.payload, leader);
    }
    // Fixed forms only.
    [[nodiscard]] bool TakesPayload(const GvspPacket& packet) const {
        return geometry_.IsPayloadId(packet.addr.packetId) &&
               geometry_.AcceptsData(packet.addr.packetId, packet.payload.size);
    }
    [[nodiscard]] bool TakesTrailer(const GvspPacket& packet, Gvsp::Trailer& trailer) const {
        return IsFixed() && (trailerLength_ == 0 || packet.length == trailerLength_) &&
               packet.addr.packetId != 0 && packet.addr.packetId <= geometry_.TrailerId() &&
               Gvsp::DecodeTrailer(packet.payload, trailer);
    }

private:
    GvspGeometry geometry_;
    std::size_t leaderLength_ = 0; // of the datagrams; 0: none yet
    std::size_t trailerLength_ = 0;
};

} // namespace VX3
