// A compiled formula: postfix instructions with forward jumps, and one routine an Expression, called at most
// once an evaluation; expressions never call each other in a circle, so every evaluation ends.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace GenApi_3_2 {
namespace Engine {

// A value that an evaluation may ask for. The suffix tells which value of the variable's node: "GAIN.Min" is
// the variable GAIN with suffix "Min", or the variable declared as "GAIN.Min", likewise with suffix "Min". It
// is empty for the value itself.
struct FormulaSlot {
    std::size_t variable = 0; // index in FormulaScope::variables
    std::string suffix;       // "", "Value", "Min", "Max", "Inc", "Entry.Mono8", ...
};

enum class FormulaOp : std::uint8_t {
    PushNumber, // integer or real
    PushSlot,   // operand: slot
    // Two operands.
    Add,
    Subtract,
    Multiply,
    Divide,
    Remainder,
    Power,
    BitAnd,
    BitOr,
    BitXor,
    ShiftLeft,
    ShiftRight,
    Equal,
    NotEqual,
    Less,
    LessEqual,
    Greater,
    GreaterEqual,
    Atan2,
    RoundTo,
    // One operand.
    Negate,
    BitNot,
    LogicalNot,
    ToBoolean,
    Abs,
    Sgn,
    Sqrt,
    Trunc,
    Floor,
    Ceil,
    Round,
    Sin,
    Cos,
    Tan,
    Asin,
    Acos,
    Atan,
    Exp,
    Ln,
    Lg,
    // Control; operand of jumps: index of the instruction to go on with.
    Jump,
    JumpIfZero,        // takes the value off
    KeepZeroOrDrop,    // 0: leaves it and jumps; otherwise takes it off
    KeepNonZeroOrDrop, // non-zero: leaves 1 and jumps; otherwise takes it off
    Call,              // operand: expression
    Return,            // operand: expression; its value is on top
    End,
};

inline bool TakesTwo(FormulaOp op) {
    return op >= FormulaOp::Add && op <= FormulaOp::RoundTo;
}
inline bool TakesOne(FormulaOp op) {
    return op >= FormulaOp::Negate && op <= FormulaOp::Lg;
}

struct FormulaInstruction {
    union {
        std::int64_t integer;
        double real;
        std::uint64_t operand;
    };
    std::uint32_t position = 0; // in the text, for messages
    FormulaOp op;

    FormulaInstruction(FormulaOp o, std::uint32_t pos, std::uint64_t arg = 0)
        : operand(arg), position(pos), op(o) {}
};

struct FormulaProgram {
    static constexpr std::size_t MaxText = 64 * 1024; // of a formula and each of its expressions
    static constexpr std::size_t MaxStack = 256;      // values waiting at once
    static constexpr std::size_t MaxExpressions = 64; // that one formula uses
    static constexpr std::size_t MaxCachedSlots = 64;

    std::vector<FormulaInstruction> code;
    std::vector<std::size_t> expressions; // index of each one's first instruction
    std::vector<FormulaSlot> slots;
};

} // namespace Engine
} // namespace GenApi_3_2
