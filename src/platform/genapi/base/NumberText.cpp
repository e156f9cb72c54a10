#include "platform/genapi/base/NumberText.h"

#include "platform/genapi/base/Characters.h"

#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <locale.h>
#include <string>

namespace GenApi_3_2 {
namespace Engine {

namespace {

// Takes one sign off; true when it was a minus.
bool TakeSign(std::string_view& text) {
    const bool negative = !text.empty() && text[0] == '-';
    if (negative || (!text.empty() && text[0] == '+'))
        text.remove_prefix(1);
    return negative;
}

bool TakeHexPrefix(std::string_view& text) {
    if (text.size() < 3 || text[0] != '0' || (text[1] | 0x20) != 'x')
        return false;
    text.remove_prefix(2);
    return true;
}

std::optional<std::uint64_t> ParseMagnitude(std::string_view text, unsigned base) {
    if (text.empty())
        return std::nullopt;
    std::uint64_t value = 0;
    for (char c : text) {
        const int digit = HexDigit(c);
        if (digit < 0 || static_cast<unsigned>(digit) >= base)
            return std::nullopt;
        const std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
        if (value > (most - static_cast<unsigned>(digit)) / base)
            return std::nullopt;
        value = value * base + static_cast<unsigned>(digit);
    }
    return value;
}

// Digits, at most one point, at most one exponent: what keeps strtod from reading anything else.
bool IsDecimalFloat(std::string_view text) {
    std::size_t i = 0;
    std::size_t digits = 0;
    for (; i < text.size() && IsDigit(text[i]); ++i)
        ++digits;
    if (i < text.size() && text[i] == '.')
        for (++i; i < text.size() && IsDigit(text[i]); ++i)
            ++digits;
    if (digits == 0)
        return false;
    if (i < text.size() && (text[i] | 0x20) == 'e') {
        ++i;
        if (i < text.size() && (text[i] == '+' || text[i] == '-'))
            ++i;
        if (i == text.size())
            return false;
        while (i < text.size() && IsDigit(text[i]))
            ++i;
    }
    return i == text.size();
}

double ConvertDecimal(std::string_view text) {
    static const locale_t plain = newlocale(LC_ALL_MASK, "C", locale_t{});
    return strtod_l(std::string(text).c_str(), nullptr, plain);
}

std::optional<double> ParseUnsignedFloat(std::string_view text) {
    if (TakeHexPrefix(text)) {
        const std::optional<std::uint64_t> value = ParseMagnitude(text, 16);
        return value ? std::optional<double>(static_cast<double>(*value)) : std::nullopt;
    }
    if (EqualsIgnoringCase(text, "inf") || EqualsIgnoringCase(text, "infinity"))
        return std::numeric_limits<double>::infinity();
    if (EqualsIgnoringCase(text, "nan"))
        return std::numeric_limits<double>::quiet_NaN();
    // Up to 2^53 an integer converts exactly; most numbers are such.
    constexpr std::size_t ExactDigits = 15;
    if (text.size() <= ExactDigits)
        if (const std::optional<std::uint64_t> value = ParseMagnitude(text, 10))
            return static_cast<double>(*value);
    return IsDecimalFloat(text) ? std::optional<double>(ConvertDecimal(text)) : std::nullopt;
}

} // namespace

std::string_view Strip(std::string_view text) {
    while (!text.empty() && IsBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && IsBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

std::optional<std::int64_t> ParseInteger(std::string_view text) {
    text = Strip(text);
    const bool negative = TakeSign(text);
    std::string_view digits = text;
    const unsigned base = TakeHexPrefix(digits) ? 16 : 10;
    constexpr std::uint64_t LowestMagnitude = std::uint64_t{1} << 63;
    if (const std::optional<std::uint64_t> magnitude = ParseMagnitude(digits, base)) {
        if (negative && *magnitude > LowestMagnitude)
            return std::nullopt;
        return static_cast<std::int64_t>(negative ? 0 - *magnitude : *magnitude);
    }
    if (base == 16 || text.find_first_of(".eE") == std::string_view::npos || !IsDecimalFloat(text))
        return std::nullopt;
    const double value = ConvertDecimal(text);
    if (!(value < static_cast<double>(LowestMagnitude)) || value != std::trunc(value))
        return std::nullopt;
    return static_cast<std::int64_t>(negative ? -value : value);
}

std::optional<double> ParseFloat(std::string_view text) {
    text = Strip(text);
    const bool negative = TakeSign(text);
    const std::optional<double> value = ParseUnsignedFloat(text);
    if (!value)
        return std::nullopt;
    return negative ? -*value : *value;
}

std::optional<bool> ParseBoolean(std::string_view text) {
    text = Strip(text);
    if (EqualsIgnoringCase(text, "yes") || EqualsIgnoringCase(text, "true"))
        return true;
    if (EqualsIgnoringCase(text, "no") || EqualsIgnoringCase(text, "false"))
        return false;
    const std::optional<std::int64_t> value = ParseInteger(text);
    return value ? std::optional<bool>(*value != 0) : std::nullopt;
}

} // namespace Engine
} // namespace GenApi_3_2
