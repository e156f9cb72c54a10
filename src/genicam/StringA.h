// Wrapper of a text node. Owned by the node map's wrapper.
#pragma once

#include "genicam/ValueA.h"

namespace VX3::GenICam {

class StringA : public ValueA<IString, GenApi_3_2::IString> {
public:
    using ValueA::ValueA;

    std::shared_ptr<IVariant> GetVariant() override {
        return std::make_shared<Variant<std::string>>(GetValue(false, false));
    }
    void SetValue(const std::string& value, bool verify) override {
        if (value_)
            value_->SetValue(value.c_str(), verify);
    }
    IString& operator=(const std::string& value) override {
        SetValue(value, true);
        return *this;
    }
    std::string GetValue(bool verify, bool ignoreCache) override {
        return value_ ? value_->GetValue(verify, ignoreCache).c_str() : std::string();
    }
    std::string operator*() override { return value_ ? (**value_).c_str() : std::string(); }
    std::int64_t GetMaxLength() override { return value_ ? value_->GetMaxLength() : 0; }
};

} // namespace VX3::GenICam
