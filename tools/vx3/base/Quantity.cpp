#include "base/Quantity.h"

#include "base/NearMiss.h"
#include "base/ToolError.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace VX3::Tool {

namespace {

// One `name` is factor * 10^exponent of its kind's base unit.
struct Unit {
    const char* name;
    char kind;
    double factor;
    int exponent;
};

constexpr Unit Units[] = {
    {"ns", 't', 1, -9},  {"us", 't', 1, -6}, {"\xC2\xB5s", 't', 1, -6}, {"\xCE\xBCs", 't', 1, -6},
    {"ms", 't', 1, -3},  {"s", 't', 1, 0},   {"min", 't', 60, 0},       {"h", 't', 3600, 0},
    {"Hz", 'f', 1, 0},   {"kHz", 'f', 1, 3}, {"MHz", 'f', 1, 6},        {"GHz", 'f', 1, 9},
    {"fps", 'f', 1, 0},  {"bps", 'r', 1, 0}, {"kbps", 'r', 1, 3},       {"Mbps", 'r', 1, 6},
    {"Gbps", 'r', 1, 9}, {"Bps", 'r', 8, 0}, {"kBps", 'r', 8, 3},       {"MBps", 'r', 8, 6},
    {"GBps", 'r', 8, 9}, {"B", 'b', 1, 0},   {"kB", 'b', 1, 3},         {"MB", 'b', 1, 6},
};

const Unit* FindUnit(const std::string& name) {
    std::vector<std::string> names;
    for (const Unit& unit : Units)
        names.emplace_back(unit.name);
    const std::string* found = FindName(names, name);
    return found != nullptr ? &Units[found - names.data()] : nullptr;
}

// Whole powers of ten multiply or divide, so that 5 ms are 5000 us and not 4999.999.
double Converted(double value, const Unit& from, const Unit& to) {
    const int exponent = from.exponent - to.exponent;
    const double power = std::pow(10.0, std::abs(exponent));
    const double scaled = value * from.factor / to.factor;
    return exponent >= 0 ? scaled * power : scaled / power;
}

} // namespace

double ParseQuantity(const std::string& text, const std::string& unit) {
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (end == text.c_str() || !std::isfinite(value))
        throw ToolError("\"" + text + "\" is not a number");
    end += std::strspn(end, " ");
    const std::string given = end;
    if (given.empty() || Lower(given) == Lower(unit))
        return value;
    const Unit* from = FindUnit(given);
    const Unit* to = FindUnit(unit);
    if (from == nullptr || to == nullptr || from->kind != to->kind)
        throw ToolError("\"" + text + "\" is not a number" +
                        (unit.empty() ? " (it has no unit)" : " of " + unit));
    return Converted(value, *from, *to);
}

} // namespace VX3::Tool
