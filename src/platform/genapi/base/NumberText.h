// Numbers as descriptions write them: decimal ("010" is ten), hexadecimal with 0x, signs before either,
// blanks around; floating values also in hexadecimal or as INF/NAN. Pure functions, independent of the
// locale.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace GenApi_3_2 {
namespace Engine {

// Without blanks, tabs and line ends at both sides.
std::string_view Strip(std::string_view text);

// All 64 bits count: 0xFFFFFFFFFFFFFFFF is -1, and decimal values up to 2^64-1 are taken by their bits. Whole
// floating forms ("1e3", "2.0") are accepted; anything else, or more than 64 bits, gives nothing.
std::optional<std::int64_t> ParseInteger(std::string_view text);

// Integers of both forms, decimal fractions and exponents, [+-]INF and NAN. Hexadecimal values are unsigned.
std::optional<double> ParseFloat(std::string_view text);

// "true"/"Yes"/non-zero numbers and "false"/"No"/0.
std::optional<bool> ParseBoolean(std::string_view text);

} // namespace Engine
} // namespace GenApi_3_2
