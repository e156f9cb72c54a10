// Classes of ASCII characters, independent of the locale.
#pragma once

#include <cstddef>
#include <string_view>

namespace GenApi_3_2 {
namespace Engine {

inline bool IsBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}
inline bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
inline char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
// The digit's value, -1 when it is none.
inline int HexDigit(char c) {
    if (IsDigit(c))
        return c - '0';
    const char lower = Lower(c);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

inline bool EqualsIgnoringCase(std::string_view left, std::string_view right) {
    if (left.size() != right.size())
        return false;
    for (std::size_t i = 0; i < left.size(); ++i)
        if (Lower(left[i]) != Lower(right[i]))
            return false;
    return true;
}

} // namespace Engine
} // namespace GenApi_3_2
