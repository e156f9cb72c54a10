#include "features/FeatureSaver.h"

#include "base/Console.h"
#include "base/NearMiss.h"
#include "base/ToolError.h"
#include "features/FeatureText.h"

#include <utility>

namespace VX3::Tool {

using namespace VX3::GenICam;

namespace {

constexpr std::size_t MostNamed = 4;

std::string NamesOf(const std::vector<INode*>& features) {
    std::vector<std::string> names;
    names.reserve(features.size());
    for (const INode* node : features)
        names.push_back(node->GetName());
    return Listed(names, MostNamed);
}

} // namespace

FeatureSaver::FeatureSaver(const INodeMap& nodes, std::ostream& out, bool everything, FeatureWatch watch,
                           Limits limits)
    : nodes_(nodes),
      graph_(nodes),
      out_(out),
      everything_(everything),
      watch_(std::move(watch)),
      limits_(limits) {}

bool FeatureSaver::IsSaved(const INode& node) const {
    return HasValue(node.GetPrincipalInterfaceType()) &&
           (node.IsStreamable() || (everything_ && node.IsFeature()));
}

FeatureSaver::Result FeatureSaver::Save() {
    Features selectors;
    std::vector<Names> order; // of the groups, by their first feature
    std::map<Names, Features> groups;
    for (INode* node : nodes_.GetNodes()) {
        if (node == nullptr || !IsSaved(*node))
            continue;
        const Names selecting = graph_.SelectorsOf(node->GetName());
        if (!selecting.empty()) {
            if (groups.count(selecting) == 0)
                order.push_back(selecting);
            groups[selecting].push_back(node);
        } else if (graph_.IsSelector(node->GetName())) {
            selectors.push_back(node);
        } else {
            SaveFeature(*node, {});
        }
    }
    for (const Names& selecting : order)
        SaveSelected(selecting, groups[selecting]);
    SaveAll(selectors, {});
    return result_;
}

// False, having told why, once nothing more can or may be saved.
bool FeatureSaver::MayGoOn() {
    result_.interrupted = result_.interrupted || watch_.interrupted();
    const bool tooMuch = settings_ >= limits_.settings || lines_ >= limits_.lines ||
                         static_cast<std::size_t>(out_.tellp()) >= limits_.bytes;
    if (tooMuch && !std::exchange(full_, true))
        result_.omitted.push_back("this camera has more settings than a file may hold: the rest is left out");
    return !full_ && !result_.gone && !result_.interrupted;
}

void FeatureSaver::Problem(const std::string& text, const std::string& feature) {
    result_.problems.push_back(text);
    result_.gone = result_.gone || watch_.gone(feature);
}

void FeatureSaver::SaveSelected(const Names& selectors, const Features& features) {
    if (!MayGoOn())
        return;
    try {
        const Setting before = PresentSetting(selectors);
        if (!HasFewSettings(selectors)) {
            result_.omitted.push_back(NamesOf(features) + ": " + Listed(selectors, MostNamed) +
                                      " have too many settings together; only the present one is saved");
            SaveAll(features, before);
            return;
        }
        Setting setting;
        Walk(selectors, 0, setting, features);
        Restore(before);
    } catch (const ToolError& error) {
        Problem(error.what(), selectors.front());
    }
}

// Judged by what can be chosen now; an inner selector may offer more under another value of the outer one,
// which the other limits bound.
bool FeatureSaver::HasFewSettings(const Names& selectors) const {
    std::size_t product = 1;
    for (const std::string& name : selectors) {
        bool tooMany = false;
        std::size_t count = 0;
        InWords(name, [&] {
            if (INode* node = nodes_.GetNode(name))
                count = SelectorValues(*node, limits_.settingsOfAGroup, tooMany).size();
        });
        product *= std::max<std::size_t>(count, 1);
        if (tooMany || product > limits_.settingsOfAGroup)
            return false;
    }
    return true;
}

FeatureSaver::Setting FeatureSaver::PresentSetting(const Names& selectors) {
    Setting setting;
    for (const std::string& name : selectors)
        InWords(name, [&] {
            INode* node = nodes_.GetNode(name);
            if (node != nullptr && node->GetAccessMode() == EAccessMode::ReadWrite)
                setting.emplace_back(name, ReadText(*node, false, true));
        });
    return setting;
}

void FeatureSaver::Restore(const Setting& setting) {
    for (const auto& [name, value] : setting)
        try {
            if (INode* node = nodes_.GetNode(name);
                node && !result_.gone && IsWritable(node->GetAccessMode()))
                WriteText(*node, value);
        } catch (const ToolError& error) {
            Problem(error.what(), name);
        }
}

// A selector that cannot be moved leaves its features as they stand now, without naming it.
void FeatureSaver::Walk(const Names& selectors, std::size_t depth, Setting& setting,
                        const Features& features) {
    if (depth == selectors.size()) {
        ++settings_;
        SaveAll(features, setting);
        return;
    }
    INode* selector = nodes_.GetNode(selectors[depth]);
    Names values;
    bool tooMany = false;
    InWords(selectors[depth], [&] {
        if (selector != nullptr)
            values = SelectorValues(*selector, limits_.settingsOfAGroup, tooMany);
    });
    if (values.empty())
        Walk(selectors, depth + 1, setting, features);
    for (const std::string& value : values) {
        if (!MayGoOn())
            return;
        try {
            if (WriteText(*selector, value).kind != SetResult::Kind::Taken)
                throw ToolError(selectors[depth] + " does not take " + value);
        } catch (const ToolError& error) {
            Problem(error.what(), selectors[depth]);
            continue;
        }
        setting.emplace_back(selectors[depth], value);
        Walk(selectors, depth + 1, setting, features);
        setting.pop_back();
    }
}

void FeatureSaver::SaveAll(const Features& features, const Setting& setting) {
    for (INode* node : features)
        SaveFeature(*node, setting);
}

void FeatureSaver::SaveFeature(INode& node, const Setting& setting) {
    if (!MayGoOn())
        return;
    FeatureLine line{node.GetName(), setting, {}, 0};
    try {
        InWords(line.Label(), [&] {
            const EAccessMode mode = node.GetAccessMode();
            if (!IsReadable(mode))
                return;
            line.value = ReadText(node, false, true);
            if (mode == EAccessMode::ReadOnly)
                out_ << "# read-only: ";
            else
                ++result_.saved;
            ++lines_;
            WriteLine(out_, line, node.GetPrincipalInterfaceType() == EInterfaceType::String);
        });
    } catch (const ToolError& error) {
        out_ << "# " << Printable(error.what()) << '\n';
        Problem(error.what(), node.GetName());
    }
}

} // namespace VX3::Tool
