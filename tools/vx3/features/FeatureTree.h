// The features of a node map by category, as the description arranges them under "Root".
#pragma once

#include "features/Feature.h"
#include "vx3/genicam/INodeMap.h"

#include <vector>

namespace VX3::Tool {

struct FeatureTree {
    Feature feature;
    std::vector<FeatureTree> children; // of a category
};

struct TreeOptions {
    GenICam::EVisibility visibility = GenICam::EVisibility::Guru; // and everything more basic
    bool notImplemented = false;                                  // show these, too
};

// Empty when the map has no category "Root". A category that contains itself is shown once.
FeatureTree ReadTree(const GenICam::INodeMap& nodes, const TreeOptions& options);

void PrintTree(std::ostream& out, const FeatureTree& tree);
Json ToJson(const FeatureTree& tree);
// Features, categories not counted.
std::size_t CountFeatures(const FeatureTree& tree);
// Those that could not be read.
std::size_t CountProblems(const FeatureTree& tree);

} // namespace VX3::Tool
