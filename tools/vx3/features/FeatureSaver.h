// Writes a camera's streamable features to a feature file: plain ones first, then those behind selectors,
// once for every setting of these, then the selectors themselves. Leaves the camera as it found it. Settings,
// lines and bytes are bounded, whatever the description says; what is left out is told.
#pragma once

#include "features/FeatureFile.h"
#include "features/FeatureWatch.h"
#include "features/SelectorGraph.h"
#include "vx3/genicam/INodeMap.h"

#include <cstddef>
#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace VX3::Tool {

class FeatureSaver {
public:
    struct Limits {
        std::size_t settingsOfAGroup = 4096; // of features with the same selectors
        std::size_t settings = 16384;
        std::size_t lines = 65536;
        std::size_t bytes = 16U * 1024 * 1024;
    };

    // `everything`: also features that the description does not mark as streamable.
    FeatureSaver(const GenICam::INodeMap& nodes, std::ostream& out, bool everything, FeatureWatch watch,
                 Limits limits);
    FeatureSaver(const GenICam::INodeMap& nodes, std::ostream& out, bool everything)
        : FeatureSaver(nodes, out, everything, {}, {}) {}

    struct Result {
        std::size_t saved = 0;
        std::vector<std::string> problems; // what could not be read
        std::vector<std::string> omitted;  // what the limits left out
        bool gone = false;                 // the camera stopped answering: the rest is missing
        bool interrupted = false;          // the same by somebody's wish
    };
    Result Save();

private:
    using Setting = std::vector<std::pair<std::string, std::string>>;
    using Names = std::vector<std::string>;
    using Features = std::vector<GenICam::INode*>;

    bool MayGoOn();
    void Problem(const std::string& text, const std::string& feature);
    void SaveSelected(const Names& selectors, const Features& features);
    bool HasFewSettings(const Names& selectors) const;
    Setting PresentSetting(const Names& selectors);
    void Restore(const Setting& setting);
    void Walk(const Names& selectors, std::size_t depth, Setting& setting, const Features& features);
    void SaveAll(const Features& features, const Setting& setting);
    void SaveFeature(GenICam::INode& node, const Setting& setting);
    bool IsSaved(const GenICam::INode& node) const;

    const GenICam::INodeMap& nodes_;
    SelectorGraph graph_;
    std::ostream& out_;
    const bool everything_;
    const FeatureWatch watch_;
    const Limits limits_;
    std::size_t settings_ = 0;
    std::size_t lines_ = 0;
    bool full_ = false;
    Result result_;
};

} // namespace VX3::Tool
