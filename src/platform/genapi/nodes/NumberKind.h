// What differs between integers and floating numbers wherever a node treats both alike: the interface, the
// range, how such a number is parsed, and how it is fetched from and given to another node.
#pragma once

#include "GenApi/IValues.h"
#include "platform/genapi/base/NumberText.h"
#include "platform/genapi/nodes/NodeBase.h"

namespace GenApi_3_2 {
namespace Engine {

template <class T>
struct NumberKind;

template <>
struct NumberKind<std::int64_t> {
    using Interface = IInteger;
    using Range = IntegerRange;
    static constexpr EInterfaceType Type = intfIInteger;

    static std::optional<std::int64_t> Parse(std::string_view text) { return ParseInteger(text); }
    static std::int64_t Get(NodeBase& node, bool ignoreCache) { return node.GetInteger(ignoreCache); }
    static void Set(NodeBase& node, std::int64_t value, bool verify) { node.SetInteger(value, verify); }
    static IntegerRange RangeOf(NodeBase& node) { return node.GetRange(); }
};

template <>
struct NumberKind<double> {
    using Interface = IFloat;
    using Range = FloatRange;
    static constexpr EInterfaceType Type = intfIFloat;

    static std::optional<double> Parse(std::string_view text) { return ParseFloat(text); }
    static double Get(NodeBase& node, bool ignoreCache) { return node.GetNumeric(ignoreCache); }
    static void Set(NodeBase& node, double value, bool verify) { node.SetNumeric(value, verify); }
    static FloatRange RangeOf(NodeBase& node) { return node.GetFloatRange(); }
};

} // namespace Engine
} // namespace GenApi_3_2
