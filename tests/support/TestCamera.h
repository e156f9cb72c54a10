// A simulated camera that is up as soon as it is made, on a loopback address of its own.
#pragma once

#include "gev/protocol/Bootstrap.h"
#include "gev/protocol/DiscoveryInfo.h"
#include "vx3/simulated/Camera.h"

#include <stdexcept>
#include <utility>

namespace VX3::Test {

class TestCamera : public Simulated::Camera {
public:
    explicit TestCamera(Simulated::CameraConfig config = {}) : Camera(std::move(config)) {
        if (Failed(Start()))
            throw std::runtime_error("the simulated camera cannot bind its sockets");
    }

    // Loopback parameters of a host for this camera (127.0.0.1/8), and the camera's own.
    static NET_PARAM HostParam() { return {0x7F000001, 0xFF000000, 0, 0xFFFFFFFF}; }
    NET_PARAM CameraParam() const { return {Ip(), Register(Bootstrap::CurrentMask), 0, 0xFFFFFFFF}; }
    // What it answers to a discovery command.
    GVCP_DISCOVERY_ACK DiscoveryAck() const {
        GVCP_DISCOVERY_ACK ack;
        std::uint8_t* const payload = ack.bytes.data() + Gvcp::HeaderSize;
        if (Failed(ReadMemory(Bootstrap::Version, payload, ack.bytes.size() - Gvcp::HeaderSize)))
            throw std::runtime_error("a camera without bootstrap registers");
        return ack;
    }
    GevDiscoveryInfo DiscoveryInfo() const {
        GevDiscoveryInfo info;
        if (!DecodeDiscoveryAck(DiscoveryAck(), info))
            throw std::runtime_error("a discovery acknowledgement that cannot be read");
        return info;
    }
};

} // namespace VX3::Test
