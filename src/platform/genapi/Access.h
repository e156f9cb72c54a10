// The access mode of a node: what it says itself, what its conditions, inner nodes and port allow, what was
// imposed. All of that is combined here and nowhere else.
#pragma once

#include "GenApi/Types.h"

#include <optional>
#include <string_view>

namespace GenApi_3_2 {
namespace Engine {

class NodeBase;

// What both allow. Not implemented beats not available, which beats everything else.
EAccessMode CombineAccess(EAccessMode left, EAccessMode right);

// `mode` of a node that is locked: reading stays.
EAccessMode LockedAccess(EAccessMode mode);

std::optional<EAccessMode> AccessModeOfText(std::string_view text);
const char* AccessText(EAccessMode mode);

class AccessRules {
public:
    // Asks the device where needed; what cannot be asked is not available.
    static EAccessMode Evaluate(const NodeBase& node);

private:
    static bool IsTrue(NodeBase* condition, bool fallback);
};

} // namespace Engine
} // namespace GenApi_3_2
