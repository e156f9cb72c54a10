// How a description that cannot be used at all is reported: one text that names file, line and node.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace GenApi_3_2 {
namespace Engine {

// Throws GenICam_3_2::InvalidArgumentException. Line 0 and an empty node stand for "no such place".
[[noreturn]] void ThrowDescriptionError(std::string_view fileName, std::uint32_t line, std::string_view node,
                                        std::string_view reason);

// Names and texts of the file, in quotes, for messages that stay readable.
std::string Quoted(std::string_view text);

} // namespace Engine
} // namespace GenApi_3_2
