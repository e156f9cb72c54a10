// String: a text of the description or of another node. StringReg: a text in a register, ended by a NUL.
#pragma once

#include "platform/genapi/RegisterFace.h"
#include "platform/genapi/TextFace.h"

#include <string>

namespace GenApi_3_2 {
namespace Engine {

class StringNode final : public TextFace {
public:
    using TextFace::TextFace;
    using TextFace::operator=;
    std::int64_t MaxLength() override;

protected:
    bool Take(const Element& element) override;
    std::string ReadText(bool ignoreCache) override;
    void WriteText(const std::string& value, bool verify) override;
    EAccessMode InnerAccess() const override { return target_ ? target_->AccessMode() : RW; }

private:
    NodeBase* target_ = nullptr;
    std::string text_;
};

class StringRegNode final : public RegisterFace<TextFace> {
public:
    using RegisterFace::RegisterFace;
    using TextFace::operator=;
    std::int64_t MaxLength() override;
    void DropValue() override { isKnown_ = false; }

protected:
    std::string ReadText(bool ignoreCache) override;
    void WriteText(const std::string& value, bool verify) override;
    bool HasValidCache() const override { return isKnown_; }

private:
    std::string text_;
    bool isKnown_ = false;
};

} // namespace Engine
} // namespace GenApi_3_2
