// EnumEntry: one value of an enumeration, with its name and number.
#pragma once

#include "platform/genapi/nodes/NodeBase.h"

#include <optional>

namespace GenApi_3_2 {
namespace Engine {

class EnumEntryNode final : public NodeBase, public IEnumEntry {
public:
    EnumEntryNode(NodeContext& context, const NodeRecord& record)
        : NodeBase(context, record, intfIEnumEntry) {}

    std::int64_t GetValue() override;
    gcstring GetSymbolic() const override;
    // The symbolic name where the description gives no other: the node's own name repeats the enumeration's.
    gcstring GetDisplayName() const override;
    double GetNumericValue() override { return Numeric(); }
    bool IsSelfClearing() override { return isSelfClearing_; }
    bool IsSelfClearing() const { return isSelfClearing_; }

    std::int64_t Value() const { return value_; }
    // The number a Float over the enumeration sees; the value where the description gives no other.
    double Numeric() const { return numeric_.value_or(static_cast<double>(value_)); }
    std::string_view Symbolic() const { return symbolic_; }

protected:
    bool Take(const Element& element) override;
    void Finish() override;
    std::int64_t ReadInteger(bool) override { return value_; }
    gcstring ShownText(bool) override { return GetSymbolic(); }
    EAccessMode DefaultAccess() const override { return RO; }

private:
    std::int64_t value_ = 0;
    std::optional<double> numeric_;
    std::string_view symbolic_;
    bool hasValue_ = false;
    bool isSelfClearing_ = false;
};

} // namespace Engine
} // namespace GenApi_3_2
