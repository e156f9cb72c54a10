#include "gev/stream/GvspGeometry.h"

namespace VX3 {

namespace {

// Image payload in bytes: every line's pixels and padding. 0 bits, no lines and no columns make 0 bytes.
bool ImageBytes(const Gvsp::Leader& leader, std::uint64_t& bytes) {
    const std::uint64_t bitsPerPixel = (leader.pixelFormat >> 16) & 0xFFU;
    const std::uint64_t pixels = static_cast<std::uint64_t>(leader.sizeX) * leader.sizeY;
    if (pixels > GvspGeometry::MaxBlockBytes * 8) // so that neither product below can wrap
        return false;
    bytes = bitsPerPixel * pixels / 8 + static_cast<std::uint64_t>(leader.paddingX) * leader.sizeY +
            leader.paddingY;
    return true;
}

} // namespace

StatusCode GvspGeometry::FromLeader(const Gvsp::Leader& leader, std::uint32_t packetSize, bool extended,
                                    GvspGeometry& geometry) {
    std::uint64_t bytes = 0;
    if (leader.payloadType == Gvsp::PayloadType::Image) {
        if (!ImageBytes(leader, bytes))
            return Status::Malformed;
    } else if (leader.IsPlainBytes()) {
        bytes = leader.sizeX;
    }
    const std::size_t perPacket = Gvsp::DataPerPacket(packetSize, extended);
    if (perPacket == 0 || bytes > MaxBlockBytes)
        return Status::Malformed;
    const std::uint64_t full = bytes / perPacket;
    const std::uint64_t rest = bytes % perPacket;
    const std::uint64_t packets = full + (rest != 0 ? 3 : 2);
    if (packets > MaxPackets)
        return Status::Malformed;
    geometry.payloadBytes = static_cast<std::uint32_t>(bytes);
    geometry.packetData = static_cast<std::uint32_t>(perPacket);
    geometry.fullPackets = static_cast<std::uint32_t>(full);
    geometry.lastData = static_cast<std::uint32_t>(rest);
    geometry.packets = static_cast<std::uint32_t>(packets);
    geometry.headerSize = static_cast<std::uint32_t>(Gvsp::HeaderSize(extended));
    geometry.extended = extended;
    return Status::Ok;
}

} // namespace VX3
