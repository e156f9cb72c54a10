#include "vx3/gev/StreamPacketSize.h"

#include "gev/GevDevice.h"
#include "gev/protocol/Bootstrap.h"
#include "wire/WireCursor.h"

namespace VX3 {

// The register's other bits stay as they are.
StatusCode SetStreamPacketSize(IDevice& camera, unsigned int channel, unsigned int size) {
    auto* device = dynamic_cast<GevDevice*>(&camera);
    if (device == nullptr)
        return Status::NotSupported;
    if (size > Bootstrap::PacketSizeMask || channel >= device->StreamCnt())
        return Status::NotFound;
    const std::uint32_t address = Bootstrap::StreamRegister(Bootstrap::StreamPacketSize, channel);
    unsigned char bytes[4] = {};
    const StatusCode code = device->ReadPort(address, bytes, sizeof(bytes));
    if (Failed(code))
        return code;
    Wire::Store(bytes, (Wire::Load<std::uint32_t>(bytes) & ~Bootstrap::PacketSizeMask) | size);
    return device->WritePort(address, bytes, sizeof(bytes));
}

} // namespace VX3
