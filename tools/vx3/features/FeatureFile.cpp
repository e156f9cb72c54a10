#include "features/FeatureFile.h"

#include "base/Console.h"
#include "base/ToolError.h"

namespace VX3::Tool {

namespace {

constexpr const char* Blanks = " \t\r";

std::string Trimmed(const std::string& text) {
    const std::size_t first = text.find_first_not_of(Blanks);
    if (first == std::string::npos)
        return {};
    return text.substr(first, text.find_last_not_of(Blanks) - first + 1);
}

// A feature's name or a selector's value has to survive being written: a readable character in every place.
bool IsReadable(const std::string& text) {
    return text == Printable(text);
}

// "a=b,c=d" between the brackets; false when it is something else.
bool ParseSelectors(const std::string& text, FeatureLine& line) {
    std::size_t from = 0;
    while (from <= text.size()) {
        const std::size_t comma = std::min(text.find(',', from), text.size());
        const std::string pair = text.substr(from, comma - from);
        const std::size_t equals = pair.find('=');
        const std::string name = Trimmed(pair.substr(0, equals));
        if (equals == std::string::npos || name.empty())
            return false;
        line.selectors.emplace_back(name, Trimmed(pair.substr(equals + 1)));
        from = comma + 1;
    }
    return IsReadable(text);
}

bool ParseValue(const std::string& text, FeatureLine& line) {
    if (text.empty() || text.front() != '"') {
        line.value = text;
        return true;
    }
    const Json json = Json::parse(text, nullptr, false);
    if (!json.is_string())
        return false;
    line.value = json.get<std::string>();
    return true;
}

bool ParseLine(const std::string& text, FeatureLine& line) {
    std::size_t nameEnd = text.find_first_of("[=");
    if (nameEnd == std::string::npos)
        return false;
    line.feature = Trimmed(text.substr(0, nameEnd));
    if (text[nameEnd] == '[') {
        const std::size_t close = text.find(']', nameEnd);
        if (close == std::string::npos ||
            !ParseSelectors(text.substr(nameEnd + 1, close - nameEnd - 1), line))
            return false;
        nameEnd = text.find('=', close);
        if (nameEnd == std::string::npos || !Trimmed(text.substr(close + 1, nameEnd - close - 1)).empty())
            return false;
    }
    return !line.feature.empty() && IsReadable(line.feature) &&
           ParseValue(Trimmed(text.substr(nameEnd + 1)), line);
}

} // namespace

std::string FeatureLine::Label() const {
    std::string label = feature;
    for (std::size_t i = 0; i < selectors.size(); ++i)
        label += (i == 0 ? "[" : ",") + selectors[i].first + "=" + selectors[i].second;
    return selectors.empty() ? label : label + "]";
}

void WriteLine(std::ostream& out, const FeatureLine& line, bool quoted) {
    out << Printable(line.Label()) << " = " << (quoted ? JsonText(line.value, -1) : Printable(line.value))
        << '\n';
}

std::vector<FeatureLine> ReadLines(std::istream& in) {
    std::vector<FeatureLine> lines;
    unsigned int number = 0;
    for (std::string text; std::getline(in, text);) {
        ++number;
        const std::string content = Trimmed(text);
        if (content.empty() || content.front() == '#')
            continue;
        FeatureLine line;
        line.number = number;
        if (!ParseLine(content, line))
            throw ToolError("line " + std::to_string(number) + " is no \"Feature = value\": " + content);
        lines.push_back(std::move(line));
    }
    return lines;
}

} // namespace VX3::Tool
