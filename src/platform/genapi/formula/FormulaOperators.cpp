#include "platform/genapi/formula/FormulaOperators.h"

namespace GenApi_3_2 {
namespace Engine {

FormulaBinary FormulaBinaryOf(TokenKind kind) {
    switch (kind) {
    case TokenKind::Plus:
        return {FormulaOp::Add, SumPrecedence};
    case TokenKind::Minus:
        return {FormulaOp::Subtract, SumPrecedence};
    case TokenKind::Star:
        return {FormulaOp::Multiply, ProductPrecedence};
    case TokenKind::Slash:
        return {FormulaOp::Divide, ProductPrecedence};
    case TokenKind::Percent:
        return {FormulaOp::Remainder, ProductPrecedence};
    case TokenKind::Power:
        return {FormulaOp::Power, PowerPrecedence};
    case TokenKind::And:
        return {FormulaOp::BitAnd, BitAndPrecedence};
    case TokenKind::Or:
        return {FormulaOp::BitOr, BitOrPrecedence};
    case TokenKind::Xor:
        return {FormulaOp::BitXor, BitXorPrecedence};
    case TokenKind::ShiftLeft:
        return {FormulaOp::ShiftLeft, ShiftPrecedence};
    case TokenKind::ShiftRight:
        return {FormulaOp::ShiftRight, ShiftPrecedence};
    case TokenKind::Equal:
        return {FormulaOp::Equal, EqualityPrecedence};
    case TokenKind::NotEqual:
        return {FormulaOp::NotEqual, EqualityPrecedence};
    case TokenKind::Less:
        return {FormulaOp::Less, RelationPrecedence};
    case TokenKind::LessEqual:
        return {FormulaOp::LessEqual, RelationPrecedence};
    case TokenKind::Greater:
        return {FormulaOp::Greater, RelationPrecedence};
    case TokenKind::GreaterEqual:
        return {FormulaOp::GreaterEqual, RelationPrecedence};
    default:
        return {FormulaOp::End, BracketPrecedence};
    }
}

} // namespace Engine
} // namespace GenApi_3_2
