// Splits the text of a formula into tokens, one at a time. Used by FormulaCompiler only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace GenApi_3_2 {
namespace Engine {

enum class TokenKind : std::uint8_t {
    End,
    Number,
    Name,
    Open,
    Close,
    Comma,
    Question,
    Colon,
    Plus,
    Minus,
    Star,
    Slash,
    Percent,
    Power,
    And,
    Or,
    Xor,
    Not,
    LogicalAnd,
    LogicalOr,
    LogicalNot,
    ShiftLeft,
    ShiftRight,
    Equal,
    NotEqual,
    Less,
    LessEqual,
    Greater,
    GreaterEqual,
};

struct Token {
    TokenKind kind = TokenKind::End;
    std::uint32_t position = 0;
    std::string_view text;
};

class FormulaLexer {
public:
    explicit FormulaLexer(std::string_view text) : text_(text) {}
    // Throws FormulaError at a character that begins no token. At the end, End for ever.
    Token Next();

private:
    std::size_t NumberLength() const;
    std::size_t NameLength() const;
    Token Take(TokenKind kind, std::size_t length);
    char At(std::size_t ahead) const { return pos_ + ahead < text_.size() ? text_[pos_ + ahead] : '\0'; }

    std::string_view text_;
    std::size_t pos_ = 0;
};

} // namespace Engine
} // namespace GenApi_3_2
