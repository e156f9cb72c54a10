// Takes the one description out of a zip archive in memory. Pure functions over foreign bytes.
#pragma once

#include <string>
#include <string_view>

namespace GenApi_3_2 {
namespace Engine {

// True when the bytes begin as a zip archive does.
bool IsZipArchive(std::string_view bytes);

// The only file of the archive whose name ends in .xml. Throws GenICam_3_2::InvalidArgumentException when
// there is none or more than one, when it is damaged, encrypted or larger than a description may be.
std::string UnzipDescription(std::string_view bytes, const std::string& fileName);

} // namespace Engine
} // namespace GenApi_3_2
