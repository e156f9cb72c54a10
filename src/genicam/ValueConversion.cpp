#include "genicam/ValueConversion.h"

#include "core/NumberText.h"

#include <algorithm>
#include <cctype>
#include <cmath>

namespace VX3::GenICam {

namespace {

constexpr double TwoTo63 = 9223372036854775808.0;

std::optional<long> WholeNumber(double value) {
    if (std::trunc(value) != value || value < -TwoTo63 || value >= TwoTo63) // NaN is unequal to itself
        return std::nullopt;
    return static_cast<long>(value);
}

std::string LowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

} // namespace

std::optional<long> ToInteger(const NodeValue& value) {
    switch (value.GetType()) {
    case NodeValue::Type::Integer:
        return value.AsInteger();
    case NodeValue::Type::Float:
        return WholeNumber(value.AsFloat());
    case NodeValue::Type::Boolean:
        return value.AsBoolean() ? 1 : 0;
    case NodeValue::Type::String: {
        std::int64_t integer = 0;
        double real = 0;
        if (ParseInteger(value.AsString(), integer))
            return integer;
        return ParseReal(value.AsString(), real) ? WholeNumber(real) : std::nullopt;
    }
    default:
        return std::nullopt;
    }
}

std::optional<double> ToReal(const NodeValue& value) {
    double real = 0;
    switch (value.GetType()) {
    case NodeValue::Type::Integer:
        real = static_cast<double>(value.AsInteger());
        if (WholeNumber(real) != value.AsInteger()) // more than 53 bits
            return std::nullopt;
        return real;
    case NodeValue::Type::Float:
        real = value.AsFloat();
        return std::isnan(real) ? std::nullopt : std::optional<double>(real);
    case NodeValue::Type::Boolean:
        return value.AsBoolean() ? 1.0 : 0.0;
    case NodeValue::Type::String:
        return ParseReal(value.AsString(), real) && !std::isnan(real) ? std::optional<double>(real)
                                                                      : std::nullopt;
    default:
        return std::nullopt;
    }
}

std::optional<bool> ToBoolean(const NodeValue& value) {
    if (value.GetType() == NodeValue::Type::Boolean)
        return value.AsBoolean();
    if (value.GetType() == NodeValue::Type::String) {
        const std::string text = LowerCase(value.AsString());
        if (text == "true" || text == "false")
            return text == "true";
    }
    const std::optional<long> integer = ToInteger(value);
    if (!integer || (*integer != 0 && *integer != 1))
        return std::nullopt;
    return *integer == 1;
}

std::optional<std::string> ToText(const NodeValue& value) {
    switch (value.GetType()) {
    case NodeValue::Type::Integer:
        return std::to_string(value.AsInteger());
    case NodeValue::Type::Float:
        return ShortestText(value.AsFloat());
    case NodeValue::Type::Boolean:
        return value.AsBoolean() ? "true" : "false";
    case NodeValue::Type::String:
        return value.AsString();
    default:
        return std::nullopt;
    }
}

std::string Shown(const NodeValue& value) {
    if (value.GetType() == NodeValue::Type::Buffer)
        return std::to_string(value.BufferLength()) + " bytes";
    if (value.GetType() == NodeValue::Type::Command)
        return "a command";
    const std::string text = ToText(value).value_or("no value");
    return value.GetType() == NodeValue::Type::String ? "\"" + text + "\"" : text;
}

} // namespace VX3::GenICam
