#include "platform/genapi/NodeBase.h"

#include "platform/genapi/Access.h"
#include "platform/genapi/NodeMap.h"
#include "platform/genapi/NumberText.h"
#include "platform/genapi/ValueText.h"

#include <algorithm>
#include <cmath>

namespace GenApi_3_2 {
namespace Engine {

using namespace GenICam_3_2;

std::string PlaceOf(const NodeBase& node) {
    return node.Map().Text().FileName() + ":" + std::to_string(node.Record().line) + ": node '" +
           std::string(node.Name()) + "'";
}

LinkSpan NodeBase::Links() const {
    return {map_.Links().data() + firstLink_, linkCount_};
}

// ---- Building

void NodeBase::ReadElements() {
    firstLink_ = static_cast<std::uint32_t>(map_.Links().size());
    ownMode_ = DefaultAccess();
    for (const Element& element : map_.Elements(record_))
        if (!Take(element))
            TakeCommon(element);
    if (!broken_)
        Finish();
    linkCount_ = static_cast<std::uint32_t>(map_.Links().size()) - firstLink_;
}

void NodeBase::TakeCommon(const Element& element) {
    switch (element.id) {
    case ElementId::AccessMode:
    case ElementId::ImposedAccessMode:
        if (const auto mode = AccessModeOfText(element.text))
            (element.id == ElementId::AccessMode ? ownMode_ : imposedMode_) = *mode;
        else
            Report(element, "access mode '" + std::string(element.text) + "' is unknown");
        break;
    case ElementId::PollingTime:
        if (const auto time = ParseInteger(element.text); time && *time > 0)
            pollingTime_ = *time;
        break;
    case ElementId::pInvalidator:
        Refer(element, Role::Invalidator);
        break;
    case ElementId::pSelected:
        if (NodeBase* node = map_.NodeAt(element.target)) {
            selected_.push_back(node);
            node->AddSelecting(*this);
        }
        break;
    case ElementId::pAlias:
        alias_ = map_.NodeAt(element.target);
        break;
    case ElementId::pCastAlias:
        castAlias_ = map_.NodeAt(element.target);
        break;
    default:
        TakeCondition(element);
    }
}

void NodeBase::TakeCondition(const Element& element) {
    switch (element.id) {
    case ElementId::pIsImplemented:
        isImplemented_ = Refer(element, Role::Condition);
        break;
    case ElementId::pIsAvailable:
        isAvailable_ = Refer(element, Role::Condition);
        break;
    case ElementId::pIsLocked:
        isLocked_ = Refer(element, Role::Condition);
        break;
    case ElementId::pError:
        error_ = Refer(element, Role::Written);
        break;
    case ElementId::pBlockPolling:
        blockPolling_ = map_.NodeAt(element.target);
        break;
    default:
        break; // texts: read from the record when asked for
    }
}

NodeBase* NodeBase::Refer(const Element& element, Role role) {
    NodeBase* node = map_.NodeAt(element.target);
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

void NodeBase::AddLink(NodeBase& node, Role role) {
    map_.Links().push_back({&node, role});
}

void NodeBase::Report(const Element& element, const std::string& text) {
    map_.Report(record_, element.line, text);
}

void NodeBase::SetBroken(const Element* element, const std::string& reason, bool isNew) {
    if (broken_)
        return;
    broken_ = true;
    const std::uint32_t line = element ? element->line : record_.line;
    map_.SetBrokenReason(*this, "line " + std::to_string(line) + ": " + reason);
    if (isNew)
        map_.Report(record_, line, reason);
}

// ---- Values

void NodeBase::Enter() const {
    if (broken_)
        Fail<AccessException>(*this, "not available: " + map_.BrokenReason(*this));
    if (!map_.CountVisit())
        Fail<RuntimeException>(*this, "one operation would visit too many nodes");
}

std::int64_t NodeBase::FetchInteger(bool ignoreCache) {
    if (IsFloating()) {
        const double value = GetFloat(ignoreCache);
        if (const auto integer = RoundToInteger(value))
            return *integer;
        Fail<OutOfRangeException>(*this, "its value does not fit an integer");
    }
    Enter();
    const std::int64_t value = ReadInteger(ignoreCache);
    KeepInteger(value);
    return value;
}

double NodeBase::FetchFloat(bool ignoreCache) {
    if (!IsFloating())
        return static_cast<double>(GetInteger(ignoreCache));
    Enter();
    const double value = ReadFloat(ignoreCache);
    KeepFloat(value);
    return value;
}

void NodeBase::KeepInteger(std::int64_t value) {
    if (!cachable_)
        return;
    value_.integer = value;
    valueState_ = ValueState::Integer;
}

void NodeBase::KeepFloat(double value) {
    if (!cachable_)
        return;
    value_.real = value;
    valueState_ = ValueState::Float;
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
    map_.GetCache().Changed(*this);
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
