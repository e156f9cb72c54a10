#include "platform/genapi/base/ValueText.h"

#include "platform/genapi/base/NumberText.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <locale>
#include <sstream>

namespace GenApi_3_2 {
namespace Engine {
namespace {

std::string Hexadecimal(std::uint64_t value, int digits) {
    static const char Digits[] = "0123456789ABCDEF";
    std::string text;
    for (int shift = 60; shift >= 0; shift -= 4)
        if (!text.empty() || shift / 4 < digits || (value >> shift) != 0)
            text += Digits[(value >> shift) & 15];
    return text;
}

std::string Separated(std::uint64_t value, int count, char separator, bool isHexadecimal) {
    std::string text;
    for (int i = count - 1; i >= 0; --i) {
        const std::uint64_t part = (value >> (8 * i)) & 0xFF;
        text += isHexadecimal ? Hexadecimal(part, 2) : std::to_string(part);
        if (i > 0)
            text += separator;
    }
    return text;
}

// `count` numbers of one byte with the separator between them.
std::optional<std::int64_t> JoinedBytes(std::string_view text, int count, char separator,
                                        bool isHexadecimal) {
    std::uint64_t value = 0;
    for (int i = 0; i < count; ++i) {
        const std::size_t end = i + 1 < count ? text.find(separator) : text.size();
        if (end == std::string_view::npos || end == 0 || end > 3)
            return std::nullopt;
        const std::string part = (isHexadecimal ? "0x" : "") + std::string(text.substr(0, end));
        const auto number = ParseInteger(part);
        if (!number || *number < 0 || *number > 255)
            return std::nullopt;
        value = (value << 8) | static_cast<std::uint64_t>(*number);
        text.remove_prefix(std::min(text.size(), end + 1));
    }
    return static_cast<std::int64_t>(value);
}

std::string Formatted(double value, std::ios_base::fmtflags format, int precision) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream.setf(format, std::ios_base::floatfield);
    stream << std::setprecision(precision) << value;
    return stream.str();
}

} // namespace

std::string IntegerText(std::int64_t value, ERepresentation representation) {
    const std::uint64_t bits = static_cast<std::uint64_t>(value);
    switch (representation) {
    case HexNumber:
        return "0x" + Hexadecimal(bits, 1);
    case IPV4Address:
        return Separated(bits, 4, '.', false);
    case MACAddress:
        return Separated(bits, 6, ':', true);
    default:
        return std::to_string(value);
    }
}

std::optional<std::int64_t> IntegerOfText(std::string_view text) {
    const std::string_view bare = Strip(text);
    if (const auto number = ParseInteger(bare))
        return number;
    if (const auto address = JoinedBytes(bare, 4, '.', false))
        return address;
    return JoinedBytes(bare, 6, ':', true);
}

std::string FloatText(double value, EDisplayNotation notation, std::optional<std::int64_t> precision) {
    if (std::isnan(value))
        return "NAN";
    if (std::isinf(value))
        return value < 0 ? "-INF" : "INF";
    std::ios_base::fmtflags format{};
    if (notation == fnFixed)
        format = std::ios_base::fixed;
    else if (notation == fnScientific)
        format = std::ios_base::scientific;
    if (precision)
        return Formatted(value, format, static_cast<int>(std::clamp<std::int64_t>(*precision, 0, 40)));
    for (int digits = 6; digits < 17; ++digits) {
        std::string text = Formatted(value, format, digits);
        if (ParseFloat(text) == value)
            return text;
    }
    return Formatted(value, format, 17);
}

std::string BytesText(const std::uint8_t* bytes, std::size_t count) {
    std::string text = "0x";
    for (std::size_t i = 0; i < count; ++i)
        text += Hexadecimal(bytes[i], 2);
    return text;
}

std::vector<std::string_view> SplitList(std::string_view text) {
    constexpr std::string_view Separators = "; ,\t\r\n";
    std::vector<std::string_view> items;
    while (true) {
        const std::size_t first = text.find_first_not_of(Separators);
        if (first == std::string_view::npos)
            return items;
        text.remove_prefix(first);
        const std::size_t count = std::min(text.size(), text.find_first_of(Separators));
        items.push_back(text.substr(0, count));
        text.remove_prefix(count);
    }
}

ERepresentation RepresentationOfText(std::string_view text) {
    static const char* const Names[] = {"Linear",    "Logarithmic", "Boolean",   "PureNumber",
                                        "HexNumber", "IPV4Address", "MACAddress"};
    for (int i = 0; i < _UndefinedRepresentation; ++i)
        if (text == Names[i])
            return static_cast<ERepresentation>(i);
    return _UndefinedRepresentation;
}

EDisplayNotation DisplayNotationOfText(std::string_view text) {
    if (text == "Fixed")
        return fnFixed;
    return text == "Scientific" ? fnScientific : fnAutomatic;
}

} // namespace Engine
} // namespace GenApi_3_2
