// Byte images as text.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace VX3::Test {

using Bytes = std::vector<std::uint8_t>;

// "42 0100" -> 3 bytes. Blanks separate nothing.
inline Bytes FromHex(std::string text) {
    Bytes bytes;
    std::string digits;
    for (const char c : text)
        if (c != ' ')
            digits += c;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoul(digits.substr(i, 2), nullptr, 16)));
    return bytes;
}

} // namespace VX3::Test
