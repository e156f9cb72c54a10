// Takes one file out of a zip archive in memory, or makes one: cameras publish their descriptions so. Pure
// functions over foreign bytes, for every platform layer.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace VX3 {

// What an archive may cost whoever opens it, in bytes.
struct ZipLimits {
    std::size_t archive = 4u << 20;
    std::size_t content = 16u << 20; // of the file, unpacked
};

struct ZipContent {
    std::string bytes;
    std::string failure; // why there are no bytes, in words; empty when there are
};

// True when the bytes begin as a zip archive does.
bool IsZipArchive(std::string_view bytes);

// The only file of the archive whose name ends in `extension`, given in lower case: ".xml". Fails when there
// is none or more than one, when it is damaged, encrypted or larger than the limits.
[[nodiscard]] ZipContent UnzipOnly(std::string_view bytes, std::string_view extension,
                                   const ZipLimits& limits = {});

// An archive with this one file; empty where there is no memory for it.
[[nodiscard]] std::string ZipOne(const std::string& name, std::string_view content);

} // namespace VX3
