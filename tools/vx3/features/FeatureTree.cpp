#include "features/FeatureTree.h"

#include <algorithm>
#include <set>

namespace VX3::Tool {

using namespace VX3::GenICam;

namespace {

constexpr std::size_t DeepestCategory = 32;
// A category may be listed in several others; a hostile description multiplies that.
constexpr std::size_t MostFeatures = 100000;
constexpr std::size_t WidestName = 44;
constexpr std::size_t WidestValue = 32;

bool IsShown(const Feature& feature, const TreeOptions& options) {
    const auto level = static_cast<int>(feature.visibility);
    return level <= static_cast<int>(options.visibility) &&
           (options.notImplemented || feature.access != EAccessMode::NotImplemented);
}

struct Walk {
    const TreeOptions& options;
    std::set<const INode*> open; // the categories around the present node
    std::size_t read = 0;
};

FeatureTree ReadNode(INode& node, Walk& walk) {
    FeatureTree tree;
    tree.feature = ReadFeature(node);
    auto* category = dynamic_cast<ICategory*>(&node);
    if (category == nullptr || walk.open.size() >= DeepestCategory || !walk.open.insert(&node).second)
        return tree;
    for (IValue* value : category->GetFeatures()) {
        INode* child = value->GetNode();
        if (child == nullptr || ++walk.read > MostFeatures)
            continue;
        FeatureTree subtree = ReadNode(*child, walk);
        const bool isCategory = subtree.feature.type == EInterfaceType::Category;
        if (isCategory ? !subtree.children.empty() : IsShown(subtree.feature, walk.options))
            tree.children.push_back(std::move(subtree));
    }
    walk.open.erase(&node);
    return tree;
}

void MeasureColumns(const FeatureTree& tree, std::size_t depth, std::size_t& name, std::size_t& value) {
    for (const FeatureTree& child : tree.children) {
        name = std::max(name, 2 * depth + child.feature.name.size());
        value = std::max(value, ValueWithUnit(child.feature).size());
        MeasureColumns(child, depth + 1, name, value);
    }
}

void PrintLevel(std::ostream& out, const FeatureTree& tree, std::size_t depth, std::size_t nameWidth,
                std::size_t valueWidth) {
    for (const FeatureTree& child : tree.children) {
        const Feature& feature = child.feature;
        const std::string name = std::string(2 * depth, ' ') + Printable(feature.name);
        if (feature.type == EInterfaceType::Category) {
            out << name << '\n';
            PrintLevel(out, child, depth + 1, nameWidth, valueWidth);
            continue;
        }
        std::string line = Padded(name, nameWidth) + "  " + Padded(TypeText(feature.type), 11) + "  " +
                           AccessText(feature.access) + "  " +
                           Padded(Printable(ValueWithUnit(feature)), valueWidth) + "  " +
                           Printable(RangeText(feature));
        line.erase(line.find_last_not_of(' ') + 1);
        out << line << '\n';
    }
}

} // namespace

FeatureTree ReadTree(const INodeMap& nodes, const TreeOptions& options) {
    INode* root = nodes.GetNode("Root");
    if (root == nullptr)
        return {};
    Walk walk{options, {}};
    return ReadNode(*root, walk);
}

void PrintTree(std::ostream& out, const FeatureTree& tree) {
    std::size_t name = 0;
    std::size_t value = 0;
    MeasureColumns(tree, 0, name, value);
    PrintLevel(out, tree, 0, std::min(name, WidestName), std::min(value, WidestValue));
}

Json ToJson(const FeatureTree& tree) {
    Json json = ToJson(tree.feature);
    for (const FeatureTree& child : tree.children)
        json["features"].push_back(ToJson(child));
    return json;
}

std::size_t CountFeatures(const FeatureTree& tree) {
    std::size_t count = 0;
    for (const FeatureTree& child : tree.children)
        count += child.feature.type == EInterfaceType::Category ? CountFeatures(child) : 1;
    return count;
}

std::size_t CountProblems(const FeatureTree& tree) {
    std::size_t count = tree.feature.problem.empty() ? 0 : 1;
    for (const FeatureTree& child : tree.children)
        count += CountProblems(child);
    return count;
}

} // namespace VX3::Tool
