// Writes a camera's streamable features to a feature file: plain ones first, then those behind selectors,
// once for every setting of these, then the selectors themselves. Leaves the camera as it found it.
#pragma once

#include "features/FeatureFile.h"
#include "features/SelectorGraph.h"
#include "vx3/genicam/INodeMap.h"

#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace VX3::Tool {

class FeatureSaver {
public:
    // `everything`: also features that the description does not mark as streamable.
    FeatureSaver(const GenICam::INodeMap& nodes, std::ostream& out, bool everything);

    struct Result {
        std::size_t saved = 0;
        std::vector<std::string> problems;
    };
    Result Save();

private:
    using Setting = std::vector<std::pair<std::string, std::string>>;

    void SaveSelected(const std::vector<std::string>& selectors,
                      const std::vector<GenICam::INode*>& features);
    void Walk(const std::vector<std::string>& selectors, std::size_t depth, Setting& setting,
              const std::vector<GenICam::INode*>& features);
    void SaveFeature(GenICam::INode& node, const Setting& setting);
    bool IsSaved(const GenICam::INode& node) const;

    const GenICam::INodeMap& nodes_;
    SelectorGraph graph_;
    std::ostream& out_;
    bool everything_;
    Result result_;
};

} // namespace VX3::Tool
