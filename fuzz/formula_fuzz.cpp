// Formulas of foreign descriptions: any text must compile or be refused, and then compute or be refused. The
// first line is the formula, the second and third are the expressions X and Y that it may mention.
#include "platform/genapi/formula/Formula.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <vector>

using namespace GenApi_3_2::Engine;

namespace {

std::string_view TakeLine(std::string_view& text) {
    const std::size_t end = text.find('\n');
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return line;
}

template <typename T>
void Run(std::string_view text, const FormulaScope& scope) {
    try {
        const BasicFormula<T> formula(text, scope);
        for (const T value : {T(0), T(-1), T(7)}) {
            const std::vector<T> values(formula.Slots().size(), value);
            try {
                const T result = formula.Evaluate(values.data());
                const T again = formula.Evaluate(values.data());
                if (std::memcmp(&result, &again, sizeof(T)) != 0)
                    std::abort();
            } catch (const FormulaError&) {
            }
        }
    } catch (const FormulaError&) {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view text(reinterpret_cast<const char*>(data), size);
    const std::string_view formula = TakeLine(text);
    FormulaScope scope;
    scope.variables = {"A", "B", "FROM", "TO", "A.Max"};
    scope.constants = {{"C", "0x10"}, {"D", "2.5"}};
    scope.expressions.emplace_back("X", TakeLine(text));
    scope.expressions.emplace_back("Y", TakeLine(text));
    Run<std::int64_t>(formula, scope);
    Run<double>(formula, scope);
    return 0;
}
