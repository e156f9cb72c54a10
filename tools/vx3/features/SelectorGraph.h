// Which features stand for different things as others, their selectors, change.
#pragma once

#include "vx3/genicam/INodeMap.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace VX3::Tool {

class SelectorGraph {
public:
    explicit SelectorGraph(const GenICam::INodeMap& nodes);

    // The selectors of a feature, those that select selectors first; empty for most features.
    std::vector<std::string> SelectorsOf(const std::string& feature) const;
    bool IsSelector(const std::string& feature) const { return selectors_.count(feature) != 0; }

private:
    void Collect(const std::string& feature, std::set<std::string>& seen,
                 std::vector<std::string>& selectors) const;

    std::map<std::string, std::vector<std::string>> selectorsOf_;
    std::set<std::string> selectors_;
};

// The values that a selector can be set to now, as text: available entries, or the integers of its range.
// Empty when it cannot be set, or has more than `most`, which `tooMany` tells.
std::vector<std::string> SelectorValues(GenICam::INode& selector, std::size_t most, bool& tooMany);

} // namespace VX3::Tool
