// StringReg: a text in a register, ended by a NUL.
#pragma once

#include "platform/genapi/nodes/TextFace.h"
#include "platform/genapi/registers/RegisterFace.h"

#include <string>

namespace GenApi_3_2 {
namespace Engine {

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
