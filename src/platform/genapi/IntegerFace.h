// The integer interface over what a node type reads and writes; base of all nodes with an integer value.
#pragma once

#include "platform/genapi/NodeBase.h"
#include "platform/genapi/NodeMap.h"

#include <cstdint>
#include <optional>

namespace GenApi_3_2 {
namespace Engine {

class IntegerFace : public NodeBase, public IInteger {
public:
    IntegerFace(NodeMap& map, const NodeRecord& record) : NodeBase(map, record, intfIInteger) {}

    void SetValue(std::int64_t Value, bool Verify = true) override;
    IInteger& operator=(std::int64_t Value) override;
    std::int64_t GetValue(bool Verify = false, bool IgnoreCache = false) override;
    std::int64_t operator()() override { return GetValue(); }
    std::int64_t operator*() override { return GetValue(); }
    std::int64_t GetMin() override;
    std::int64_t GetMax() override;
    EIncMode GetIncMode() override;
    std::int64_t GetInc() override;
    const int64_autovector_t GetListOfValidValues(bool bounded = true) override;
    ERepresentation GetRepresentation() override { return representation_; }
    gcstring GetUnit() override;
    IFloat* GetFloatAlias() override;
    void ImposeMin(std::int64_t Value) override;
    void ImposeMax(std::int64_t Value) override;

    // With what was imposed.
    IntegerRange GetRange() final;

protected:
    virtual IntegerRange ReadRange() { return {}; }
    bool Take(const Element& element) override;
    gcstring ShownText(bool ignoreCache) override;
    void TakeShownText(const gcstring& text, bool verify) override;

    ERepresentation representation_ = PureNumber;

private:
    std::optional<std::int64_t> imposedMin_;
    std::optional<std::int64_t> imposedMax_;
};

} // namespace Engine
} // namespace GenApi_3_2
