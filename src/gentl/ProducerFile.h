// Where producers are looked for, and what can be told about a file before it is loaded.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace VX3 {

// The entries of a directory whose extension is exactly ".cti", in the order the file system gives them.
// Empty when it is no directory.
std::vector<std::string> ProducerFilesIn(const std::string& directory);

// The producers that a search path names: directories, or producers themselves, separated by ':'. Relative
// entries are left out.
std::vector<std::string> ProducerFilesOfPath(const std::string& searchPath);

// GENICAM_GENTL64_PATH, unless the configuration key "GenTLEnvironmentPath" is false.
std::vector<std::string> ProducerFilesOfEnvironment();

// Empty, or why the file cannot be loaded into this process, in words: no regular file, no shared library,
// made for another kind of processor.
std::string WhyNotLoadable(const std::string& path);
// The same for the first bytes of a file.
std::string WhyNoLibrary(const unsigned char* bytes, std::size_t size);

} // namespace VX3
