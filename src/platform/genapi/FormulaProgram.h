// A compiled formula: postfix instructions with forward jumps, so that evaluation is one loop that always
// ends.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace GenApi_3_2 {
namespace Engine {

// A value that an evaluation may ask for. "GAIN.Min" yields the variable GAIN with suffix "Min" unless a
// variable is declared with just that dotted name. The suffix is empty for the value itself.
struct FormulaSlot {
    std::size_t variable = 0; // index in FormulaScope::variables
    std::string suffix;       // "", "Value", "Min", "Max", "Inc", "Entry.Mono8", ...
};

enum class FormulaOp : std::uint8_t {
    PushNumber, // number
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
    // Control; operand: index of the instruction to go on with.
    Jump,
    JumpIfZero,        // takes the value off
    KeepZeroOrDrop,    // 0: leaves it and jumps; otherwise takes it off
    KeepNonZeroOrDrop, // non-zero: leaves 1 and jumps; otherwise takes it off
};

struct FormulaInstruction {
    FormulaOp op = FormulaOp::PushNumber;
    std::uint32_t operand = 0;
    std::uint32_t position = 0; // in the text, for messages
    union {
        std::int64_t integer;
        double real;
    } number = {0};
};

struct FormulaProgram {
    static constexpr std::size_t MaxStack = 256;
    static constexpr std::size_t MaxInstructions = 16384;

    std::vector<FormulaInstruction> code;
    std::vector<FormulaSlot> slots;
};

} // namespace Engine
} // namespace GenApi_3_2
