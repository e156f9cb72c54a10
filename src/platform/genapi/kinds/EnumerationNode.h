// Enumeration: an integer of which each value that makes sense has a name.
#pragma once

#include "platform/genapi/nodes/NodeBase.h"
#include "platform/genapi/nodes/ValueSource.h"

#include <string_view>
#include <vector>

namespace GenApi_3_2 {
namespace Engine {

class EnumEntryNode;

class EnumerationNode final : public NodeBase, public IEnumeration {
public:
    EnumerationNode(NodeContext& context, const NodeRecord& record)
        : NodeBase(context, record, intfIEnumeration) {}

    void GetSymbolics(StringList_t& Symbolics) override;
    void GetEntries(NodeList_t& Entries) override;
    IEnumeration& operator=(const gcstring& ValueStr) override;
    void SetIntValue(std::int64_t Value, bool Verify = true) override;
    gcstring operator*() override { return ToString(); }
    std::int64_t GetIntValue(bool Verify = false, bool IgnoreCache = false) override;
    IEnumEntry* GetEntryByName(const gcstring& Symbolic) override;
    IEnumEntry* GetEntry(std::int64_t IntValue) override;
    IEnumEntry* GetCurrentEntry(bool Verify = false, bool IgnoreCache = false) override;

    double GetNumeric(bool ignoreCache) override;
    // Chooses the available entry whose number is nearest.
    void SetNumeric(double value, bool verify) override;
    IntegerRange GetRange() override;
    FloatRange GetFloatRange() override;
    EnumEntryNode* FindEntry(std::string_view symbolic) const;
    EnumEntryNode* FindEntry(std::int64_t value) const;

protected:
    bool Take(const Element& element) override;
    void Finish() override;
    std::int64_t ReadInteger(bool ignoreCache) override;
    void WriteInteger(std::int64_t value, bool verify) override;
    void VerifyInteger(std::int64_t value) override;
    EAccessMode InnerAccess() const override { return source_.Access(); }
    gcstring ShownText(bool ignoreCache) override;
    void TakeShownText(const gcstring& text, bool verify) override;

private:
    EnumEntryNode& CurrentEntry(bool ignoreCache);
    // The device clears this value by itself.
    bool IsSelfClearing(std::int64_t value) const;
    void RequireAvailable(const EnumEntryNode& entry) const;
    // From the lowest to the highest number of the available entries.
    template <class Range, class Number>
    Range RangeOver(Number (EnumEntryNode::*numberOf)() const) const;

    mutable ValueSource<std::int64_t> source_;
    std::vector<EnumEntryNode*> entries_;
};

} // namespace Engine
} // namespace GenApi_3_2
