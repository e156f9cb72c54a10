#include "features/Feature.h"

#include "base/NearMiss.h"
#include "base/ToolError.h"
#include "features/FeatureText.h"

#include <cfloat>
#include <cstdint>

namespace VX3::Tool {

using namespace VX3::GenICam;

namespace {

constexpr std::size_t WidestText = 64; // of a value in a table
constexpr std::size_t WidestLine = 98; // of a value on its own: 0x and 48 bytes, then 49 a line
constexpr std::size_t MostEntriesShown = 24;

void ReadInteger(IInteger& node, Feature& feature) {
    feature.unit = node.GetUnit();
    feature.min = node.GetMin();
    feature.max = node.GetMax();
    if (const long increment = node.GetInc(); increment > 1)
        feature.increment = increment;
    if (IsReadable(feature.access))
        feature.value = node.GetValue(false, false);
}

void ReadFloat(IFloat& node, Feature& feature) {
    feature.unit = node.GetUnit();
    feature.min = node.GetMin();
    feature.max = node.GetMax();
    if (node.HasInc())
        feature.increment = node.GetInc();
    if (IsReadable(feature.access))
        feature.value = node.GetValue(false, false);
}

void ReadEnumeration(IEnumeration& node, Feature& feature) {
    for (IEnumEntry* entry : node.GetEntries())
        if (entry->GetAccessMode() != EAccessMode::NotImplemented)
            feature.entries.push_back(
                {entry->GetSymbolic(), entry->GetValue(), IsAvailable(entry->GetAccessMode())});
    if (IsReadable(feature.access))
        feature.value = feature.text;
}

void ReadTyped(INode& node, Feature& feature) {
    if (IsReadable(feature.access))
        feature.text = ReadText(node, false);
    if (auto* integer = dynamic_cast<IInteger*>(&node))
        ReadInteger(*integer, feature);
    else if (auto* floating = dynamic_cast<IFloat*>(&node))
        ReadFloat(*floating, feature);
    else if (auto* enumeration = dynamic_cast<IEnumeration*>(&node))
        ReadEnumeration(*enumeration, feature);
    else if (auto* boolean = dynamic_cast<IBoolean*>(&node))
        feature.value = IsReadable(feature.access) ? Json(boolean->GetValue(false, false)) : Json();
    else if (HasValue(feature.type) && IsReadable(feature.access))
        feature.value = feature.text;
}

// A description that gives no range leaves the type's own, which tells nobody anything.
bool IsUnbounded(const Feature& feature) {
    if (feature.type == EInterfaceType::Integer)
        return feature.min.get<std::int64_t>() == INT64_MIN && feature.max.get<std::int64_t>() == INT64_MAX;
    return feature.type == EInterfaceType::Float && feature.max.get<double>() >= DBL_MAX &&
           feature.min.get<double>() <= -DBL_MAX;
}

} // namespace

Feature ReadFeature(INode& node) {
    Feature feature;
    feature.name = node.GetName();
    try {
        feature.type = node.GetPrincipalInterfaceType();
        feature.visibility = node.GetVisibility();
        feature.displayName = node.GetDisplayName();
        feature.toolTip = node.GetToolTip();
        feature.streamable = node.IsStreamable();
        feature.access = node.GetAccessMode();
        if (IsAvailable(feature.access))
            ReadTyped(node, feature);
    } catch (const std::exception& error) {
        feature.problem = error.what();
    } catch (const char* text) {
        feature.problem = text;
    }
    return feature;
}

std::string TypeText(EInterfaceType type) {
    switch (type) {
    case EInterfaceType::Integer:
        return "integer";
    case EInterfaceType::Boolean:
        return "boolean";
    case EInterfaceType::Command:
        return "command";
    case EInterfaceType::Float:
        return "float";
    case EInterfaceType::String:
        return "string";
    case EInterfaceType::Register:
        return "register";
    case EInterfaceType::Category:
        return "category";
    case EInterfaceType::Enumeration:
        return "enumeration";
    case EInterfaceType::EnumEntry:
        return "entry";
    case EInterfaceType::Port:
        return "port";
    default:
        return "node";
    }
}

std::string AccessText(EAccessMode mode) {
    switch (mode) {
    case EAccessMode::NotImplemented:
        return "NI";
    case EAccessMode::NotAvailable:
        return "NA";
    case EAccessMode::WriteOnly:
        return "WO";
    case EAccessMode::ReadOnly:
        return "RO";
    case EAccessMode::ReadWrite:
        return "RW";
    default:
        return "??";
    }
}

std::string VisibilityText(EVisibility visibility) {
    switch (visibility) {
    case EVisibility::Beginner:
        return "beginner";
    case EVisibility::Expert:
        return "expert";
    case EVisibility::Guru:
        return "guru";
    default:
        return "invisible";
    }
}

EVisibility ParseVisibility(const std::string& text) {
    for (const EVisibility visibility :
         {EVisibility::Beginner, EVisibility::Expert, EVisibility::Guru, EVisibility::Invisible})
        if (text == VisibilityText(visibility))
            return visibility;
    throw ToolError("\"" + text + "\" is no visibility");
}

Json ToJson(const Feature& feature) {
    Json json = {{"name", feature.name}, {"type", TypeText(feature.type)}};
    if (feature.type != EInterfaceType::Category)
        json["access"] = AccessText(feature.access);
    if (HasValue(feature.type))
        json["value"] = feature.value;
    if (!feature.unit.empty())
        json["unit"] = feature.unit;
    if (!feature.min.is_null())
        json["min"] = feature.min;
    if (!feature.max.is_null())
        json["max"] = feature.max;
    if (!feature.increment.is_null())
        json["increment"] = feature.increment;
    for (const Feature::Entry& entry : feature.entries)
        json["entries"].push_back(
            {{"name", entry.symbolic}, {"value", entry.value}, {"available", entry.available}});
    json["visibility"] = VisibilityText(feature.visibility);
    if (HasValue(feature.type))
        json["streamable"] = feature.streamable;
    if (!feature.displayName.empty())
        json["display_name"] = feature.displayName;
    if (!feature.toolTip.empty())
        json["tool_tip"] = feature.toolTip;
    if (!feature.problem.empty())
        json["problem"] = feature.problem;
    return json;
}

std::string ValueWithUnit(const Feature& feature) {
    if (!feature.problem.empty())
        return "! " + feature.problem;
    if (feature.type == EInterfaceType::String && IsReadable(feature.access))
        return "\"" + Shortened(feature.text, WidestText) + "\"";
    if (feature.type == EInterfaceType::Register && feature.text.size() > WidestText)
        return Shortened(feature.text, WidestText) + " (" + std::to_string(feature.text.size() / 2 - 1) +
               " bytes)";
    const std::string text = Shortened(feature.text, WidestText);
    return feature.unit.empty() || text.empty() ? text : text + " " + feature.unit;
}

std::string ValueLines(const Feature& feature) {
    if (feature.type != EInterfaceType::Register || feature.text.size() <= WidestLine)
        return Printable(feature.text);
    std::string lines;
    for (std::size_t at = 0; at < feature.text.size(); at += WidestLine)
        lines += (at == 0 ? "" : "\n") + feature.text.substr(at, WidestLine);
    return lines;
}

std::string RangeText(const Feature& feature) {
    const auto number = [](const Json& json) {
        return json.is_number_float() ? NumberText(json.get<double>()) : json.dump();
    };
    if (feature.type == EInterfaceType::Enumeration) {
        std::vector<std::string> names;
        for (const Feature::Entry& entry : feature.entries)
            names.push_back(
                Shortened(entry.available ? entry.symbolic : "(" + entry.symbolic + ")", WidestText));
        return names.empty() ? "" : "{" + Listed(names, MostEntriesShown) + "}";
    }
    if (feature.min.is_null() || feature.max.is_null() || IsUnbounded(feature))
        return {};
    std::string text = "[" + number(feature.min) + " .. " + number(feature.max);
    if (!feature.increment.is_null())
        text += ", step " + number(feature.increment);
    return text + "]";
}

} // namespace VX3::Tool
