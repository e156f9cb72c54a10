// String: a text of the description or of another node.
#pragma once

#include "platform/genapi/nodes/TextFace.h"

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

} // namespace Engine
} // namespace GenApi_3_2
