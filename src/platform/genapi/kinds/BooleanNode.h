// Boolean: true when the value below it is OnValue, false when it is OffValue.
#pragma once

#include "platform/genapi/nodes/NodeBase.h"
#include "platform/genapi/nodes/ValueSource.h"

namespace GenApi_3_2 {
namespace Engine {

class BooleanNode final : public NodeBase, public IBoolean {
public:
    BooleanNode(NodeContext& context, const NodeRecord& record) : NodeBase(context, record, intfIBoolean) {}

    void SetValue(bool Value, bool Verify = true) override;
    IBoolean& operator=(bool Value) override;
    bool GetValue(bool Verify = false, bool IgnoreCache = false) const override;
    bool operator()() const override { return GetValue(); }

    IntegerRange GetRange() override;

protected:
    bool Take(const Element& element) override;
    void Finish() override { source_.Finish(*this); }
    std::int64_t ReadInteger(bool ignoreCache) override;
    void WriteInteger(std::int64_t value, bool verify) override;
    EAccessMode InnerAccess() const override { return source_.Access(); }
    gcstring ShownText(bool ignoreCache) override;
    void TakeShownText(const gcstring& text, bool verify) override;

private:
    mutable ValueSource<std::int64_t> source_;
    std::int64_t onValue_ = 1;
    std::int64_t offValue_ = 0;
};

} // namespace Engine
} // namespace GenApi_3_2
