// A settings file as 'vx3 load' takes it: the text is refused with the line named, or read, and what was read
// can be written and read again. Then it is loaded into a camera with every type of feature; each line is
// either set or accounted for.
#include "FuzzInput.h"
#include "base/ToolError.h"
#include "features/FeatureLoader.h"
#include "features/FeatureSaver.h"
#include "support/MemoryOwner.h"

#include <sstream>

using namespace VX3;
using namespace VX3::Fuzz;
using namespace VX3::Tool;

namespace {

std::vector<FeatureLine> Read(const std::string& text) {
    std::istringstream stream(text);
    return ReadLines(stream);
}

bool IsAscii(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<signed char>(c) >= 0; });
}

void CheckRoundTrip(const std::vector<FeatureLine>& lines) {
    std::ostringstream text;
    for (const FeatureLine& line : lines)
        WriteLine(text, line, true);
    const std::vector<FeatureLine> again = Read(text.str());
    Require(again.size() == lines.size());
    for (std::size_t i = 0; i < lines.size(); ++i) {
        Require(again[i].feature == lines[i].feature && again[i].selectors == lines[i].selectors);
        Require(again[i].value == lines[i].value || !IsAscii(lines[i].value));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Silence silence;
    FuzzInput in(data, size);
    std::vector<FeatureLine> lines;
    try {
        lines = Read(in.Rest());
    } catch (const ToolError& error) {
        Require(std::strncmp(error.what(), "line ", 5) == 0);
        return 0;
    }
    CheckRoundTrip(lines);
    const Test::Camera camera;
    const FeatureLoader::Result result = FeatureLoader(*camera.nodes).Load(lines);
    Require(result.set + result.failures.size() == lines.size());
    for (const FeatureLoader::Failure& failure : result.failures)
        Require(!failure.reason.empty() && failure.line.number != 0);
    std::ostringstream saved;
    Require(FeatureSaver(*camera.nodes, saved, true).Save().saved == Read(saved.str()).size());
    return 0;
}
