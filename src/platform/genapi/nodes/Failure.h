// Throws the GenApi exceptions of node operations, their texts led by file, line and node.
#pragma once

#include "Base/GCException.h"

#include <string>

namespace GenApi_3_2 {
namespace Engine {

class NodeBase;

// "camera.xml:120: node 'Width'".
std::string PlaceOf(const NodeBase& node);

// An operation that would hardly end. Whoever takes other failures for an answer lets this one pass.
class TooManyVisits : public GenICam_3_2::RuntimeException {
public:
    using RuntimeException::RuntimeException;
};

template <class Kind>
[[noreturn]] void Fail(const NodeBase& node, const std::string& text, const char* file = __builtin_FILE(),
                       unsigned int line = __builtin_LINE()) {
    throw Kind((PlaceOf(node) + ": " + text).c_str(), file, line);
}

} // namespace Engine
} // namespace GenApi_3_2
