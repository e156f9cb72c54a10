#include "gev/protocol/DiscoveryInfo.h"

#include <utility>

namespace VX3 {

namespace {
constexpr std::size_t PayloadSize = Gvcp::DiscoveryAckSize - Gvcp::HeaderSize;
}

bool DecodeDiscoveryPayload(WireBytes payload, GevDiscoveryInfo& info) {
    if (payload.size < PayloadSize)
        return false;
    WireReader reader(payload);
    GevDiscoveryInfo read;
    std::uint16_t macHigh = 0;
    const bool ok = reader.U16(read.specVersionMajor) && reader.U16(read.specVersionMinor) &&
                    reader.U32(read.deviceMode) && reader.Skip(2) && reader.U16(macHigh) &&
                    reader.U32(read.macLow) && reader.U32(read.ipConfigOptions) &&
                    reader.U32(read.currentIpConfig) && reader.Skip(12) && reader.U32(read.currentIp) &&
                    reader.Skip(12) && reader.U32(read.subnetMask) && reader.Skip(12) &&
                    reader.U32(read.defaultGateway) && reader.Text(32, read.manufacturerName) &&
                    reader.Text(32, read.modelName) && reader.Text(32, read.deviceVersion) &&
                    reader.Text(48, read.manufacturerInfo) && reader.Text(16, read.serialNumber) &&
                    reader.Text(16, read.userDefinedName);
    if (!ok)
        return false;
    read.macHigh = macHigh;
    info = std::move(read);
    return true;
}

std::size_t EncodeDiscoveryAck(WireRoom room, std::uint16_t ackId, const GevDiscoveryInfo& info) {
    const std::size_t header = Gvcp::EncodeAckHeader(room, {Gvcp::AckStatus::Success, Gvcp::Ack::Discovery,
                                                            static_cast<std::uint16_t>(PayloadSize), ackId});
    if (header == 0)
        return 0;
    WireWriter writer(room.data + header, room.size - header);
    const bool ok = writer.U16(info.specVersionMajor) && writer.U16(info.specVersionMinor) &&
                    writer.U32(info.deviceMode) && writer.U16(0) &&
                    writer.U16(static_cast<std::uint16_t>(info.macHigh)) && writer.U32(info.macLow) &&
                    writer.U32(info.ipConfigOptions) && writer.U32(info.currentIpConfig) &&
                    writer.Zeros(12) && writer.U32(info.currentIp) && writer.Zeros(12) &&
                    writer.U32(info.subnetMask) && writer.Zeros(12) && writer.U32(info.defaultGateway) &&
                    writer.Text(info.manufacturerName, 32) && writer.Text(info.modelName, 32) &&
                    writer.Text(info.deviceVersion, 32) && writer.Text(info.manufacturerInfo, 48) &&
                    writer.Text(info.serialNumber, 16) && writer.Text(info.userDefinedName, 16);
    return ok ? header + writer.Written() : 0;
}

} // namespace VX3
