// Reading and writing a node through a tagged value, by the node's type.
#pragma once

#include "vx3/core/Status.h"
#include "vx3/genicam/IGenIObj.h"
#include "vx3/genicam/INode.h"
#include "vx3/genicam/NodeValue.h"

#include <memory>

namespace VX3::GenICam {

// No description contains it: setting it to an integer waits that many milliseconds, so that a list of
// settings can hold a pause. NotConnected as soon as the owner is gone or cannot be reached any more.
constexpr const char* DelayNodeName = "DelayMsNode";
[[nodiscard]] StatusCode Delay(const NodeValue& value, const std::weak_ptr<IGenIObj>& owner);

// Neither verifies nor asks the device for what is cached. Commands and unknown types give an empty value.
// GenApi's exceptions pass through, here and below.
NodeValue ReadByType(INode& node);
// A value of another type than the node's is converted where nothing of it is lost: "640" and 640.0 are
// integers, an enumeration takes its entries' names. NotFound, with the last failure's text, for a value
// without such a form, for a node that cannot be set and for a command without CommandValue::Execute. What
// was set otherwise than given (clamped, cut) gives Ok and a last failure that says so.
StatusCode WriteByType(INode& node, const NodeValue& value);

} // namespace VX3::GenICam
