#include "features/FeatureSaver.h"

#include "base/Console.h"
#include "base/ToolError.h"
#include "features/FeatureText.h"

namespace VX3::Tool {

using namespace VX3::GenICam;

namespace {

// A look-up table's index selects thousands of values, one register access each; beyond this it is left out.
constexpr std::size_t MostSelectorValues = 4096;

} // namespace

FeatureSaver::FeatureSaver(const INodeMap& nodes, std::ostream& out, bool everything)
    : nodes_(nodes), graph_(nodes), out_(out), everything_(everything) {}

bool FeatureSaver::IsSaved(const INode& node) const {
    return HasValue(node.GetPrincipalInterfaceType()) &&
           (node.IsStreamable() || (everything_ && node.IsFeature()));
}

FeatureSaver::Result FeatureSaver::Save() {
    std::vector<INode*> selectors;
    std::vector<std::vector<std::string>> order; // of the groups, by their first feature
    std::map<std::vector<std::string>, std::vector<INode*>> groups;
    for (INode* node : nodes_.GetNodes()) {
        if (node == nullptr || !IsSaved(*node))
            continue;
        const std::vector<std::string> selecting = graph_.SelectorsOf(node->GetName());
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
    for (const std::vector<std::string>& selecting : order)
        SaveSelected(selecting, groups[selecting]);
    for (INode* node : selectors)
        SaveFeature(*node, {});
    return result_;
}

void FeatureSaver::SaveSelected(const std::vector<std::string>& selectors,
                                const std::vector<INode*>& features) {
    Setting before;
    for (const std::string& name : selectors)
        if (INode* node = nodes_.GetNode(name); node != nullptr && IsReadable(node->GetAccessMode()))
            before.emplace_back(name, ReadText(*node, false, true));
    Setting setting;
    try {
        Walk(selectors, 0, setting, features);
    } catch (const ToolError& error) {
        result_.problems.emplace_back(error.what());
    }
    for (const auto& [name, value] : before)
        try {
            if (INode* node = nodes_.GetNode(name); node && IsWritable(node->GetAccessMode()))
                WriteText(*node, value);
        } catch (const ToolError& error) {
            result_.problems.emplace_back(error.what());
        }
}

// A selector that cannot be moved leaves its features as they stand now, without naming it.
void FeatureSaver::Walk(const std::vector<std::string>& selectors, std::size_t depth, Setting& setting,
                        const std::vector<INode*>& features) {
    if (depth == selectors.size()) {
        for (INode* node : features)
            SaveFeature(*node, setting);
        return;
    }
    INode* selector = nodes_.GetNode(selectors[depth]);
    const std::vector<std::string> values =
        selector ? SelectorValues(*selector, MostSelectorValues) : std::vector<std::string>();
    if (values.empty())
        Walk(selectors, depth + 1, setting, features);
    for (const std::string& value : values) {
        WriteText(*selector, value);
        setting.emplace_back(selectors[depth], value);
        Walk(selectors, depth + 1, setting, features);
        setting.pop_back();
    }
}

void FeatureSaver::SaveFeature(INode& node, const Setting& setting) {
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
            WriteLine(out_, line, node.GetPrincipalInterfaceType() == EInterfaceType::String);
        });
    } catch (const ToolError& error) {
        result_.problems.emplace_back(error.what());
        out_ << "# " << Printable(error.what()) << '\n';
    }
}

} // namespace VX3::Tool
