// Sets a camera's features from a feature file. What fails is tried again after the others, since one feature
// may have to change before another can; what fails in the end is reported.
#pragma once

#include "features/FeatureFile.h"
#include "vx3/genicam/INodeMap.h"

#include <string>
#include <vector>

namespace VX3::Tool {

class FeatureLoader {
public:
    explicit FeatureLoader(const GenICam::INodeMap& nodes) : nodes_(nodes) {}

    struct Failure {
        FeatureLine line;
        std::string reason;
    };
    struct Result {
        std::size_t set = 0;
        std::vector<Failure> failures;
    };
    Result Load(const std::vector<FeatureLine>& lines);

private:
    // Why the line could not be set; empty when the camera holds its value.
    std::string Apply(const FeatureLine& line);
    std::string ApplyValue(GenICam::INode& node, const std::string& value);

    const GenICam::INodeMap& nodes_;
};

} // namespace VX3::Tool
