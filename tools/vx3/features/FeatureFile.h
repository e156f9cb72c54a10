// Feature values as a readable text file, one line a value:
//
//   # a comment
//   Width = 640
//   Gain[GainSelector=Red] = 1.5
//   DeviceUserID = "left camera"
//
// Every line stands on its own: the selectors that it depends on are named in brackets, outermost first.
#pragma once

#include <istream>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace VX3::Tool {

struct FeatureLine {
    std::string feature;
    std::vector<std::pair<std::string, std::string>> selectors;
    std::string value;
    unsigned int number = 0; // in the file, from 1

    // "Gain[GainSelector=Red]".
    std::string Label() const;
};

void WriteLine(std::ostream& out, const FeatureLine& line, bool quoted);
// Throws ToolError, naming the line, for a line that is neither a value nor a comment.
std::vector<FeatureLine> ReadLines(std::istream& in);

} // namespace VX3::Tool
