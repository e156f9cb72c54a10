// IntKey and TextDesc: numbers and texts out of a device's configuration memory (a ConfRom node).
#pragma once

#include "platform/genapi/nodes/IntegerFace.h"
#include "platform/genapi/nodes/TextFace.h"

namespace GenApi_3_2 {
namespace Engine {

class RegisterNode;

// The memory and the key that both kinds name.
class RomKey {
public:
    bool Take(NodeBase& owner, const Element& element);
    void Finish(NodeBase& owner);
    std::int64_t ReadValue(const NodeBase& owner, bool ignoreCache) const;
    std::string ReadText(const NodeBase& owner, bool ignoreCache) const;
    EAccessMode Access() const;

private:
    RegisterNode* rom_ = nullptr;
    int key_ = -1;
};

class IntKeyNode final : public IntegerFace {
public:
    using IntegerFace::IntegerFace;
    using IntegerFace::operator=;

protected:
    bool Take(const Element& element) override {
        return key_.Take(*this, element) || IntegerFace::Take(element);
    }
    void Finish() override { key_.Finish(*this); }
    std::int64_t ReadNumber(bool ignoreCache) override { return key_.ReadValue(*this, ignoreCache); }
    EAccessMode InnerAccess() const override { return key_.Access(); }
    EAccessMode DefaultAccess() const override { return RO; }

private:
    RomKey key_;
};

class TextDescNode final : public TextFace {
public:
    using TextFace::TextFace;
    using TextFace::operator=;
    std::int64_t MaxLength() override { return static_cast<std::int64_t>(ReadText(false).size()); }

protected:
    bool Take(const Element& element) override { return key_.Take(*this, element); }
    void Finish() override { key_.Finish(*this); }
    std::string ReadText(bool ignoreCache) override { return key_.ReadText(*this, ignoreCache); }
    EAccessMode InnerAccess() const override { return key_.Access(); }
    EAccessMode DefaultAccess() const override { return RO; }

private:
    RomKey key_;
};

} // namespace Engine
} // namespace GenApi_3_2
