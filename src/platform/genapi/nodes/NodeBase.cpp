#include "platform/genapi/nodes/NodeBase.h"

#include "platform/genapi/base/AccessModes.h"
#include "platform/genapi/base/ValueText.h"

#include <algorithm>
#include <cmath>

namespace GenApi_3_2 {
namespace Engine {

using namespace GenICam_3_2;

std::string PlaceOf(const NodeBase& node) {
    return node.Context().Text().FileName() + ":" + std::to_string(node.Record().line) + ": node '" +
           std::string(node.Name()) + "'";
}

// ---- Building

void NodeBase::ReadElements() {
    links_.Begin(context_.Links().size());
    access_.SetDefault(DefaultAccess());
    for (const Element& element : context_.Elements(record_))
        if (!Take(element))
            TakeCommon(element);
    if (!isBroken_)
        Finish();
    links_.End(context_.Links().size());
}

void NodeBase::TakeCommon(const Element& element) {
    switch (element.id) {
    case ElementId::AccessMode:
    case ElementId::ImposedAccessMode:
    case ElementId::pIsImplemented:
    case ElementId::pIsAvailable:
    case ElementId::pIsLocked:
        return access_.Take(*this, element);
    case ElementId::PollingTime:
    case ElementId::pBlockPolling:
        return polling_.Take(*this, element);
    case ElementId::pInvalidator:
    case ElementId::pSelected:
    case ElementId::pAlias:
    case ElementId::pCastAlias:
        return links_.Take(*this, element);
    case ElementId::pError:
        error_ = Refer(element, Role::Written);
        break;
    default:
        break; // texts: read from the record when asked for
    }
}

NodeBase* NodeBase::Refer(const Element& element, Role role) {
    NodeBase* node = context_.NodeAt(element.target);
    if (node)
        AddLink(*node, role);
    return node;
}

NodeBase* NodeBase::Require(const Element& element, Role role) {
    NodeBase* node = Refer(element, role);
    if (!node) // that the node does not exist has been said already
        SetBroken(&element,
                  std::string(ToText(element.id)) + " names the unknown node '" + std::string(element.text) +
                      "'",
                  false);
    return node;
}

void NodeBase::Report(const Element& element, const std::string& text) {
    context_.Report(record_, element.line, text);
}

void NodeBase::SetBroken(const Element* element, const std::string& reason, bool isNew) {
    if (isBroken_)
        return;
    isBroken_ = true;
    const std::uint32_t line = element ? element->line : record_.line;
    context_.SetBrokenReason(*this, "line " + std::to_string(line) + ": " + reason);
    if (isNew)
        context_.Report(record_, line, reason);
}

void NodeBase::SetCachable(bool isValueCachable, bool isAccessCachable) {
    value_.SetCachable(isValueCachable);
    access_.SetCachable(isAccessCachable);
}

// ---- Links and access

void NodeBase::GetChildren(NodeList_t& Children, ELinkType LinkType) const {
    NodeLinks::GetChildren(*this, Children, LinkType);
}

void NodeBase::GetParents(NodeList_t& Parents) const {
    NodeLinks::GetParents(*this, Parents);
}

void NodeBase::InvalidateNode() {
    Locked([&] {
        context_.GetCache().Invalidate(*this);
        context_.FireChanged();
    });
}

void NodeBase::ImposeAccessMode(EAccessMode ImposedAccessMode) {
    Locked([&] {
        access_.Impose(ImposedAccessMode);
        InvalidateNode();
    });
}

void NodeBase::RequireReadable() const {
    Enter();
    const EAccessMode mode = AccessMode();
    if (!IsReadable(mode))
        Fail<AccessException>(*this, std::string("is not readable (access mode ") + AccessText(mode) + ")");
}

void NodeBase::RequireWritable() const {
    Enter();
    const EAccessMode mode = AccessMode();
    if (!IsWritable(mode))
        Fail<AccessException>(*this, std::string("is not writable (access mode ") + AccessText(mode) + ")");
}

// ---- Values

void NodeBase::Enter() const {
    if (isBroken_)
        Fail<AccessException>(*this, "not available: " + context_.BrokenReason(*this));
    Visit();
}

void NodeBase::FailEndless() const {
    Fail<TooManyVisits>(*this, "one operation would visit too many nodes");
}

std::int64_t NodeBase::FetchInteger(bool ignoreCache) {
    const Moment now = context_.Now();
    if (const std::int64_t* seen = value_.Integer(now, ignoreCache))
        return *seen;
    if (IsFloating()) {
        const double value = GetFloat(ignoreCache);
        if (const auto integer = RoundToInteger(value))
            return *integer;
        Fail<OutOfRangeException>(*this, "its value does not fit an integer");
    }
    Enter();
    const std::int64_t value = ReadInteger(ignoreCache);
    value_.KeepRead(value, now, ignoreCache);
    return value;
}

double NodeBase::FetchFloat(bool ignoreCache) {
    if (!IsFloating())
        return static_cast<double>(GetInteger(ignoreCache));
    const Moment now = context_.Now();
    if (const double* seen = value_.Float(now, ignoreCache))
        return *seen;
    Enter();
    const double value = ReadFloat(ignoreCache);
    value_.KeepRead(value, now, ignoreCache);
    return value;
}

std::string NodeBase::GetText(bool ignoreCache) {
    Enter();
    return ReadText(ignoreCache);
}

void NodeBase::SetInteger(std::int64_t value, bool verify) {
    if (IsFloating())
        return SetFloat(static_cast<double>(value), verify);
    Enter();
    if (verify)
        VerifyInteger(value);
    DropValue();
    WriteInteger(value, verify);
}

void NodeBase::SetFloat(double value, bool verify) {
    if (!IsFloating()) {
        const auto integer = RoundToInteger(value);
        if (!integer)
            Fail<OutOfRangeException>(*this, "the value does not fit an integer");
        return SetInteger(*integer, verify);
    }
    Enter();
    if (verify)
        VerifyFloat(value);
    DropValue();
    WriteFloat(value, verify);
}

void NodeBase::VerifyInteger(std::int64_t value) {
    const IntegerRange range = GetRange();
    if (value < range.min || value > range.max)
        Fail<OutOfRangeException>(*this, "value " + std::to_string(value) + " is outside " +
                                             std::to_string(range.min) + " to " + std::to_string(range.max));
    if (range.validValues) {
        const auto& valid = *range.validValues;
        if (std::find(valid.begin(), valid.end(), value) == valid.end())
            Fail<OutOfRangeException>(*this,
                                      "value " + std::to_string(value) + " is not one of the valid values");
    } else if (!range.IsOnGrid(value)) {
        Fail<OutOfRangeException>(*this, "value " + std::to_string(value) + " is not " +
                                             std::to_string(range.min) + " plus a multiple of " +
                                             std::to_string(range.inc));
    }
}

void NodeBase::VerifyFloat(double value) {
    const FloatRange range = GetFloatRange();
    // Bounds that went through formulas are not exact to the last bit.
    const double slack = 1e-9 * std::max(std::abs(range.min), std::abs(range.max));
    const bool isInside = value >= range.min && value <= range.max;
    const bool isNear = std::isfinite(slack) && std::isfinite(value) && slack < 1e200 &&
                        value >= range.min - slack && value <= range.max + slack;
    if (!isInside && !isNear)
        Fail<OutOfRangeException>(*this, "value " + FloatText(value, fnAutomatic, {}) + " is outside " +
                                             FloatText(range.min, fnAutomatic, {}) + " to " +
                                             FloatText(range.max, fnAutomatic, {}));
}

void NodeBase::SetText(const std::string& value, bool verify) {
    Enter();
    WriteText(value, verify);
}

IntegerRange NodeBase::GetRange() {
    return IsFloating() ? ToIntegerRange(GetFloatRange()) : IntegerRange();
}

FloatRange NodeBase::GetFloatRange() {
    return IsFloating() ? FloatRange() : ToFloatRange(GetRange());
}

const Element* NodeBase::FindAtOrigin(ElementId id) const {
    const NodeBase* node = this;
    const Element* found = context_.Text().Find(record_, id);
    try {
        while (!found && !node->IsBroken() && (node = node->Origin()) != nullptr) {
            node->Visit();
            found = context_.Text().Find(node->record_, id);
        }
    } catch (const TooManyVisits&) {
        throw;
    } catch (const GenericException&) { // which of several nodes it is cannot be read
        return nullptr;
    }
    return found;
}

std::int64_t NodeBase::ReadInteger(bool) {
    Fail<LogicalErrorException>(*this, "has no value that is a number");
}
double NodeBase::ReadFloat(bool) {
    Fail<LogicalErrorException>(*this, "has no value that is a number");
}
std::string NodeBase::ReadText(bool) {
    Fail<LogicalErrorException>(*this, "has no value that is a text");
}
void NodeBase::WriteInteger(std::int64_t, bool) {
    Fail<AccessException>(*this, "cannot be written as a number");
}
void NodeBase::WriteFloat(double, bool) {
    Fail<AccessException>(*this, "cannot be written as a number");
}
void NodeBase::WriteText(const std::string&, bool) {
    Fail<AccessException>(*this, "cannot be written as a text");
}

gcstring NodeBase::ShownText(bool) {
    return GetName();
}
void NodeBase::TakeShownText(const gcstring&, bool) {
    Fail<AccessException>(*this, "takes no text");
}

gcstring NodeBase::ToString(bool Verify, bool IgnoreCache) {
    return Locked([&] {
        if (Verify)
            RequireReadable();
        return ShownText(IgnoreCache);
    });
}

void NodeBase::FromString(const gcstring& ValueStr, bool Verify) {
    Write(Verify, [&] { TakeShownText(ValueStr, Verify); });
}

bool NodeBase::IsValueCacheValid() const {
    return Locked([&] { return HasValidCache(); });
}

void NodeBase::Changed() {
    context_.GetCache().Changed(*this);
}

void NodeBase::CheckDeviceError() {
    if (!error_ || error_->GetInteger(true) == 0)
        return;
    Fail<RuntimeException>(*this, "the device reports the error '" +
                                      std::string(error_->ShownText(false).c_str()) + "' in '" +
                                      std::string(error_->Name()) + "'");
}

} // namespace Engine
} // namespace GenApi_3_2
