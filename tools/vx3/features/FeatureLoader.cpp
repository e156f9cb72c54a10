#include "features/FeatureLoader.h"

#include "base/ToolError.h"
#include "features/FeatureText.h"
#include "features/FindFeature.h"

#include <set>
#include <utility>

namespace VX3::Tool {

using namespace VX3::GenICam;

FeatureLoader::Result FeatureLoader::Load(const std::vector<FeatureLine>& lines) {
    std::vector<Failure> pending;
    std::set<std::string> moved; // selectors that lines set for themselves
    for (const FeatureLine& line : lines) {
        pending.push_back({line, {}, false});
        for (const auto& selector : line.selectors)
            moved.insert(selector.first);
    }
    std::size_t before = 0;
    do {
        before = pending.size();
        pending = Pass(std::move(pending));
    } while (!gone_ && !pending.empty() && pending.size() < before);
    // The selectors' own lines once more: later lines have moved them. One that fails was reported above.
    for (const FeatureLine& line : lines)
        if (Failure last{line, {}, false}; !gone_ && line.selectors.empty() && moved.count(line.feature) != 0)
            Apply(last);
    return {lines.size() - pending.size(), std::move(pending), gone_};
}

std::vector<FeatureLoader::Failure> FeatureLoader::Pass(std::vector<Failure> lines) {
    std::vector<Failure> failed;
    for (Failure& line : lines) {
        gone_ = gone_ || watch_.interrupted();
        if (gone_)
            line.reason = "not tried";
        else
            Apply(line);
        if (line.reason.empty())
            continue;
        gone_ = gone_ || watch_.gone(line.line.feature);
        failed.push_back(std::move(line));
    }
    return failed;
}

void FeatureLoader::Apply(Failure& failure) {
    failure.reason.clear();
    failure.adjusted = false;
    for (const auto& [name, value] : failure.line.selectors) {
        ApplyValue(name, value, failure);
        if (failure.reason.empty())
            continue;
        failure.reason.insert(0, "its selector " + name + ": ");
        failure.adjusted = false;
        return;
    }
    ApplyValue(failure.line.feature, failure.line.value, failure);
}

void FeatureLoader::ApplyValue(const std::string& feature, const std::string& value, Failure& failure) {
    try {
        INode& node = FindFeature(nodes_, feature);
        std::string current;
        bool readable = false;
        InWords("", [&] {
            readable = IsReadable(node.GetAccessMode());
            if (readable)
                current = ReadText(node, false, true);
        });
        if (readable && current == value)
            return;
        const SetResult result = WriteText(node, value);
        if (result.kind == SetResult::Kind::Taken)
            return;
        failure.reason = readable ? "the camera holds " + result.held + " instead of " + value : result.told;
        failure.adjusted = result.kind == SetResult::Kind::Adjusted;
    } catch (const ToolError& error) {
        const std::string text = error.what();
        const std::string prefix = feature + ": ";
        failure.reason = text.rfind(prefix, 0) == 0 ? text.substr(prefix.size()) : text;
    }
}

} // namespace VX3::Tool
