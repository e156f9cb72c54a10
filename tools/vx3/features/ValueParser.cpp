#include "features/ValueParser.h"

#include "base/NearMiss.h"
#include "base/Quantity.h"
#include "base/ToolError.h"

#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace VX3::Tool {

using namespace VX3::GenICam;

namespace {

constexpr double LargestExactDouble = 9007199254740992.0; // 2^53: up to here no integer is lost
constexpr std::size_t MostEntriesListed = 30;

[[noreturn]] void Expected(const std::string& what, const std::string& text) {
    throw ToolError("\"" + text + "\" is not " + what);
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

long ParseIntegerIn(const std::string& text, const std::string& unit) {
    long value = 0;
    if (ParseNumber(text, value) || ParseGroups(text, '.', 10, 4, value) ||
        ParseGroups(text, ':', 16, 6, value))
        return value;
    if (text.find_first_of("0123456789") == std::string::npos)
        Expected("an integer", text);
    const double number = ParseQuantity(text, unit);
    if (number != std::floor(number) || std::abs(number) >= LargestExactDouble)
        Expected(unit.empty() ? "an integer" : "a whole number of " + unit, text);
    return static_cast<long>(number);
}

double ParseFloatIn(const std::string& text, const std::string& unit) {
    return text.find_first_of("0123456789") == std::string::npos ? ParseFloat(text)
                                                                 : ParseQuantity(text, unit);
}

long ParseEnumeration(IEnumeration& enumeration, const std::string& text) {
    std::vector<std::string> names;
    std::vector<std::string> available;
    const std::vector<IEnumEntry*> entries = enumeration.GetEntries();
    for (IEnumEntry* entry : entries) {
        names.push_back(entry->GetSymbolic());
        if (IsAvailable(entry->GetAccessMode()))
            available.push_back(names.back());
    }
    if (const std::string* found = FindName(names, text))
        return entries[static_cast<std::size_t>(found - names.data())]->GetValue();
    long number = 0;
    if (ParseNumber(text, number))
        for (IEnumEntry* entry : entries)
            if (entry->GetValue() == number)
                return number;
    Expected("one of " + Listed(available, MostEntriesListed) + DidYouMean(text, available), text);
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
