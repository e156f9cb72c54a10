// How tightly the operators of formulas bind: the precedence of C, with the power on top.
#pragma once

#include "platform/genapi/formula/FormulaLexer.h"
#include "platform/genapi/formula/FormulaProgram.h"

#include <cstdint>

namespace GenApi_3_2 {
namespace Engine {

// From loose to tight. Power binds tighter than a sign before it: -2**2 is -4.
enum Precedence : std::uint8_t {
    BracketPrecedence,
    TernaryPrecedence,
    OrPrecedence,
    AndPrecedence,
    BitOrPrecedence,
    BitXorPrecedence,
    BitAndPrecedence,
    EqualityPrecedence,
    RelationPrecedence,
    ShiftPrecedence,
    SumPrecedence,
    ProductPrecedence,
    PrefixPrecedence,
    PowerPrecedence,
};

struct FormulaBinary {
    FormulaOp op;
    Precedence precedence; // BracketPrecedence: no binary operator
};

FormulaBinary FormulaBinaryOf(TokenKind kind);

} // namespace Engine
} // namespace GenApi_3_2
