// Turns the text of a formula into a FormulaProgram with an operator stack of its own, so that the depth of
// brackets costs heap, never call stack. Lives for one compilation.
#pragma once

#include "platform/genapi/base/NameTable.h"
#include "platform/genapi/formula/FormulaLexer.h"
#include "platform/genapi/formula/FormulaProgram.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace GenApi_3_2 {
namespace Engine {

struct FormulaScope;

enum class FormulaType : std::uint8_t { Integer, Float };

class FormulaCompiler {
public:
    FormulaCompiler(FormulaType type, const FormulaScope& scope);
    // Throws FormulaError.
    FormulaProgram Compile(std::string_view text);

private:
    // What waits on the operator stack for its right operand or its closing bracket.
    struct Pending {
        enum class Kind : std::uint8_t { Operator, And, Or, Then, Else, Bracket, Function };
        Kind kind = Kind::Operator;
        std::uint8_t precedence = 0;
        FormulaOp op = FormulaOp::End;
        std::uint32_t position = 0;
        std::size_t jump = 0;      // And, Or, Then, Else: the instruction to direct past the operand
        std::size_t arguments = 0; // Function: begun so far
        std::size_t function = 0;  // Function: which
    };
    // The formula itself or one of its expressions while it is compiled.
    struct Routine {
        std::vector<FormulaInstruction> code;
        std::vector<Pending> pending;
        Token next; // the token after the one at hand
        bool expectOperand = true;
        bool isExpression = false;
        std::uint32_t position = 0; // of the mention, reported for all instructions of an expression
        std::size_t depth = 0;      // values on the stack at this point
        std::size_t maxDepth = 0;   // the most there ever are
    };
    struct Expression {
        std::size_t definition = 0;
        bool isComplete = false; // false while its text is compiled: a mention then is a circle
        Routine routine;
    };

    void CompileText(Routine& routine, std::string_view text);
    // True when `token` and routine.next were both used.
    bool AcceptOperand(Routine& routine, const Token& token);
    bool AcceptName(Routine& routine, const Token& token);
    bool AcceptDeclared(Routine& routine, const Token& token);
    void AcceptOperator(Routine& routine, const Token& token);
    void AcceptLogical(Routine& routine, const Token& token);
    void AcceptQuestion(Routine& routine, const Token& token);
    void AcceptColon(Routine& routine, const Token& token);
    void AcceptComma(Routine& routine, const Token& token);
    void AcceptClose(Routine& routine, const Token& token);

    // Finishes what binds tighter than `precedence` back to the innermost bracket.
    void FinishAbove(Routine& routine, int precedence);
    void Finish(Routine& routine, const Pending& pending);
    void EmitFunction(Routine& routine, const Pending& pending);
    void EmitNumber(Routine& routine, std::string_view text, std::uint32_t position);
    void EmitReal(Routine& routine, double value, std::uint32_t position);
    void EmitExpression(Routine& routine, std::size_t definition, std::uint32_t position);
    // Appends an instruction, returns its index and keeps account of the stack.
    std::size_t Emit(Routine& routine, FormulaOp op, std::uint32_t position, std::uint64_t operand = 0);
    void NeedDepth(Routine& routine, std::size_t depth, std::uint32_t position);

    std::size_t SlotFor(std::string_view mention, std::size_t variable, std::string_view suffix);
    FormulaProgram Link(Routine& main);

    FormulaType type_;
    const FormulaScope& scope_;
    NameTable names_; // variables, then constants, then expressions, numbered through
    std::vector<FormulaSlot> slots_;
    NameTable mentions_; // slots by the name they are mentioned with
    std::vector<Expression> expressions_;
};

} // namespace Engine
} // namespace GenApi_3_2
