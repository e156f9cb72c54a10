// One feature as it stands now: everything that is shown of it, read once.
#pragma once

#include "base/Console.h"
#include "vx3/genicam/INode.h"

#include <string>
#include <vector>

namespace VX3::Tool {

struct Feature {
    struct Entry {
        std::string symbolic;
        long value = 0;
        bool available = false;
    };

    std::string name;
    std::string displayName;
    std::string toolTip;
    GenICam::EInterfaceType type = GenICam::EInterfaceType::Value;
    GenICam::EAccessMode access = GenICam::EAccessMode::NotAvailable;
    GenICam::EVisibility visibility = GenICam::EVisibility::Beginner;
    bool streamable = false;
    Json value; // null when it cannot be read
    std::string text;
    std::string unit;
    Json min, max, increment; // null where the type or the feature has none
    std::vector<Entry> entries;
    std::string problem; // what reading it threw; empty normally
};

// Never throws: what goes wrong stands in `problem`.
Feature ReadFeature(GenICam::INode& node);

std::string TypeText(GenICam::EInterfaceType type);
// "RO", "RW", "WO", "NA", "NI".
std::string AccessText(GenICam::EAccessMode mode);
std::string VisibilityText(GenICam::EVisibility visibility);
// "beginner", "expert", "guru" or "invisible"; throws for anything else.
GenICam::EVisibility ParseVisibility(const std::string& text);

Json ToJson(const Feature& feature);
// All of it for the terminal, large registers in several lines.
std::string ValueLines(const Feature& feature);
// "512 px" and "[16 .. 1024, step 16]" or "{Mono8, Mono16}", for a line of text, long ones cut.
std::string ValueWithUnit(const Feature& feature);
std::string RangeText(const Feature& feature);

} // namespace VX3::Tool
