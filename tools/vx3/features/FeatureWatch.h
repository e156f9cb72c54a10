// Whether it makes sense to go on with a camera's features after one of them failed.
#pragma once

#include <functional>
#include <string>

namespace VX3::Tool {

struct FeatureWatch {
    // After a failure of that feature: the camera does not answer any more.
    std::function<bool(const std::string& feature)> gone = [](const std::string&) { return false; };
    // Somebody wants the verb to end.
    std::function<bool()> interrupted = [] { return false; };
};

} // namespace VX3::Tool
