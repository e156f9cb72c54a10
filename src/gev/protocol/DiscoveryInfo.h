// What a discovery acknowledgement tells about a camera, and its codec.
#pragma once

#include "gev/protocol/Gvcp.h"

#include <array>
#include <cstdint>
#include <string>

namespace VX3 {

// One discovery acknowledgement as received: 8-byte header and 248-byte payload.
struct GVCP_DISCOVERY_ACK {
    std::array<std::uint8_t, Gvcp::DiscoveryAckSize> bytes{};
};

// Numbers in host order; texts end at their field's first NUL or its end.
struct GevDiscoveryInfo {
    std::uint16_t specVersionMajor = 0;
    std::uint16_t specVersionMinor = 0;
    std::uint32_t deviceMode = 0;
    std::uint32_t macHigh = 0; // 16 significant bits
    std::uint32_t macLow = 0;
    std::uint32_t ipConfigOptions = 0;
    std::uint32_t currentIpConfig = 0;
    std::uint32_t currentIp = 0;
    std::uint32_t subnetMask = 0;
    std::uint32_t defaultGateway = 0;
    std::string manufacturerName;
    std::string modelName;
    std::string deviceVersion;
    std::string manufacturerInfo;
    std::string serialNumber;
    std::string userDefinedName;
};

// False unless `payload` has the 248 bytes of the published layout (further bytes are ignored).
[[nodiscard]] bool DecodeDiscoveryPayload(WireBytes payload, GevDiscoveryInfo& info);
[[nodiscard]] inline bool DecodeDiscoveryAck(const GVCP_DISCOVERY_ACK& ack, GevDiscoveryInfo& info) {
    return DecodeDiscoveryPayload({ack.bytes.data() + Gvcp::HeaderSize, ack.bytes.size() - Gvcp::HeaderSize},
                                  info);
}
// The whole 256-byte acknowledgement.
[[nodiscard]] std::size_t EncodeDiscoveryAck(WireRoom room, std::uint16_t ackId,
                                             const GevDiscoveryInfo& info);

} // namespace VX3
