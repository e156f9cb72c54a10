// A feature's value as text and back, as a person types and reads it.
#pragma once

#include "vx3/genicam/INode.h"

#include <functional>
#include <string>

namespace VX3::Tool {

// The shortest text that reads back as the same number.
std::string NumberText(double value);

// Whether a value of this type can be read as text.
bool HasValue(GenICam::EInterfaceType type);

// The value as text: enumerations by symbolic name, registers as 0x and hexadecimal digits. With `exact`, in
// the form that files keep: plain decimal integers instead of the feature's own representation. GenApi's
// exceptions pass through.
std::string ReadText(GenICam::INode& node, bool ignoreCache, bool exact = false);

// How a write ended, judged by what the camera answered afterwards.
struct SetResult {
    enum class Kind {
        Taken,
        Adjusted, // out of range and moved into it, or the camera took something else of its own
        Refused   // the camera holds what it held before
    };
    Kind kind = Kind::Taken;
    std::string held; // read back; empty for features that cannot be read
    std::string told; // what the library said of a value out of range
};

// Writes the value that `text` spells and reads it back. Throws ToolError in words when the text is no such
// value or the feature refuses it.
SetResult WriteText(GenICam::INode& node, const std::string& text);

// Executes and waits, at most `timeoutMs`, until the command is done; false when it is not by then.
bool Execute(GenICam::INode& node, unsigned int timeoutMs);

// Runs `body`; what GenApi or the port throws becomes a ToolError that begins with `what`.
void InWords(const std::string& what, const std::function<void()>& body);

} // namespace VX3::Tool
