// Names of picture files that are not taken yet.
#pragma once

#include <cstdint>
#include <string>

namespace VX3::Tool {

// The highest N of the files frame_N... of a directory; 0 without such files. Throws ToolError when the
// directory cannot be read.
std::uint64_t HighestFrame(const std::string& directory);

// DIRECTORY/STEM.EXTENSION, or the first DIRECTORY/STEM_N.EXTENSION from 2 that does not exist yet.
std::string FreePath(const std::string& directory, const std::string& stem, const std::string& extension);

} // namespace VX3::Tool
