// Reading and writing a node through a tagged value, by the node's type.
#pragma once

#include "vx3/core/Status.h"
#include "vx3/genicam/INode.h"
#include "vx3/genicam/NodeValue.h"

namespace VX3::GenICam {

// No description contains it: setting it to an integer waits that many milliseconds, so that a list of
// settings can hold a pause.
constexpr const char* DelayNodeName = "DelayMsNode";
StatusCode Delay(const NodeValue& value);

// Neither verifies nor asks the device for what is cached. Commands and unknown types give an empty value.
// GenApi's exceptions pass through, here and below.
NodeValue ReadByType(INode& node);
// A value of another type than the node's counts as that type's zero. NotFound for a type that cannot be set
// and for a command without CommandValue::Execute.
StatusCode WriteByType(INode& node, const NodeValue& value);

} // namespace VX3::GenICam
