// Whole files, with the system's own words where they fail.
#pragma once

#include <string>

namespace VX3::Tool {

// Throw ToolError. A file larger than 64 MiB is refused.
std::string ReadWholeFile(const std::string& path);
// The old content stays until the new one is on the disk.
void WriteWholeFile(const std::string& path, const std::string& content);

// "No space left on device".
std::string ErrorWords(int error);

} // namespace VX3::Tool
