// Numbers as GenApi shows and reads them: by representation and display notation, independent of the locale.
#pragma once

#include "GenApi/Types.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace GenApi_3_2 {
namespace Engine {

std::string IntegerText(std::int64_t value, ERepresentation representation);
// Takes decimal and hexadecimal numbers, and dotted or colon-separated addresses.
std::optional<std::int64_t> IntegerOfText(std::string_view text);

// Without a precision the shortest text that reads back as the same number.
std::string FloatText(double value, EDisplayNotation notation, std::optional<std::int64_t> precision);

// "0x" and two digits a byte.
std::string BytesText(const std::uint8_t* bytes, std::size_t count);

// The items of a list that is separated by semicolons, commas or blanks.
std::vector<std::string_view> SplitList(std::string_view text);

ERepresentation RepresentationOfText(std::string_view text);
EDisplayNotation DisplayNotationOfText(std::string_view text);

} // namespace Engine
} // namespace GenApi_3_2
