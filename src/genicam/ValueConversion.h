// A value in the form that a node takes, where nothing of it is lost: 3000.0 and "3000" are the integer 3000,
// true is 1, 3000.5 is no integer. Pure functions.
#pragma once

#include "vx3/genicam/NodeValue.h"

#include <optional>
#include <string>

namespace VX3::GenICam {

// Nothing where the value has no such form.
std::optional<long> ToInteger(const NodeValue& value);
std::optional<double> ToReal(const NodeValue& value);
std::optional<bool> ToBoolean(const NodeValue& value);
std::optional<std::string> ToText(const NodeValue& value);

// The value for a message; texts in quotation marks.
std::string Shown(const NodeValue& value);

} // namespace VX3::GenICam
