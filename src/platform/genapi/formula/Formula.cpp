#include "platform/genapi/formula/Formula.h"

#include "platform/genapi/formula/FormulaArithmetic.h"
#include "platform/genapi/formula/FormulaCompiler.h"

#include <type_traits>

namespace GenApi_3_2 {
namespace Engine {

FormulaError::FormulaError(const std::string& reason, std::size_t position)
    : std::runtime_error(reason + " (at character " + std::to_string(position + 1) + ")"),
      position_(position) {}

namespace {

template <typename T>
T NumberOf(const FormulaInstruction& instruction) {
    if constexpr (std::is_same_v<T, double>)
        return instruction.real;
    else
        return instruction.integer;
}

// One evaluation: a stack, the values already fetched and the expressions already computed. The arrays stay
// uninitialised, the masks tell what they hold. The compiler has proved that the stack suffices.
template <typename T, typename Source>
class Evaluation {
public:
    Evaluation(const FormulaProgram& program, Source& source) : program_(program), source_(source) {}

    T Run() {
        const FormulaInstruction* pc = program_.code.data();
        for (;;) {
            const FormulaInstruction& instruction = *pc++;
            const FormulaOp op = instruction.op;
            if (TakesTwo(op)) {
                --top_;
                *top_ = Two(op, *top_, top_[1], instruction.position);
            } else if (op == FormulaOp::PushNumber) {
                *++top_ = NumberOf<T>(instruction);
            } else if (op == FormulaOp::PushSlot) {
                *++top_ = Fetch(instruction.operand);
            } else if (TakesOne(op)) {
                *top_ = ApplyOne(op, *top_, instruction.position);
            } else if (op == FormulaOp::End) {
                return *top_;
            } else {
                pc = Control(op, instruction.operand, pc);
            }
        }
    }

private:
    static T Two(FormulaOp op, T left, T right, std::size_t position) {
        if constexpr (std::is_same_v<T, double>) {
            if (op == FormulaOp::Add)
                return left + right;
            if (op == FormulaOp::Multiply)
                return left * right;
        }
        return ApplyTwo(op, left, right, position);
    }

    T Fetch(std::uint64_t slot) {
        if (slot >= FormulaProgram::MaxCachedSlots)
            return source_.Value(slot);
        const std::uint64_t bit = std::uint64_t{1} << slot;
        if (!(fetched_ & bit)) {
            values_[slot] = source_.Value(slot);
            fetched_ |= bit;
        }
        return values_[slot];
    }

    const FormulaInstruction* Control(FormulaOp op, std::uint64_t operand, const FormulaInstruction* next) {
        const FormulaInstruction* const code = program_.code.data();
        switch (op) {
        case FormulaOp::Jump:
            return code + operand;
        case FormulaOp::JumpIfZero:
            return *top_-- == 0 ? code + operand : next;
        case FormulaOp::KeepZeroOrDrop:
            if (*top_ == 0)
                return code + operand;
            --top_;
            return next;
        case FormulaOp::KeepNonZeroOrDrop:
            if (*top_ != 0) {
                *top_ = 1;
                return code + operand;
            }
            --top_;
            return next;
        case FormulaOp::Call:
            return Call(operand, next);
        default: // Return
            results_[operand] = *top_;
            computed_ |= std::uint64_t{1} << operand;
            return callers_[--calls_];
        }
    }

    const FormulaInstruction* Call(std::uint64_t expression, const FormulaInstruction* next) {
        if (computed_ & (std::uint64_t{1} << expression)) {
            *++top_ = results_[expression];
            return next;
        }
        callers_[calls_++] = next;
        return program_.code.data() + program_.expressions[expression];
    }

    const FormulaProgram& program_;
    Source& source_;
    std::uint64_t fetched_ = 0;
    std::uint64_t computed_ = 0;
    std::size_t calls_ = 0;
    T* top_ = stack_; // the first place stays empty
    T stack_[FormulaProgram::MaxStack + 1];
    T values_[FormulaProgram::MaxCachedSlots];
    T results_[FormulaProgram::MaxExpressions];
    const FormulaInstruction* callers_[FormulaProgram::MaxExpressions];
};

template <typename T>
struct ArraySource {
    const T* values;
    T Value(std::size_t slot) const { return values[slot]; }
};

template <typename T>
constexpr FormulaType TypeOf = std::is_same_v<T, double> ? FormulaType::Float : FormulaType::Integer;

} // namespace

template <typename T>
BasicFormula<T>::BasicFormula(std::string_view text, const FormulaScope& scope)
    : program_(FormulaCompiler(TypeOf<T>, scope).Compile(text)) {}

template <typename T>
T BasicFormula<T>::Evaluate(FormulaVariables<T>& variables) const {
    return Evaluation<T, FormulaVariables<T>>(program_, variables).Run();
}

template <typename T>
T BasicFormula<T>::Evaluate(const T* values) const {
    ArraySource<T> source{values};
    return Evaluation<T, ArraySource<T>>(program_, source).Run();
}

template class BasicFormula<std::int64_t>;
template class BasicFormula<double>;

} // namespace Engine
} // namespace GenApi_3_2
