#include "platform/genapi/kinds/EnumerationNode.h"

#include "platform/genapi/base/AccessModes.h"
#include "platform/genapi/base/NumberText.h"
#include "platform/genapi/kinds/EnumEntryNode.h"

#include <algorithm>
#include <cmath>

namespace GenApi_3_2 {
namespace Engine {

using GenICam_3_2::AccessException;
using GenICam_3_2::InvalidArgumentException;
using GenICam_3_2::OutOfRangeException;
using GenICam_3_2::RuntimeException;

bool EnumerationNode::Take(const Element& element) {
    if (element.id != ElementId::EnumEntry)
        return source_.Take(*this, element);
    NodeBase* entry = Refer(element, Role::Entry);
    if (entry && entry->Record().kind == NodeKind::EnumEntry)
        entries_.push_back(static_cast<EnumEntryNode*>(entry));
    return true;
}

void EnumerationNode::Finish() {
    source_.Finish(*this);
}

EnumEntryNode* EnumerationNode::FindEntry(std::string_view symbolic) const {
    const auto found = std::find_if(entries_.begin(), entries_.end(), [&](const EnumEntryNode* entry) {
        return entry->Symbolic() == symbolic || entry->Record().symbolicName == symbolic;
    });
    return found == entries_.end() ? nullptr : *found;
}

EnumEntryNode* EnumerationNode::FindEntry(std::int64_t value) const {
    EnumEntryNode* match = nullptr;
    for (EnumEntryNode* entry : entries_) {
        if (entry->IsBroken() || entry->Value() != value)
            continue;
        // Several entries may share a value of which only one exists on this device.
        if (IsAvailable(entry->AccessMode()))
            return entry;
        if (!match)
            match = entry;
    }
    return match;
}

EnumEntryNode& EnumerationNode::CurrentEntry(bool ignoreCache) {
    const std::int64_t value = GetInteger(ignoreCache);
    EnumEntryNode* entry = FindEntry(value);
    if (!entry)
        Fail<RuntimeException>(*this, "the device's value " + std::to_string(value) + " has no entry");
    return *entry;
}

// ---- Interface

void EnumerationNode::GetSymbolics(StringList_t& Symbolics) {
    Symbolics.clear();
    Locked([&] {
        for (const EnumEntryNode* entry : entries_)
            if (!entry->IsBroken() && entry->AccessMode() != NI)
                Symbolics.push_back(entry->GetSymbolic());
    });
}

void EnumerationNode::GetEntries(NodeList_t& Entries) {
    Entries.assign(entries_.begin(), entries_.end());
}

IEnumeration& EnumerationNode::operator=(const gcstring& ValueStr) {
    FromString(ValueStr);
    return *this;
}

void EnumerationNode::SetIntValue(std::int64_t Value, bool Verify) {
    Write(Verify, [&] { SetInteger(Value, Verify); });
}

std::int64_t EnumerationNode::GetIntValue(bool Verify, bool IgnoreCache) {
    const Operation operation(Context());
    if (Verify)
        RequireReadable();
    return GetInteger(IgnoreCache);
}

IEnumEntry* EnumerationNode::GetEntryByName(const gcstring& Symbolic) {
    return FindEntry(std::string_view(Symbolic.c_str(), Symbolic.size()));
}

IEnumEntry* EnumerationNode::GetEntry(std::int64_t IntValue) {
    return Locked([&] { return FindEntry(IntValue); });
}

IEnumEntry* EnumerationNode::GetCurrentEntry(bool Verify, bool IgnoreCache) {
    return Locked([&] {
        if (Verify)
            RequireReadable();
        return FindEntry(GetInteger(IgnoreCache));
    });
}

// ---- Values

std::int64_t EnumerationNode::ReadInteger(bool ignoreCache) {
    const std::int64_t value = source_.Read(ignoreCache);
    Context().GetCache().SetPassing(*this, IsSelfClearing(value));
    return value;
}

bool EnumerationNode::IsSelfClearing(std::int64_t value) const {
    return std::any_of(entries_.begin(), entries_.end(), [&](const EnumEntryNode* entry) {
        return entry->IsSelfClearing() && entry->Value() == value && !entry->IsBroken();
    });
}

void EnumerationNode::RequireAvailable(const EnumEntryNode& entry) const {
    const EAccessMode mode = entry.AccessMode();
    if (!IsAvailable(mode))
        Fail<AccessException>(*this, "entry '" + std::string(entry.Symbolic()) + "' is " +
                                         (mode == NI ? "not implemented" : "not available"));
}

void EnumerationNode::VerifyInteger(std::int64_t value) {
    const EnumEntryNode* entry = FindEntry(value);
    if (!entry)
        Fail<OutOfRangeException>(*this, "value " + std::to_string(value) + " has no entry");
    RequireAvailable(*entry);
}

void EnumerationNode::WriteInteger(std::int64_t value, bool verify) {
    source_.Write(*this, value, verify);
    const bool isPassing = IsSelfClearing(value);
    Context().GetCache().SetPassing(*this, isPassing);
    if (isPassing) // what was written is not what will be read
        Context().GetCache().Invalidate(*this);
}

double EnumerationNode::GetNumeric(bool ignoreCache) {
    return CurrentEntry(ignoreCache).Numeric();
}

void EnumerationNode::SetNumeric(double value, bool verify) {
    Enter();
    const EnumEntryNode* nearest = nullptr;
    for (const EnumEntryNode* entry : entries_)
        if (IsAvailable(entry->AccessMode()) &&
            (!nearest || std::abs(entry->Numeric() - value) < std::abs(nearest->Numeric() - value)))
            nearest = entry;
    if (!nearest)
        Fail<AccessException>(*this, "has no available entry");
    SetInteger(nearest->Value(), verify);
}

template <class Range, class Number>
Range EnumerationNode::RangeOver(Number (EnumEntryNode::*numberOf)() const) const {
    Enter();
    Range range;
    bool isFirst = true;
    for (const EnumEntryNode* entry : entries_) {
        if (!IsAvailable(entry->AccessMode()))
            continue;
        const Number number = (entry->*numberOf)();
        range.min = isFirst ? number : std::min(range.min, number);
        range.max = isFirst ? number : std::max(range.max, number);
        isFirst = false;
    }
    return range;
}

IntegerRange EnumerationNode::GetRange() {
    return RangeOver<IntegerRange>(&EnumEntryNode::Value);
}

FloatRange EnumerationNode::GetFloatRange() {
    return RangeOver<FloatRange>(&EnumEntryNode::Numeric);
}

gcstring EnumerationNode::ShownText(bool ignoreCache) {
    return CurrentEntry(ignoreCache).GetSymbolic();
}

void EnumerationNode::TakeShownText(const gcstring& text, bool verify) {
    const std::string_view name = Strip(std::string_view(text.c_str(), text.size()));
    const EnumEntryNode* entry = FindEntry(name);
    if (!entry || entry->IsBroken())
        Fail<InvalidArgumentException>(*this, "has no entry '" + std::string(name) + "'");
    if (verify)
        RequireAvailable(*entry);
    SetInteger(entry->Value(), verify);
}

} // namespace Engine
} // namespace GenApi_3_2
