#include "platform/genapi/nodes/TextFace.h"

namespace GenApi_3_2 {
namespace Engine {

void TextFace::SetValue(const gcstring& Value, bool Verify) {
    Write(Verify, [&] { SetText(std::string(Value.c_str(), Value.size()), Verify); });
}

IString& TextFace::operator=(const gcstring& Value) {
    SetValue(Value);
    return *this;
}

gcstring TextFace::GetValue(bool Verify, bool IgnoreCache) {
    return ToString(Verify, IgnoreCache);
}

std::int64_t TextFace::GetMaxLength() {
    return Locked([&] {
        Enter();
        return MaxLength();
    });
}

gcstring TextFace::ShownText(bool ignoreCache) {
    const std::string text = GetText(ignoreCache);
    return gcstring(text.data(), text.size());
}

void TextFace::TakeShownText(const gcstring& text, bool verify) {
    SetText(std::string(text.c_str(), text.size()), verify);
}

} // namespace Engine
} // namespace GenApi_3_2
