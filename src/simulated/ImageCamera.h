// The device behind MakeImageCamera: a soft device with a description of its own making.
//
//   0x1000  width, height, pixel format, frame rate (32-bit float), 4 bytes each, host order
#pragma once

#include "simulated/ImageCameraGenerator.h"
#include "simulated/SoftDevice.h"
#include "vx3/simulated/ImageCamera.h"

#include <array>
#include <cstdint>
#include <string>

namespace VX3 {

class ImageCamera final : public SoftDevice {
public:
    static constexpr unsigned int Registers = 0x1000;
    static constexpr unsigned int FrameRateAddress = Registers + 12;

    ImageCamera(const ImageCameraConfig& config, const ImageInfo& header, const std::string& description);
    ~ImageCamera() override;

    std::string VendorName() const override { return vendor_; }
    std::string ModelName() const override { return model_; }
    std::string DeviceVersion() const override { return version_; }
    std::string SerialNumber() const override { return serial_; }

    // The description of such a camera.
    static std::string Describe(const ImageCameraConfig& config, const ImageInfo& header);

private:
    const std::string vendor_;
    const std::string model_;
    const std::string version_;
    const std::string serial_;
    std::array<unsigned char, 16> registers_{};
    ImageCameraGenerator* generator_ = nullptr; // the stream's
};

} // namespace VX3
