#include "base/NearMiss.h"

#include <algorithm>
#include <cctype>
#include <numeric>
#include <utility>

namespace VX3::Tool {

namespace {

constexpr std::size_t LongestName = 80;
constexpr std::size_t MostSuggestions = 3;

// Letters inserted, left out, replaced or swapped with their neighbour.
std::size_t Distance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> before;
    std::vector<std::size_t> above(b.size() + 1);
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(above.begin(), above.end(), 0);
    for (std::size_t i = 1; i <= a.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t replaced = above[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            row[j] = std::min({above[j] + 1, row[j - 1] + 1, replaced});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                row[j] = std::min(row[j], before[j - 2] + 1);
        }
        before = std::exchange(above, row);
    }
    return above.back();
}

// How far a name is from what was typed, SIZE_MAX when too far to be meant. The beginning of a name, or a
// part of it, is nearer than it looks.
std::size_t Strangeness(const std::string& typed, const std::string& name) {
    if (typed.empty() || typed.size() > LongestName || name.size() > LongestName)
        return SIZE_MAX;
    const std::size_t distance = Distance(typed, name);
    if (distance <= std::max<std::size_t>(1, typed.size() / 4))
        return distance;
    if (typed.size() < 3)
        return SIZE_MAX;
    const std::size_t place = name.find(typed);
    if (place == std::string::npos)
        return SIZE_MAX;
    return LongestName + place + name.size() - typed.size();
}

} // namespace

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

const std::string* FindName(const std::vector<std::string>& names, const std::string& text) {
    const std::string* similar = nullptr;
    std::size_t similarCount = 0;
    const std::string lower = Lower(text);
    for (const std::string& name : names) {
        if (name == text)
            return &name;
        if (name.size() == text.size() && Lower(name) == lower) {
            similar = &name;
            ++similarCount;
        }
    }
    return similarCount == 1 ? similar : nullptr;
}

std::string DidYouMean(const std::string& text, const std::vector<std::string>& names) {
    const std::string typed = Lower(text);
    std::vector<std::pair<std::size_t, std::string>> near;
    for (const std::string& name : names)
        if (const std::size_t strangeness = Strangeness(typed, Lower(name)); strangeness != SIZE_MAX)
            near.emplace_back(strangeness, name);
    std::stable_sort(near.begin(), near.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    near.resize(std::min(near.size(), MostSuggestions));
    if (near.empty())
        return {};
    std::string words = "; did you mean " + near.front().second;
    for (std::size_t i = 1; i < near.size(); ++i)
        words += (i + 1 == near.size() ? " or " : ", ") + near[i].second;
    return words + "?";
}

std::string Listed(const std::vector<std::string>& names, std::size_t most) {
    std::string text;
    const std::size_t shown = std::min(names.size(), most);
    for (std::size_t i = 0; i < shown; ++i)
        text += (i == 0 ? "" : ", ") + names[i];
    if (shown < names.size())
        text += " and " + std::to_string(names.size() - shown) + " more";
    return text;
}

} // namespace VX3::Tool
