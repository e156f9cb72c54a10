// Whole files in and out by plain descriptors, with every short transfer reported.
#pragma once

#include "core/UniqueFd.h"

#include <cstddef>
#include <string>

namespace VX3 {

// Opens a regular file for reading (an empty descriptor for anything else) and stores its length.
UniqueFd OpenForReading(const std::string& path, std::size_t& length);
// Reads up to `size` bytes; the count read, fewer only at the file's end or on an error.
std::size_t ReadUpTo(int fd, unsigned char* data, std::size_t size);
// Creates or truncates the file and writes all. False, and errno says why, when that failed: a partly written
// regular file is removed again.
bool WriteWholeFile(const std::string& path, const unsigned char* data, std::size_t size);

} // namespace VX3
