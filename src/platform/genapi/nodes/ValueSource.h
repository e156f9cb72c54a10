// Where a node's value comes from and goes to: a constant of the description, another node, or one of several
// chosen by an index; written values may be copied to further nodes. T is std::int64_t or double.
#pragma once

#include "platform/genapi/nodes/NodeBase.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace GenApi_3_2 {
namespace Engine {

// A number of the description: either written there or the value of another node.
template <class T>
struct Operand {
    NodeBase* node = nullptr;
    T constant{};
    bool isGiven = false;

    T Get(bool ignoreCache = false) const;
    // From an element with a number; false, and a problem is noted, when it is none.
    bool SetConstant(NodeBase& owner, const Element& element);
    void SetNode(NodeBase* target) {
        node = target;
        isGiven = target != nullptr;
    }
    // Takes a bound in either form.
    void TakeBound(NodeBase& owner, const Element& element, bool isReference);
};

template <class T>
class ValueSource {
public:
    bool Take(NodeBase& owner, const Element& element);
    // Switches the owner off when the description gives no value at all.
    void Finish(NodeBase& owner);

    T Read(bool ignoreCache);
    // To the value's place and its copies, in the order of the description.
    void Write(NodeBase& owner, T value, bool verify);
    EAccessMode Access();
    // The node that now holds the value; null for a constant.
    NodeBase* Target() { return Active().node; }
    const std::vector<NodeBase*>& Copies() const { return copies_; }

private:
    Operand<T>& Active();
    void TakeIndexed(NodeBase& owner, const Element& element);
    void Place();
    void WriteActive(NodeBase& owner, Operand<T>& active, T value, bool verify);
    void WriteCopies(std::size_t from, std::size_t to, T value, bool verify);

    Operand<T> value_;
    Operand<T> default_;
    NodeBase* index_ = nullptr;
    std::vector<std::pair<std::int64_t, Operand<T>>> indexed_; // by index
    std::vector<NodeBase*> copies_;
    std::optional<std::size_t> copiesBefore_; // the value's own place
};

extern template struct Operand<std::int64_t>;
extern template struct Operand<double>;
extern template class ValueSource<std::int64_t>;
extern template class ValueSource<double>;

} // namespace Engine
} // namespace GenApi_3_2
