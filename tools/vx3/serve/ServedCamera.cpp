#include "serve/ServedCamera.h"

#include "base/Console.h"
#include "base/Files.h"
#include "base/NearMiss.h"
#include "base/ToolError.h"
#include "features/FeatureFile.h"
#include "vx3/core/LastFailure.h"
#include "vx3/processing/SaveLoadImage.h"
#include "vx3/simulated/ImageCamera.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sstream>

namespace VX3::Tool {

namespace {

constexpr double UsualRate = 30;
constexpr std::uint64_t MostBytes = std::uint64_t{1} << 30; // of recorded frames in memory
constexpr const char* SettingsFile = "settings.txt";

// A number of up to five digits, and nothing else.
bool ParseSize(const std::string& text, std::uint32_t& size) {
    if (text.empty() || text.size() > 5 || text.find_first_not_of("0123456789") != std::string::npos)
        return false;
    size = static_cast<std::uint32_t>(std::strtoul(text.c_str(), nullptr, 10));
    return true;
}

std::shared_ptr<IDevice> Make(const ImageCameraConfig& config) {
    auto camera = MakeImageCamera(config);
    if (!camera)
        throw ToolError(LastFailure().text);
    return camera;
}

bool IsFrame(const std::filesystem::path& path) {
    const std::string extension = Lower(path.extension().string());
    for (const char* known : {".raw", ".png", ".bmp", ".jpg", ".jpeg", ".tif", ".tiff", ".webp"})
        if (extension == known)
            return true;
    return false;
}

std::vector<std::string> FramesOf(const std::string& folder) {
    std::vector<std::string> paths;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error))
        if (entry.is_regular_file(error) && IsFrame(entry.path()))
            paths.push_back(entry.path().string());
    if (error)
        throw ToolError(folder + ": " + error.message());
    std::sort(paths.begin(), paths.end());
    return paths;
}

void LoadFrames(const std::string& folder, ImageCameraConfig& config) {
    std::uint64_t bytes = 0;
    const std::vector<std::string> paths = FramesOf(folder);
    for (const std::string& path : paths) {
        std::shared_ptr<IImage> frame = SaveLoadImage::LoadFromFile(path, nullptr, nullptr);
        if (!frame)
            throw ToolError(path + " cannot be played: " + LastFailure().text);
        bytes += frame->GetImageInfo()->ImageDataSize();
        if (bytes > MostBytes) {
            Console::Instance().Say("only the first " + std::to_string(config.frames.size()) + " of " +
                                    std::to_string(paths.size()) + " frames are played: that is 1 GiB");
            return;
        }
        config.frames.push_back(std::move(frame));
    }
    if (config.frames.empty())
        throw ToolError(folder + " holds no frames");
}

void LoadSettings(const std::string& folder, ImageCameraConfig& config) {
    const std::string path = folder + "/" + SettingsFile;
    std::error_code error;
    if (!std::filesystem::exists(path, error))
        return;
    std::istringstream text(ReadWholeFile(path));
    for (const FeatureLine& line : ReadLines(text)) {
        if (!line.selectors.empty())
            continue; // values of their own for every selector have no place in one text
        config.settings.emplace_back(line.feature, line.value);
        if (line.feature == "DeviceVendorName")
            config.vendor = line.value;
        else if (line.feature == "DeviceModelName")
            config.model = line.value;
        else if (line.feature == "DeviceSerialNumber")
            config.serial = line.value;
        else if (line.feature == "AcquisitionFrameRate" && config.framesPerSecond <= 0)
            config.framesPerSecond = std::strtod(line.value.c_str(), nullptr);
    }
}

} // namespace

std::shared_ptr<IDevice> PatternCamera(const std::string& text) {
    ImageCameraConfig config;
    const std::size_t cross = text.find('x');
    const std::size_t at = text.find('@');
    bool good = cross != std::string::npos && (at == std::string::npos || cross < at);
    good = good && ParseSize(text.substr(0, cross), config.width) &&
           ParseSize(text.substr(cross + 1, at - cross - 1), config.height);
    if (!good)
        throw ToolError("\"" + text + "\" is not WIDTHxHEIGHT or WIDTHxHEIGHT@FRAMES");
    if (at != std::string::npos) {
        char* end = nullptr;
        config.framesPerSecond = std::strtod(text.c_str() + at + 1, &end);
        if (end == text.c_str() + at + 1 || *end != '\0' || !(config.framesPerSecond > 0))
            throw ToolError("\"" + text + "\" does not end in a number of frames a second");
    }
    return Make(config);
}

std::shared_ptr<IDevice> ReplayCamera(const std::string& folder, double framesPerSecond) {
    ImageCameraConfig config;
    config.model = "Replay";
    config.framesPerSecond = framesPerSecond;
    LoadFrames(folder, config);
    LoadSettings(folder, config);
    if (config.framesPerSecond <= 0)
        config.framesPerSecond = UsualRate;
    return Make(config);
}

} // namespace VX3::Tool
