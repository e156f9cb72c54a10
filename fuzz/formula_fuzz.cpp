// Formulas of foreign descriptions: any text must compile or be refused, and then compute or be refused. The
// first line is the formula, the second and third are the expressions X and Y that it may mention.
#include "FuzzInput.h"
#include "platform/genapi/formula/Formula.h"

using namespace GenApi_3_2::Engine;
using namespace VX3::Fuzz;

namespace {

template <typename T>
void Run(std::string_view text, const FormulaScope& scope) {
    try {
        const BasicFormula<T> formula(text, scope);
        for (const T value : {T(0), T(-1), T(7)}) {
            const std::vector<T> values(formula.Slots().size(), value);
            try {
                const T result = formula.Evaluate(values.data());
                const T again = formula.Evaluate(values.data());
                Require(std::memcmp(&result, &again, sizeof(T)) == 0);
            } catch (const FormulaError&) {
            }
        }
    } catch (const FormulaError&) {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput in(data, size);
    const std::string formula = in.Line(), x = in.Line(), y = in.Line();
    FormulaScope scope;
    scope.variables = {"A", "B", "FROM", "TO", "A.Max"};
    scope.constants = {{"C", "0x10"}, {"D", "2.5"}};
    scope.expressions = {{"X", x}, {"Y", y}};
    Run<std::int64_t>(formula, scope);
    Run<double>(formula, scope);
    return 0;
}
