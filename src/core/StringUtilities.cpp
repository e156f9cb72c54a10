#include "vx3/core/Utilities.h"

#include <array>
#include <cstdio>

namespace VX3 {

std::string StringFormatVa(const char* fmt, va_list args) {
    std::array<char, 512> text{};
    if (std::vsnprintf(text.data(), text.size(), fmt, args) < 0)
        return {};
    return text.data();
}

std::string StringFormat(const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    std::string text = StringFormatVa(fmt, args);
    va_end(args);
    return text;
}

std::vector<std::string> SplitString(const std::string& s, char sep) {
    std::vector<std::string> pieces;
    std::size_t start = 0;
    for (std::size_t end = s.find(sep); end != std::string::npos; end = s.find(sep, start)) {
        pieces.push_back(s.substr(start, end - start));
        start = end + 1;
    }
    if (start < s.size())
        pieces.push_back(s.substr(start));
    return pieces;
}

std::vector<std::string> SplitStringByColon(std::string s) {
    const std::size_t colon = s.find(':');
    if (colon == std::string::npos)
        return {std::move(s)};
    return {s.substr(0, colon), s.substr(colon + 1)};
}

std::uint64_t AscH2Integer(const std::string& s) {
    std::uint64_t value = 0;
    for (const char c : s) {
        unsigned int digit = 0;
        if (c >= '0' && c <= '9')
            digit = static_cast<unsigned int>(c - '0');
        else if (c >= 'a' && c <= 'f')
            digit = static_cast<unsigned int>(c - 'a') + 10U;
        else if (c >= 'A' && c <= 'F')
            digit = static_cast<unsigned int>(c - 'A') + 10U;
        else
            return 0;
        value = (value << 4) | digit;
    }
    return value;
}

std::string Ipv4Text(std::uint32_t address) {
    return StringFormat("%u.%u.%u.%u", address >> 24, (address >> 16) & 0xFFU, (address >> 8) & 0xFFU,
                        address & 0xFFU);
}

} // namespace VX3
