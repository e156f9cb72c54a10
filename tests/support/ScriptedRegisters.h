// Register file and memory of a scripted camera, its GenICam description included.
#pragma once

#include "gev/protocol/DiscoveryInfo.h"
#include "support/CameraScript.h"
#include "vx3/core/Mutex.h"

#include <cstdint>
#include <string>
#include <vector>

namespace VX3 {
namespace Test {

// Registers the description names, in manufacturer space.
namespace ScriptedAddress {
constexpr std::uint32_t Width = 0xA000;
constexpr std::uint32_t Height = 0xA004;
constexpr std::uint32_t PixelFormat = 0xA008;
constexpr std::uint32_t OffsetX = 0xA00C;
constexpr std::uint32_t OffsetY = 0xA010;
constexpr std::uint32_t AcquisitionMode = 0xA014;
constexpr std::uint32_t AcquisitionStart = 0xA018; // 1: streams every channel whose port is set
constexpr std::uint32_t AcquisitionStop = 0xA01C;
constexpr std::uint32_t ParamsLocked = 0xA020;
constexpr std::uint32_t ExposureTime = 0xA024; // 32-bit float
constexpr std::uint32_t Gain = 0xA028;
constexpr std::uint32_t Scratch = 0xB000; // memory for whatever a test likes, up to the description
constexpr std::uint32_t Description = 0x10000;
} // namespace ScriptedAddress

// Safe to use from any thread.
class ScriptedRegisters {
public:
    explicit ScriptedRegisters(const CameraConfig& config);

    // As at power-up.
    void Reset();
    bool Read(std::uint64_t address, std::uint8_t* destination, std::size_t count) const;
    // Not into the description.
    bool Write(std::uint64_t address, const std::uint8_t* source, std::size_t count);
    // 0 outside.
    std::uint32_t Value(std::uint64_t address) const;
    bool SetValue(std::uint64_t address, std::uint32_t value);
    GevDiscoveryInfo DiscoveryInfo() const;
    // Bytes from 0 to the end of the description.
    std::size_t Size() const;

    static const std::string& DescriptionText();

private:
    void SetText(std::uint32_t address, const std::string& text, std::size_t width);

    const CameraConfig config_;
    mutable Mutex mutex_;
    std::vector<std::uint8_t> bytes_ VX3_GUARDED_BY(mutex_);
};

} // namespace Test
} // namespace VX3
