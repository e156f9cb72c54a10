// Access modes as values: how two of them combine, and their names. Pure functions.
#pragma once

#include "GenApi/Types.h"

#include <optional>
#include <string_view>

namespace GenApi_3_2 {
namespace Engine {

// What both allow. Not implemented beats not available, which beats everything else.
EAccessMode CombineAccess(EAccessMode left, EAccessMode right);

// `mode` of a node that is locked: reading stays.
EAccessMode LockedAccess(EAccessMode mode);

std::optional<EAccessMode> AccessModeOfText(std::string_view text);
const char* AccessText(EAccessMode mode);

} // namespace Engine
} // namespace GenApi_3_2
