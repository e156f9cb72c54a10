#include "features/FeatureLoader.h"

#include "base/ToolError.h"
#include "features/FeatureText.h"

#include <set>
#include <utility>

namespace VX3::Tool {

using namespace VX3::GenICam;

FeatureLoader::Result FeatureLoader::Load(const std::vector<FeatureLine>& lines) {
    std::vector<Failure> pending;
    std::set<std::string> moved; // selectors that lines set for themselves
    for (const FeatureLine& line : lines) {
        pending.push_back({line, {}});
        for (const auto& selector : line.selectors)
            moved.insert(selector.first);
    }
    std::size_t before = 0;
    do {
        before = pending.size();
        std::vector<Failure> failed;
        for (Failure& failure : pending) {
            failure.reason = Apply(failure.line);
            if (!failure.reason.empty())
                failed.push_back(std::move(failure));
        }
        pending = std::move(failed);
    } while (!pending.empty() && pending.size() < before);
    // The selectors' own lines once more: later lines have moved them. One that fails was reported above.
    for (const FeatureLine& line : lines)
        if (line.selectors.empty() && moved.count(line.feature) != 0)
            Apply(line);
    return {lines.size() - pending.size(), std::move(pending)};
}

std::string FeatureLoader::Apply(const FeatureLine& line) {
    for (const auto& [name, value] : line.selectors) {
        INode* selector = nodes_.GetNode(name);
        const std::string reason = selector ? ApplyValue(*selector, value) : "there is no such feature";
        if (!reason.empty())
            return "its selector " + name + ": " + reason;
    }
    INode* node = nodes_.GetNode(line.feature);
    return node ? ApplyValue(*node, line.value) : "there is no such feature";
}

std::string FeatureLoader::ApplyValue(INode& node, const std::string& value) {
    try {
        std::string current;
        InWords("", [&] {
            if (IsReadable(node.GetAccessMode()))
                current = ReadText(node, false, true);
        });
        if (current == value && IsReadable(node.GetAccessMode()))
            return {};
        const SetResult result = WriteText(node, value);
        if (result.kind == SetResult::Kind::Taken)
            return {};
        return "the camera holds " + result.held + " instead of " + value;
    } catch (const ToolError& error) {
        const std::string text = error.what();
        const std::string prefix = node.GetName() + ": ";
        return text.rfind(prefix, 0) == 0 ? text.substr(prefix.size()) : text;
    }
}

} // namespace VX3::Tool
