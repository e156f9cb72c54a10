// Plain records of the GigE Vision transport: addresses, end points, what a stream receiver needs.
// Addresses and ports are in host order throughout (192.168.0.1 is 0xC0A80001).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace VX3 {

// One IPv4 configuration of an interface or camera.
struct NET_PARAM {
    std::uint32_t ip = 0;
    std::uint32_t mask = 0;
    std::uint32_t gateway = 0;
    std::uint32_t extra = 0xFFFFFFFFU; // passed through unchanged
};

// As a partner address: any sender on receive, broadcast on send.
constexpr std::uint32_t BroadcastIp = 0xFFFFFFFFU;

// One UDP end point.
struct NET_ENDPOINT {
    std::uint32_t ip = 0;
    std::uint32_t port = 0;
};

// One listed network interface. The MAC words are raw copies of the kernel's bytes, not numbers.
struct NICInfo {
    std::string name;
    std::string description;
    std::string id;
    std::uint32_t macHigh = 0; // bytes 4 and 5, then two zero bytes
    std::uint32_t macLow = 0;  // bytes 0 to 3
};

// An interface's IPv4 configurations and hardware address; empty list and zero words when nothing was found.
struct NicParams {
    std::vector<NET_PARAM> params;
    std::uint32_t macHigh = 0;
    std::uint32_t macLow = 0;
};

// What a stream receiver needs to know of its camera.
struct GevStreamParam {
    NET_PARAM host;
    NET_PARAM camera;               // its fourth word is not set
    std::uint32_t packetSize = 0;   // bytes, IP and UDP headers included (low 16 bits of SCPS)
    std::uint32_t bufferSize = 0;   // bytes needed per block; 0 when unknown
    std::uint32_t channelIndex = 0; // stream channel
    std::uint32_t resendSupported = 0;
    std::string name;
};

} // namespace VX3
