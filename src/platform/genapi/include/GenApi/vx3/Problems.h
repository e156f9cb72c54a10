// What the engine skipped or switched off in a description. An addition of this engine that is not part of
// the published interface: code that must build with another one does without this header.
#pragma once

#include "GenApi/NodeMapFactory.h"

#include <string>
#include <vector>

namespace GenApi_3_2 {
namespace vx3 {

struct NodeMapProblem {
    unsigned int line = 0; // of the description, from 1; 0 when there is no single line
    std::string node;      // empty for the file as a whole
    std::string text;
};

// In the order they were found: those of the description file.
std::vector<NodeMapProblem> GetProblems(const CNodeMapFactory& factory);
// Those of the description file and of linking its nodes, circular references included.
std::vector<NodeMapProblem> GetProblems(const INodeMap& nodeMap);

} // namespace vx3
} // namespace GenApi_3_2
