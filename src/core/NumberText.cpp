#include "core/NumberText.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <locale.h>

namespace VX3 {

namespace {

locale_t PlainLocale() {
    static const locale_t plain = ::newlocale(LC_ALL_MASK, "C", nullptr);
    return plain;
}

// printf knows no locale but the thread's.
class InPlainLocale {
public:
    InPlainLocale() : before_(::uselocale(PlainLocale())) {}
    ~InPlainLocale() { ::uselocale(before_); }
    InPlainLocale(const InPlainLocale&) = delete;
    InPlainLocale& operator=(const InPlainLocale&) = delete;

private:
    locale_t before_;
};

std::string SignificantText(int digits, double value) {
    std::array<char, 64> text{};
    const InPlainLocale plain;
    std::snprintf(text.data(), text.size(), "%.*g", digits, value);
    return text.data();
}

// Where the number ends; null without one, and when it does not fit.
const char* ReadReal(const std::string& text, double& value) {
    char* end = nullptr;
    errno = 0;
    const double read = ::strtod_l(text.c_str(), &end, PlainLocale());
    if (end == text.c_str() || errno == ERANGE)
        return nullptr;
    value = read;
    return end;
}

} // namespace

bool ParseInteger(const std::string& text, std::int64_t& value) {
    const char* const end = text.data() + text.size();
    const bool negative = !text.empty() && text[0] == '-';
    const bool hexadecimal = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    const char* first = text.data() + (hexadecimal ? 2 : !text.empty() && text[0] == '+' ? 1 : 0);
    if (first != text.data() && first != end && *first == '-')
        return false;
    if (negative || !hexadecimal) {
        std::int64_t read = 0;
        const auto [stop, error] = std::from_chars(first, end, read);
        if (error != std::errc() || stop != end)
            return false;
        value = read;
        return true;
    }
    std::uint64_t bits = 0; // a mask may use all of them
    const auto [stop, error] = std::from_chars(first, end, bits, 16);
    if (error != std::errc() || stop != end)
        return false;
    value = static_cast<std::int64_t>(bits);
    return true;
}

bool ParseReal(const std::string& text, double& value) {
    double read = 0;
    const char* end = ReadReal(text, read);
    if (end != text.c_str() + text.size())
        return false;
    value = read;
    return true;
}

bool ParseLeadingReal(const std::string& text, double& value) {
    return ReadReal(text, value) != nullptr;
}

std::string FixedText(double value) {
    std::array<char, 512> text{}; // the largest double has 309 digits before the point
    const InPlainLocale plain;
    std::snprintf(text.data(), text.size(), "%.6f", value);
    return text.data();
}

std::string ShortestText(double value) {
    for (int digits = 15; digits < 17; ++digits) {
        std::string text = SignificantText(digits, value);
        double back = 0;
        if (ParseReal(text, back) && back == value)
            return text;
    }
    return SignificantText(17, value);
}

} // namespace VX3
