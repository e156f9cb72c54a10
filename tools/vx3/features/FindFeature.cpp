#include "features/FindFeature.h"

#include "base/NearMiss.h"
#include "base/ToolError.h"

#include <vector>

namespace VX3::Tool {

GenICam::INode& FindFeature(const GenICam::INodeMap& nodes, const std::string& name) {
    if (GenICam::INode* node = nodes.GetNode(name))
        return *node;
    std::vector<std::string> names;
    for (const GenICam::INode* node : nodes.GetNodes())
        if (node != nullptr && node->IsFeature())
            names.push_back(node->GetName());
    if (const std::string* found = FindName(names, name))
        if (GenICam::INode* node = nodes.GetNode(*found))
            return *node;
    throw ToolError("there is no feature \"" + name + "\"" + DidYouMean(name, names));
}

} // namespace VX3::Tool
