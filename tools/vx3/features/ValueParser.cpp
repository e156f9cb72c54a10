#include "features/ValueParser.h"

#include "base/ToolError.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace VX3::Tool {

using namespace VX3::GenICam;

namespace {

[[noreturn]] void Expected(const std::string& what, const std::string& text) {
    throw ToolError("\"" + text + "\" is not " + what);
}

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

// `count` numbers below 256 in `base`, separated by `separator`, as one big-endian number; false otherwise.
bool ParseGroups(const std::string& text, char separator, int base, int count, long& value) {
    value = 0;
    const char* at = text.c_str();
    for (int i = 0; i < count; ++i) {
        if (i > 0 && *at++ != separator)
            return false;
        if (std::isxdigit(static_cast<unsigned char>(*at)) == 0)
            return false;
        char* end = nullptr;
        const unsigned long group = std::strtoul(at, &end, base);
        if (end == at || group > 255)
            return false;
        value = value * 256 + static_cast<long>(group);
        at = end;
    }
    return *at == '\0';
}

bool ParseNumber(const std::string& text, long& value) {
    const char* digits = text.c_str();
    const bool negative = *digits == '-';
    if (*digits == '-' || *digits == '+')
        ++digits;
    const bool hexadecimal = digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X');
    if (hexadecimal)
        digits += 2;
    if (std::isxdigit(static_cast<unsigned char>(*digits)) == 0)
        return false;
    char* end = nullptr;
    errno = 0;
    const unsigned long magnitude = std::strtoul(digits, &end, hexadecimal ? 16 : 10);
    const unsigned long most =
        hexadecimal ? ~0UL : static_cast<unsigned long>(INT64_MAX) + (negative ? 1 : 0);
    if (errno != 0 || end == digits || *end != '\0' || magnitude > most)
        return false;
    value = static_cast<long>(negative ? 0UL - magnitude : magnitude);
    return true;
}

} // namespace

long ParseInteger(const std::string& text) {
    long value = 0;
    if (ParseNumber(text, value) || ParseGroups(text, '.', 10, 4, value) ||
        ParseGroups(text, ':', 16, 6, value))
        return value;
    Expected("an integer", text);
}

double ParseFloat(const std::string& text) {
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || std::isnan(value))
        Expected("a number", text);
    return value;
}

bool ParseBoolean(const std::string& text) {
    const std::string word = Lower(text);
    if (word == "true" || word == "on" || word == "yes" || word == "1")
        return true;
    if (word == "false" || word == "off" || word == "no" || word == "0")
        return false;
    Expected("true or false", text);
}

long ParseEnumeration(IEnumeration& enumeration, const std::string& text) {
    std::string names;
    const std::vector<IEnumEntry*> entries = enumeration.GetEntries();
    for (IEnumEntry* entry : entries) {
        if (entry->GetSymbolic() == text)
            return entry->GetValue();
        if (IsAvailable(entry->GetAccessMode()))
            names += (names.empty() ? "" : ", ") + entry->GetSymbolic();
    }
    long number = 0;
    if (ParseNumber(text, number))
        for (IEnumEntry* entry : entries)
            if (entry->GetValue() == number)
                return number;
    Expected("one of " + names, text);
}

std::vector<unsigned char> ParseBytes(const std::string& text) {
    const std::size_t first = text.rfind("0x", 0) == 0 ? 2 : 0;
    if ((text.size() - first) % 2 != 0 ||
        text.find_first_not_of("0123456789abcdefABCDEF", first) != std::string::npos)
        Expected("a row of hexadecimal bytes", text);
    std::vector<unsigned char> bytes;
    for (std::size_t i = first; i < text.size(); i += 2)
        bytes.push_back(static_cast<unsigned char>(std::strtoul(text.substr(i, 2).c_str(), nullptr, 16)));
    return bytes;
}

} // namespace VX3::Tool
