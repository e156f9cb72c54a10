// Sets a camera's features from a feature file. What fails is tried again after the others, since one feature
// may have to change before another can; what fails in the end is reported.
#pragma once

#include "features/FeatureFile.h"
#include "features/FeatureWatch.h"
#include "vx3/genicam/INodeMap.h"

#include <string>
#include <utility>
#include <vector>

namespace VX3::Tool {

class FeatureLoader {
public:
    explicit FeatureLoader(const GenICam::INodeMap& nodes, FeatureWatch watch = {})
        : nodes_(nodes), watch_(std::move(watch)) {}

    struct Failure {
        FeatureLine line;
        std::string reason;
        bool adjusted = false; // the camera took another value instead
    };
    struct Result {
        std::size_t set = 0;
        std::vector<Failure> failures;
        bool gone = false; // the camera stopped answering, or the user wished the end: the rest was not tried
    };
    Result Load(const std::vector<FeatureLine>& lines);

private:
    // The lines that failed.
    std::vector<Failure> Pass(std::vector<Failure> lines);
    // Says in `failure` why the line could not be set; an empty reason when the camera holds its value.
    void Apply(Failure& failure);
    void ApplyValue(const std::string& feature, const std::string& value, Failure& failure);

    const GenICam::INodeMap& nodes_;
    const FeatureWatch watch_;
    bool gone_ = false;
};

} // namespace VX3::Tool
