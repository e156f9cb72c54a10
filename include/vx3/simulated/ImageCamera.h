// A camera made of images: a pattern out of nothing, or frames that were recorded, over and over. A device
// like any other: connect it, start its stream, publish it.
#pragma once

#include "vx3/core/Export.h"
#include "vx3/device/IDevice.h"
#include "vx3/image/IImage.h"

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace VX3 {

struct ImageCameraConfig {
    std::string vendor = "VX3";
    std::string model = "Pattern";
    std::string version = "1.0.0";
    std::string serial = "000001";
    double framesPerSecond = 30; // 0: as fast as they are taken
    // Of the pattern: every frame another one, the same for every camera and run.
    std::uint32_t width = 640;
    std::uint32_t height = 480;
    std::uint32_t pixelFormat = 0x01080001; // PFNC code; Mono8
    // Instead of the pattern. All of one size and pixel format.
    std::vector<std::shared_ptr<IImage>> frames;
    // What its features tell beside, by name: of the camera that recorded the frames.
    std::vector<std::pair<std::string, std::string>> settings;
};

// Null, and the thread's last failure says why, for images that are empty, above 256 MiB or unlike each
// other.
[[nodiscard]] VX3_API std::shared_ptr<IDevice> MakeImageCamera(const ImageCameraConfig& config);

} // namespace VX3
