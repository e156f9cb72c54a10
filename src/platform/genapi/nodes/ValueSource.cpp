#include "platform/genapi/nodes/ValueSource.h"

#include "platform/genapi/base/AccessModes.h"
#include "platform/genapi/nodes/NumberKind.h"

#include <algorithm>

namespace GenApi_3_2 {
namespace Engine {

namespace {

std::optional<std::int64_t> ToInteger(std::int64_t value) {
    return value;
}
std::optional<std::int64_t> ToInteger(double value) {
    return RoundToInteger(value);
}

// The copy has integers, and takes all around this value, but not this one.
template <class T>
bool MissesOnlyTheGrid(NodeBase& copy, T value) {
    const auto integer = copy.IsFloating() ? std::nullopt : ToInteger(value);
    if (!integer)
        return false;
    const IntegerRange range = copy.GetRange();
    return range.validValues == nullptr && *integer >= range.min && *integer <= range.max &&
           !range.IsOnGrid(*integer);
}

} // namespace

template <class T>
T Operand<T>::Get(bool ignoreCache) const {
    return node ? NumberKind<T>::Get(*node, ignoreCache) : constant;
}

template <class T>
bool Operand<T>::SetConstant(NodeBase& owner, const Element& element) {
    const auto number = NumberKind<T>::Parse(element.text);
    if (!number) {
        owner.Report(element, std::string(ToText(element.id)) + " '" + std::string(element.text) +
                                  "' is not a number of the expected kind");
        return false;
    }
    constant = *number;
    isGiven = true;
    return true;
}

template <class T>
void Operand<T>::TakeBound(NodeBase& owner, const Element& element, bool isReference) {
    if (isReference)
        SetNode(owner.Refer(element, Role::Bound));
    else
        SetConstant(owner, element);
}

template <class T>
bool ValueSource<T>::Take(NodeBase& owner, const Element& element) {
    switch (element.id) {
    case ElementId::Value:
        Place();
        value_.SetConstant(owner, element);
        return true;
    case ElementId::pValue:
        Place();
        value_.SetNode(owner.Require(element, Role::Target));
        return true;
    case ElementId::pValueCopy:
        if (NodeBase* copy = owner.Refer(element, Role::Copy))
            copies_.push_back(copy);
        return true;
    case ElementId::pIndex:
        index_ = owner.Require(element, Role::Index);
        return true;
    case ElementId::ValueDefault:
        default_.SetConstant(owner, element);
        return true;
    case ElementId::pValueDefault:
        default_.SetNode(owner.Require(element, Role::Target));
        return true;
    case ElementId::ValueIndexed:
    case ElementId::pValueIndexed:
        TakeIndexed(owner, element);
        return true;
    default:
        return false;
    }
}

template <class T>
void ValueSource<T>::TakeIndexed(NodeBase& owner, const Element& element) {
    const auto index = ParseInteger(element.qualifierText);
    if (!index) {
        owner.Report(element, std::string(ToText(element.id)) + " has no index that is a number");
        return;
    }
    Operand<T> operand;
    if (element.id == ElementId::pValueIndexed)
        operand.SetNode(owner.Refer(element, Role::Target));
    else
        operand.SetConstant(owner, element);
    if (operand.isGiven)
        indexed_.emplace_back(*index, operand);
    Place();
}

// Here stands, for the first time, what the value is.
template <class T>
void ValueSource<T>::Place() {
    if (!copiesBefore_)
        copiesBefore_ = copies_.size();
}

template <class T>
void ValueSource<T>::Finish(NodeBase& owner) {
    std::stable_sort(indexed_.begin(), indexed_.end(),
                     [](const auto& left, const auto& right) { return left.first < right.first; });
    if (!value_.isGiven && !default_.isGiven && indexed_.empty())
        owner.SetBroken(nullptr, "has no value");
    else if (!value_.isGiven && !default_.isGiven && !index_)
        owner.SetBroken(nullptr, "has indexed values but no pIndex");
}

template <class T>
Operand<T>& ValueSource<T>::Active() {
    if (!index_)
        return value_.isGiven ? value_ : default_;
    const std::int64_t index = index_->GetInteger();
    const auto found =
        std::lower_bound(indexed_.begin(), indexed_.end(), index,
                         [](const auto& entry, std::int64_t wanted) { return entry.first < wanted; });
    if (found != indexed_.end() && found->first == index)
        return found->second;
    Operand<T>& other = default_.isGiven ? default_ : value_;
    if (!other.isGiven)
        Fail<GenICam_3_2::OutOfRangeException>(*index_, "index " + std::to_string(index) +
                                                            " has no value and there is no default");
    return other;
}

template <class T>
T ValueSource<T>::Read(bool ignoreCache) {
    return Active().Get(ignoreCache);
}

template <class T>
void ValueSource<T>::Write(NodeBase& owner, T value, bool verify) {
    Operand<T>& active = Active();
    if (copies_.empty())
        return WriteActive(owner, active, value, verify);
    const std::size_t before = copiesBefore_.value_or(0);
    WriteCopies(0, before, value, verify);
    WriteActive(owner, active, value, verify);
    WriteCopies(before, copies_.size(), value, verify);
}

template <class T>
void ValueSource<T>::WriteActive(NodeBase& owner, Operand<T>& active, T value, bool verify) {
    if (active.node)
        return NumberKind<T>::Set(*active.node, value, verify);
    active.constant = value;
    owner.DropValue();
    owner.Changed();
}

// Increments that never meet those of the other places are no reason to refuse a value: its range is what all
// places have in common, and what lies between a copy's steps is the device's affair.
template <class T>
void ValueSource<T>::WriteCopies(std::size_t from, std::size_t to, T value, bool verify) {
    for (std::size_t i = from; i < to; ++i)
        NumberKind<T>::Set(*copies_[i], value, verify && !MissesOnlyTheGrid(*copies_[i], value));
}

template <class T>
EAccessMode ValueSource<T>::Access() {
    const NodeBase* target = Active().node;
    EAccessMode mode = target ? target->AccessMode() : RW;
    for (const NodeBase* copy : copies_) {
        const EAccessMode copyMode = copy->AccessMode();
        // Copies are only written; what cannot be written there cannot be written at all.
        if (!IsWritable(copyMode))
            mode = copyMode == NI ? NI : CombineAccess(mode, RO);
    }
    return mode;
}

template struct Operand<std::int64_t>;
template struct Operand<double>;
template class ValueSource<std::int64_t>;
template class ValueSource<double>;

} // namespace Engine
} // namespace GenApi_3_2
