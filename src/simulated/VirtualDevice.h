// A virtual camera: two regions of registers and one stream of the beam pattern. Owned by the virtual
// interface.
//
//   0x40        4 x 32 bytes: vendor, model, device version, serial number (text, zero padded)
//   0x01000000  3 x 4 bytes: width, height, frame time in ms (host order)
#pragma once

#include "simulated/SoftDevice.h"

#include <array>
#include <cstdint>

namespace VX3 {

class VirtualDevice final : public SoftDevice {
public:
    static constexpr unsigned int TextAddress = 0x40;
    static constexpr unsigned int WidthAddress = 0x01000000;
    static constexpr unsigned int HeightAddress = 0x01000004;
    static constexpr unsigned int FrameTimeAddress = 0x01000008;

    VirtualDevice(const char* name, const char* xmlPath, IDevice* parent);
    ~VirtualDevice() override;

private:
    static constexpr std::size_t TextSize = 32;

    void SetText(std::size_t index, const char* text);
    // Reacts to the start address of a write only.
    void RwRegCallbackFunc(unsigned int address, unsigned int unused);
    std::uint32_t Register(unsigned int address);

    std::array<unsigned char, 4 * TextSize> texts_{};
    std::array<unsigned char, 12> controls_{};
};

} // namespace VX3
