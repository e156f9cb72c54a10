// How nodes mention each other: every reference of the description with the reason for it.
#pragma once

#include <cstddef>
#include <cstdint>

namespace GenApi_3_2 {
namespace Engine {

class NodeBase;

// Why a node mentions another one; this decides what depends on what.
enum class Role : std::uint8_t {
    Target,      // the value is that node's value
    Copy,        // gets every written value, is not read
    Variable,    // the value is calculated from that node's value
    Index,       // selects the value or is part of a register's address
    Bound,       // minimum, maximum or increment
    BoundOf,     // the value is calculated from that node's bounds
    Condition,   // implemented, available or locked
    Entry,       // of an enumeration
    Port,        // of a register
    Written,     // read when this node is written
    Invalidator, // a change of that node makes this node's value unknown
    Feature,     // of a category
};

struct Link {
    NodeBase* node;
    Role role;
};

// The walks of the cache that last came by a node, in either direction.
struct VisitMarks {
    std::uint32_t up = 0;
    std::uint32_t down = 0;
};

// A slice of an array that somebody else owns.
struct LinkSpan {
    const Link* first = nullptr;
    std::size_t count = 0;
    const Link* begin() const { return first; }
    const Link* end() const { return first + count; }
};

} // namespace Engine
} // namespace GenApi_3_2
