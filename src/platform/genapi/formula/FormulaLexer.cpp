#include "platform/genapi/formula/FormulaLexer.h"

#include "platform/genapi/base/Characters.h"
#include "platform/genapi/formula/Formula.h"

namespace GenApi_3_2 {
namespace Engine {

namespace {

bool StartsName(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}

struct Symbol {
    char first;
    char second; // '\0': a symbol of one character
    TokenKind kind;
};

// The longer symbols stand before their beginnings.
constexpr Symbol Symbols[] = {
    {'*', '*', TokenKind::Power},        {'*', '\0', TokenKind::Star},      {'<', '>', TokenKind::NotEqual},
    {'<', '=', TokenKind::LessEqual},    {'<', '<', TokenKind::ShiftLeft},  {'<', '\0', TokenKind::Less},
    {'>', '=', TokenKind::GreaterEqual}, {'>', '>', TokenKind::ShiftRight}, {'>', '\0', TokenKind::Greater},
    {'=', '=', TokenKind::Equal},        {'=', '\0', TokenKind::Equal},     {'!', '=', TokenKind::NotEqual},
    {'!', '\0', TokenKind::LogicalNot},  {'&', '&', TokenKind::LogicalAnd}, {'&', '\0', TokenKind::And},
    {'|', '|', TokenKind::LogicalOr},    {'|', '\0', TokenKind::Or},        {'^', '\0', TokenKind::Xor},
    {'~', '\0', TokenKind::Not},         {'+', '\0', TokenKind::Plus},      {'-', '\0', TokenKind::Minus},
    {'/', '\0', TokenKind::Slash},       {'%', '\0', TokenKind::Percent},   {'(', '\0', TokenKind::Open},
    {')', '\0', TokenKind::Close},       {',', '\0', TokenKind::Comma},     {'?', '\0', TokenKind::Question},
    {':', '\0', TokenKind::Colon},
};

std::string Printable(char c) {
    if (c > ' ' && c < 0x7F)
        return std::string("'") + c + "'";
    static const char digits[] = "0123456789ABCDEF";
    const auto byte = static_cast<unsigned char>(c);
    return std::string("byte 0x") + digits[byte >> 4] + digits[byte & 15];
}

} // namespace

Token FormulaLexer::Take(TokenKind kind, std::size_t length) {
    const Token token{kind, static_cast<std::uint32_t>(pos_), text_.substr(pos_, length)};
    pos_ += length;
    return token;
}

std::size_t FormulaLexer::NumberLength() const {
    std::size_t n = 0;
    if (At(0) == '0' && (At(1) == 'x' || At(1) == 'X')) {
        for (n = 2; HexDigit(At(n)) >= 0; ++n) {
        }
        return n;
    }
    while (IsDigit(At(n)))
        ++n;
    if (At(n) == '.')
        for (++n; IsDigit(At(n)); ++n) {
        }
    if (At(n) == 'e' || At(n) == 'E') {
        std::size_t digits = n + 1;
        if (At(digits) == '+' || At(digits) == '-')
            ++digits;
        if (IsDigit(At(digits)))
            for (n = digits; IsDigit(At(n)); ++n) {
            }
    }
    return n;
}

// Dots belong to names: VAR.Min, VAR.Entry.Mono8.
std::size_t FormulaLexer::NameLength() const {
    std::size_t n = 1;
    while (StartsName(At(n)) || IsDigit(At(n)) ||
           (At(n) == '.' && (StartsName(At(n + 1)) || IsDigit(At(n + 1)))))
        ++n;
    return n;
}

Token FormulaLexer::Next() {
    while (pos_ < text_.size() && IsBlank(text_[pos_]))
        ++pos_;
    if (pos_ == text_.size())
        return Take(TokenKind::End, 0);
    if (IsDigit(At(0)) || (At(0) == '.' && IsDigit(At(1)))) {
        const std::size_t length = NumberLength();
        if (StartsName(At(length)) || At(length) == '.')
            throw FormulaError("number runs into " + Printable(At(length)), pos_ + length);
        return Take(TokenKind::Number, length);
    }
    if (StartsName(At(0)))
        return Take(TokenKind::Name, NameLength());
    for (const Symbol& symbol : Symbols)
        if (At(0) == symbol.first && (symbol.second == '\0' || At(1) == symbol.second))
            return Take(symbol.kind, symbol.second == '\0' ? 1 : 2);
    throw FormulaError("unexpected " + Printable(At(0)), pos_);
}

} // namespace Engine
} // namespace GenApi_3_2
