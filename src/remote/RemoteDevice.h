// A camera that another host publishes. A GigE Vision camera whose own registers lie behind an address bit of
// their own. Owned by the interface device that found it.
#pragma once

#include "gev/GevDevice.h"

#include <memory>
#include <string>

namespace VX3 {

class RemoteDevice final : public GevDevice {
public:
    // `port`: the one it was found on.
    RemoteDevice(const std::string& name, const NET_PARAM& local, const GVCP_DISCOVERY_ACK& discovery,
                 IDevice* parent, std::uint16_t port, bool noFilter,
                 DEVICE_STATE state = DEVICE_STATE::Unknown);
    ~RemoteDevice() override;

    // Ends with the port: cameras that one host publishes may be alike in all else.
    std::string UniqueName() const override;

    // 4 bytes travel as the number that they are in this host's memory; those of the publishing server's own
    // registers, below 0x1000, as everywhere.
    StatusCode ReadPort(unsigned long long address, unsigned char* buffer, unsigned int length) override;
    StatusCode WritePort(unsigned long long address, const unsigned char* buffer,
                         unsigned int length) override;
    // With 64-bit addresses, as they are.
    [[nodiscard]] StatusCode ReadPortEx(unsigned long long address, unsigned char* buffer,
                                        unsigned int length);
    [[nodiscard]] StatusCode WritePortEx(unsigned long long address, const unsigned char* buffer,
                                         unsigned int length);
    // Tells the publishing host: "pause 0".
    [[nodiscard]] StatusCode SendText(const std::string& text);

protected:
    std::shared_ptr<IStream> CreateStream(const char* name, unsigned int index, bool useFilter) override;
};

} // namespace VX3
