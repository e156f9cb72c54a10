// What a simulated camera is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace VX3 {
namespace Simulated {

// Addresses and ports are in host order.
struct CameraConfig {
    // 0: a free address of 127.0.0.0/8, another one for every camera.
    std::uint32_t ip = 0;
    std::uint32_t mask = 0xFF000000;
    std::uint16_t gvcpPort = 3956; // 0: chosen by the system
    // Listen on every address (broadcast discovery reaches only such a socket); `ip` is then only reported.
    bool bindAnyAddress = false;

    // Texts longer than their registers are cut.
    std::string vendor = "VX3";
    std::string model = "Simulated";
    std::string version = "1.0.0";
    std::string manufacturerInfo = "a camera made of data";
    std::string serial = "SC-0001";
    std::string userName;
    std::uint64_t mac = 0x020000C0FFEEULL;

    std::uint32_t streamChannels = 1; // as reported; up to 4 really stream
    std::uint32_t heartbeatTimeoutMs = 3000;
    std::uint32_t pendingTimeoutMs = 0;        // longest time a command may take; 0: not told
    std::uint32_t gvcpCapability = 0x00000006; // packet resend, WRITEMEM
    bool reportsSourcePort = false;            // stream source port register valid
    bool requiresControl = true;               // refuse writes of whoever does not hold the control privilege
    bool tellsPrimaryApplication = true;       // its registers name the host that holds the control privilege
    bool sendsTestPackets = true;
    std::uint32_t largestTestPacket = 9000; // larger ones are lost on their way

    std::uint32_t width = 640;
    std::uint32_t height = 480;
    std::uint32_t pixelFormat = 0x01080001; // PFNC code: Mono8
    std::uint32_t packetSize = 1500;        // SCPS until somebody writes it: IP and UDP headers included

    // GenICam description served from the camera's memory; empty: a small one of the camera's own.
    std::string description;
    std::string descriptionFile = "Simulated.xml"; // its name in the URL; ending in .zip for a zip archive

    std::size_t rememberedCommands = 10000; // of Camera::Seen
};

// Registers of the camera's own description, in manufacturer space, 32 bits each.
namespace CameraRegister {
constexpr std::uint32_t Width = 0xA000;
constexpr std::uint32_t Height = 0xA004;
constexpr std::uint32_t PixelFormat = 0xA008;
constexpr std::uint32_t OffsetX = 0xA00C;
constexpr std::uint32_t OffsetY = 0xA010;
constexpr std::uint32_t AcquisitionMode = 0xA014;
constexpr std::uint32_t AcquisitionStart = 0xA018; // written: streams every channel whose port is set
constexpr std::uint32_t AcquisitionStop = 0xA01C;
constexpr std::uint32_t ParamsLocked = 0xA020; // not 0: width, height and pixel format refuse to be written
constexpr std::uint32_t ExposureTime = 0xA024; // 32-bit float, microseconds
constexpr std::uint32_t Gain = 0xA028;
constexpr std::uint32_t Scratch = 0xB000; // memory without a meaning, up to the description
constexpr std::uint32_t Description = 0x10000;
} // namespace CameraRegister

} // namespace Simulated
} // namespace VX3
