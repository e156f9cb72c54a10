#include "grab/FrameFiles.h"

#include "base/ToolError.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace VX3::Tool {

namespace {

constexpr const char Prefix[] = "frame_";
// Beyond this a number is none of ours, and counting on from it would soon overflow.
constexpr std::uint64_t HighestNumber = 1000000000000ULL;

std::uint64_t NumberOf(const std::string& name) {
    if (name.rfind(Prefix, 0) != 0)
        return 0;
    const std::uint64_t number = std::strtoull(name.c_str() + sizeof Prefix - 1, nullptr, 10);
    return number <= HighestNumber ? number : 0;
}

} // namespace

std::uint64_t HighestFrame(const std::string& directory) {
    std::uint64_t highest = 0;
    std::error_code error;
    std::filesystem::directory_iterator at(directory, error);
    for (; !error && at != std::filesystem::directory_iterator(); at.increment(error))
        highest = std::max(highest, NumberOf(at->path().filename().string()));
    if (error)
        throw ToolError(directory + " cannot be read: " + error.message());
    return highest;
}

std::string FreePath(const std::string& directory, const std::string& stem, const std::string& extension) {
    std::error_code error; // a path that cannot be looked at fails when it is written
    std::string path = directory + "/" + stem + "." + extension;
    for (int number = 2; std::filesystem::exists(path, error); ++number)
        path = directory + "/" + stem + "_" + std::to_string(number) + "." + extension;
    return path;
}

} // namespace VX3::Tool
