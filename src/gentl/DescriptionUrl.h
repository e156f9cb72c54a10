// Where a module's description lies, as its URL says.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace VX3 {

struct DescriptionUrl {
    enum class Kind { Refused, Local, File };

    Kind kind = Kind::Refused;
    std::string why;  // of a refused one, in words
    std::string name; // Local: what the description is called
    std::uint64_t address = 0;
    std::uint32_t length = 0;       // bytes
    std::vector<std::string> paths; // File: where it may stand, in the order to be tried
};

// "local:name;address;length" with hexadecimal numbers, or "file:path", scheme in any case, with or without
// "///" and "?SchemaVersion=...". "file:///x/y" is /x/y, or else, as some write it, x/y in the working folder
// or in `folder` (with its trailing '/').
DescriptionUrl ParseDescriptionUrl(const std::string& url, const std::string& folder);

} // namespace VX3
