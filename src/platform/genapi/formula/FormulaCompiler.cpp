#include "platform/genapi/formula/FormulaCompiler.h"

#include "platform/genapi/base/NumberText.h"
#include "platform/genapi/formula/Formula.h"
#include "platform/genapi/formula/FormulaFunctions.h"
#include "platform/genapi/formula/FormulaOperators.h"

#include <algorithm>

namespace GenApi_3_2 {
namespace Engine {

namespace {

std::string Quoted(std::string_view text) {
    constexpr std::size_t Longest = 80;
    std::string quoted = "'";
    quoted.append(text.substr(0, Longest)).append(text.size() > Longest ? "...'" : "'");
    return quoted;
}

// What of its node a variable declared with a dotted name stands for.
std::string_view DeclaredSuffix(std::string_view name) {
    const std::size_t dot = name.find('.');
    if (dot == std::string_view::npos)
        return {};
    const std::string_view suffix = name.substr(dot + 1);
    for (const std::string_view known : {"Value", "Min", "Max", "Inc"})
        if (suffix == known)
            return suffix;
    return suffix.substr(0, 6) == "Entry." ? suffix : std::string_view();
}

} // namespace

FormulaCompiler::FormulaCompiler(FormulaType type, const FormulaScope& scope) : type_(type), scope_(scope) {
    names_.Reserve(scope.variables.size() + scope.constants.size() + scope.expressions.size());
    std::int32_t index = 0;
    for (std::string_view name : scope.variables)
        names_.Insert(name, index++);
    for (const auto& constant : scope.constants)
        names_.Insert(constant.first, index++);
    for (const auto& expression : scope.expressions)
        names_.Insert(expression.first, index++);
}

FormulaProgram FormulaCompiler::Compile(std::string_view text) {
    Routine main;
    CompileText(main, text);
    Emit(main, FormulaOp::End, 0);
    return Link(main);
}

void FormulaCompiler::CompileText(Routine& routine, std::string_view text) {
    if (text.size() > FormulaProgram::MaxText)
        throw FormulaError("formula is longer than 64 KiB", 0);
    routine.code.reserve(std::min<std::size_t>(text.size() / 2 + 2, 32));
    FormulaLexer lexer(text);
    Token token = lexer.Next();
    for (;;) {
        if (token.kind != TokenKind::End)
            routine.next = lexer.Next();
        bool usedBoth = false;
        if (routine.expectOperand)
            usedBoth = AcceptOperand(routine, token);
        else if (token.kind == TokenKind::End)
            break;
        else
            AcceptOperator(routine, token);
        token = usedBoth ? lexer.Next() : routine.next;
    }
    FinishAbove(routine, BracketPrecedence);
    if (!routine.pending.empty()) {
        const Pending& open = routine.pending.back();
        throw FormulaError(open.kind == Pending::Kind::Then ? "'?' without ':'" : "bracket is not closed",
                           open.position);
    }
}

bool FormulaCompiler::AcceptOperand(Routine& routine, const Token& token) {
    if (!routine.pending.empty() && routine.pending.back().kind == Pending::Kind::Function &&
        routine.pending.back().arguments == 0) {
        if (token.kind == TokenKind::Close) {
            AcceptClose(routine, token);
            return false;
        }
        routine.pending.back().arguments = 1;
    }
    Pending pending;
    pending.precedence = PrefixPrecedence;
    pending.position = token.position;
    switch (token.kind) {
    case TokenKind::Number:
        EmitNumber(routine, token.text, token.position);
        routine.expectOperand = false;
        return false;
    case TokenKind::Name:
        return AcceptName(routine, token);
    case TokenKind::Plus:
        return false;
    case TokenKind::Open:
        pending.kind = Pending::Kind::Bracket;
        pending.precedence = BracketPrecedence;
        break;
    case TokenKind::Minus:
        pending.op = FormulaOp::Negate;
        break;
    case TokenKind::Not:
        pending.op = FormulaOp::BitNot;
        break;
    case TokenKind::LogicalNot:
        pending.op = FormulaOp::LogicalNot;
        break;
    case TokenKind::End:
        throw FormulaError("formula ends where a value is missing", token.position);
    default:
        throw FormulaError("value is missing before " + Quoted(token.text), token.position);
    }
    routine.pending.push_back(pending);
    return false;
}

bool FormulaCompiler::AcceptName(Routine& routine, const Token& token) {
    const std::size_t function = FindFormulaFunction(token.text);
    if (function != NoFormulaFunction && routine.next.kind == TokenKind::Open) {
        Pending pending;
        pending.kind = Pending::Kind::Function;
        pending.position = token.position;
        pending.function = function;
        routine.pending.push_back(pending);
        return true;
    }
    routine.expectOperand = false;
    if (AcceptDeclared(routine, token))
        return false;
    if (function == NoFormulaFunction || FormulaFunctionAt(function).maxArguments != 0)
        throw FormulaError("name " + Quoted(token.text) + " is not known", token.position);
    EmitReal(routine, FormulaFunctionAt(function).constant, token.position);
    return false;
}

bool FormulaCompiler::AcceptDeclared(Routine& routine, const Token& token) {
    std::string_view suffix;
    std::int32_t found = names_.Find(token.text);
    if (found == NameTable::Missing) {
        const std::size_t dot = token.text.find('.');
        if (dot == std::string_view::npos)
            return false;
        found = names_.Find(token.text.substr(0, dot));
        if (found == NameTable::Missing || static_cast<std::size_t>(found) >= scope_.variables.size())
            return false;
        suffix = token.text.substr(dot + 1);
    }
    std::size_t index = static_cast<std::size_t>(found);
    if (index < scope_.variables.size()) {
        if (suffix.empty())
            suffix = DeclaredSuffix(token.text);
        Emit(routine, FormulaOp::PushSlot, token.position, SlotFor(token.text, index, suffix));
        return true;
    }
    index -= scope_.variables.size();
    if (index < scope_.constants.size())
        EmitNumber(routine, scope_.constants[index].second, token.position);
    else
        EmitExpression(routine, index - scope_.constants.size(), token.position);
    return true;
}

std::size_t FormulaCompiler::SlotFor(std::string_view mention, std::size_t variable,
                                     std::string_view suffix) {
    const std::int32_t known = mentions_.Find(mention);
    if (known != NameTable::Missing)
        return static_cast<std::size_t>(known);
    mentions_.Insert(mention, static_cast<std::int32_t>(slots_.size()));
    slots_.push_back({variable, std::string(suffix)});
    return slots_.size() - 1;
}

void FormulaCompiler::AcceptOperator(Routine& routine, const Token& token) {
    switch (token.kind) {
    case TokenKind::Question:
        return AcceptQuestion(routine, token);
    case TokenKind::Colon:
        return AcceptColon(routine, token);
    case TokenKind::Comma:
        return AcceptComma(routine, token);
    case TokenKind::Close:
        return AcceptClose(routine, token);
    case TokenKind::LogicalAnd:
    case TokenKind::LogicalOr:
        return AcceptLogical(routine, token);
    default:
        break;
    }
    const FormulaBinary binary = FormulaBinaryOf(token.kind);
    if (binary.precedence == BracketPrecedence)
        throw FormulaError("operator is missing before " + Quoted(token.text), token.position);
    // The power groups from the right, all others from the left.
    FinishAbove(routine, binary.op == FormulaOp::Power ? PowerPrecedence : binary.precedence - 1);
    Pending pending;
    pending.op = binary.op;
    pending.precedence = binary.precedence;
    pending.position = token.position;
    routine.pending.push_back(pending);
    routine.expectOperand = true;
}

void FormulaCompiler::AcceptLogical(Routine& routine, const Token& token) {
    const bool isAnd = token.kind == TokenKind::LogicalAnd;
    Pending pending;
    pending.kind = isAnd ? Pending::Kind::And : Pending::Kind::Or;
    pending.precedence = isAnd ? AndPrecedence : OrPrecedence;
    pending.position = token.position;
    FinishAbove(routine, pending.precedence - 1);
    pending.jump =
        Emit(routine, isAnd ? FormulaOp::KeepZeroOrDrop : FormulaOp::KeepNonZeroOrDrop, token.position);
    routine.pending.push_back(pending);
    routine.expectOperand = true;
}

void FormulaCompiler::AcceptQuestion(Routine& routine, const Token& token) {
    FinishAbove(routine, TernaryPrecedence);
    Pending pending;
    pending.kind = Pending::Kind::Then;
    pending.precedence = BracketPrecedence; // encloses its operand until the colon, as a bracket does
    pending.position = token.position;
    pending.jump = Emit(routine, FormulaOp::JumpIfZero, token.position);
    routine.pending.push_back(pending);
    routine.expectOperand = true;
}

void FormulaCompiler::AcceptColon(Routine& routine, const Token& token) {
    FinishAbove(routine, BracketPrecedence);
    if (routine.pending.empty() || routine.pending.back().kind != Pending::Kind::Then)
        throw FormulaError("':' without '?'", token.position);
    Pending& pending = routine.pending.back();
    const std::size_t skip = Emit(routine, FormulaOp::Jump, token.position);
    --routine.depth; // the other branch starts without this one's value
    routine.code[pending.jump].operand = routine.code.size();
    pending.kind = Pending::Kind::Else;
    pending.precedence = TernaryPrecedence;
    pending.jump = skip;
    routine.expectOperand = true;
}

void FormulaCompiler::AcceptComma(Routine& routine, const Token& token) {
    FinishAbove(routine, BracketPrecedence);
    if (routine.pending.empty() || routine.pending.back().kind != Pending::Kind::Function)
        throw FormulaError("',' outside a function's arguments", token.position);
    ++routine.pending.back().arguments;
    routine.expectOperand = true;
}

void FormulaCompiler::AcceptClose(Routine& routine, const Token& token) {
    FinishAbove(routine, BracketPrecedence);
    if (routine.pending.empty())
        throw FormulaError("')' without '('", token.position);
    const Pending pending = routine.pending.back();
    if (pending.kind == Pending::Kind::Then)
        throw FormulaError("'?' without ':'", pending.position);
    routine.pending.pop_back();
    if (pending.kind == Pending::Kind::Function)
        EmitFunction(routine, pending);
    routine.expectOperand = false;
}

void FormulaCompiler::FinishAbove(Routine& routine, int precedence) {
    while (!routine.pending.empty() && routine.pending.back().precedence > precedence) {
        Finish(routine, routine.pending.back());
        routine.pending.pop_back();
    }
}

void FormulaCompiler::Finish(Routine& routine, const Pending& pending) {
    if (pending.kind == Pending::Kind::Operator) {
        Emit(routine, pending.op, pending.position);
        return;
    }
    if (pending.kind != Pending::Kind::Else)
        Emit(routine, FormulaOp::ToBoolean, pending.position);
    routine.code[pending.jump].operand = routine.code.size();
}

void FormulaCompiler::EmitFunction(Routine& routine, const Pending& pending) {
    const FormulaFunction& function = FormulaFunctionAt(pending.function);
    if (pending.arguments < function.minArguments || pending.arguments > function.maxArguments)
        throw FormulaError("function " + Quoted(function.name) + " takes another number of arguments than " +
                               std::to_string(pending.arguments),
                           pending.position);
    if (function.maxArguments == 0)
        return EmitReal(routine, function.constant, pending.position);
    if (type_ == FormulaType::Integer && !function.hasIntegerForm)
        throw FormulaError("function " + Quoted(function.name) + " has no integer form", pending.position);
    Emit(routine, pending.arguments == 2 ? function.opOfTwo : function.opOfOne, pending.position);
}

void FormulaCompiler::EmitNumber(Routine& routine, std::string_view text, std::uint32_t position) {
    if (type_ == FormulaType::Float) {
        const std::optional<double> value = ParseFloat(text);
        if (!value)
            throw FormulaError(Quoted(text) + " is not a number", position);
        return EmitReal(routine, *value, position);
    }
    const std::optional<std::int64_t> value = ParseInteger(text);
    if (!value)
        throw FormulaError(Quoted(text) + " is not a 64-bit integer", position);
    const std::size_t at = Emit(routine, FormulaOp::PushNumber, position);
    routine.code[at].integer = *value;
}

void FormulaCompiler::EmitReal(Routine& routine, double value, std::uint32_t position) {
    if (type_ == FormulaType::Integer)
        throw FormulaError("PI and E have no integer form", position);
    const std::size_t at = Emit(routine, FormulaOp::PushNumber, position);
    routine.code[at].real = value;
}

// Each expression becomes one routine, however often it is mentioned: programs grow with the text, no faster.
void FormulaCompiler::EmitExpression(Routine& routine, std::size_t definition, std::uint32_t position) {
    const auto isWanted = [definition](const Expression& e) { return e.definition == definition; };
    std::size_t index = static_cast<std::size_t>(
        std::find_if(expressions_.begin(), expressions_.end(), isWanted) - expressions_.begin());
    const std::string_view name = scope_.expressions[definition].first;
    if (index == expressions_.size()) {
        if (index == FormulaProgram::MaxExpressions)
            throw FormulaError("formula uses more than 64 expressions", position);
        Routine own;
        own.isExpression = true;
        own.position = routine.isExpression ? routine.position : position;
        expressions_.push_back({definition, false, {}});
        try {
            CompileText(own, scope_.expressions[definition].second);
        } catch (const FormulaError& error) {
            if (routine.isExpression)
                throw;
            throw FormulaError("expression " + Quoted(name) + ": " + error.what(), position);
        }
        Emit(own, FormulaOp::Return, position, index);
        expressions_[index].routine = std::move(own);
        expressions_[index].isComplete = true;
    }
    if (!expressions_[index].isComplete)
        throw FormulaError("expression " + Quoted(name) + " refers to itself", position);
    NeedDepth(routine, routine.depth + expressions_[index].routine.maxDepth, position);
    Emit(routine, FormulaOp::Call, position, index);
}

std::size_t FormulaCompiler::Emit(Routine& routine, FormulaOp op, std::uint32_t position,
                                  std::uint64_t operand) {
    if (op == FormulaOp::PushNumber || op == FormulaOp::PushSlot || op == FormulaOp::Call)
        NeedDepth(routine, ++routine.depth, position);
    else if (TakesTwo(op) || op == FormulaOp::JumpIfZero || op == FormulaOp::KeepZeroOrDrop ||
             op == FormulaOp::KeepNonZeroOrDrop)
        --routine.depth;
    routine.code.emplace_back(op, routine.isExpression ? routine.position : position, operand);
    return routine.code.size() - 1;
}

void FormulaCompiler::NeedDepth(Routine& routine, std::size_t depth, std::uint32_t position) {
    if (depth > FormulaProgram::MaxStack)
        throw FormulaError("formula nests too deeply", position);
    routine.maxDepth = std::max(routine.maxDepth, depth);
}

// Puts the expressions behind the formula; jumps inside them move along.
FormulaProgram FormulaCompiler::Link(Routine& main) {
    FormulaProgram program;
    program.code = std::move(main.code);
    for (Expression& expression : expressions_) {
        const std::size_t start = program.code.size();
        program.expressions.push_back(start);
        for (FormulaInstruction instruction : expression.routine.code) {
            if (instruction.op >= FormulaOp::Jump && instruction.op <= FormulaOp::KeepNonZeroOrDrop)
                instruction.operand += start;
            program.code.push_back(instruction);
        }
    }
    program.slots = std::move(slots_);
    return program;
}

} // namespace Engine
} // namespace GenApi_3_2
