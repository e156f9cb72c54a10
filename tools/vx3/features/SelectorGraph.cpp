#include "features/SelectorGraph.h"

#include <sstream>

namespace VX3::Tool {

using namespace VX3::GenICam;

SelectorGraph::SelectorGraph(const INodeMap& nodes) {
    for (const INode* node : nodes.GetNodes()) {
        std::string names;
        std::string attribute;
        if (node == nullptr || !node->GetProperty("pSelected", names, attribute) || names.empty())
            continue;
        std::istringstream list(names);
        for (std::string name; std::getline(list, name, '\t');)
            selectorsOf_[name].push_back(node->GetName());
        selectors_.insert(node->GetName());
    }
}

std::vector<std::string> SelectorGraph::SelectorsOf(const std::string& feature) const {
    std::set<std::string> seen{feature};
    std::vector<std::string> selectors;
    Collect(feature, seen, selectors);
    return selectors;
}

void SelectorGraph::Collect(const std::string& feature, std::set<std::string>& seen,
                            std::vector<std::string>& selectors) const {
    const auto found = selectorsOf_.find(feature);
    if (found == selectorsOf_.end())
        return;
    for (const std::string& selector : found->second) {
        if (!seen.insert(selector).second)
            continue;
        Collect(selector, seen, selectors);
        selectors.push_back(selector);
    }
}

std::vector<std::string> SelectorValues(INode& selector, std::size_t most, bool& tooMany) {
    std::vector<std::string> values;
    tooMany = false;
    if (!IsWritable(selector.GetAccessMode()))
        return values;
    if (auto* enumeration = dynamic_cast<IEnumeration*>(&selector)) {
        for (IEnumEntry* entry : enumeration->GetEntries())
            if (IsAvailable(entry->GetAccessMode()))
                values.push_back(entry->GetSymbolic());
    } else if (auto* integer = dynamic_cast<IInteger*>(&selector)) {
        const long min = integer->GetMin();
        const long max = integer->GetMax();
        const long step = integer->GetInc() > 0 ? integer->GetInc() : 1;
        const auto span = static_cast<unsigned long>(max) - static_cast<unsigned long>(min);
        tooMany = max >= min && span / static_cast<unsigned long>(step) >= most;
        if (max < min || tooMany)
            return values;
        for (unsigned long i = 0; i <= span / static_cast<unsigned long>(step); ++i)
            values.push_back(std::to_string(min + static_cast<long>(i) * step));
    } else if (dynamic_cast<IBoolean*>(&selector) != nullptr) {
        values = {"false", "true"};
    }
    tooMany = values.size() > most;
    return tooMany ? std::vector<std::string>() : values;
}

} // namespace VX3::Tool
