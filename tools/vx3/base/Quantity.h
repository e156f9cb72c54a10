// Numbers with a unit behind them, as people type them: "5ms" where microseconds are wanted.
#pragma once

#include <string>

namespace VX3::Tool {

// The number in `unit`: "5000", "5 ms" and "5000us" are all 5000 us. Units of time, frequency and data rate
// are converted; any other unit must be `unit` itself. Throws ToolError for what is no finite number, and for
// a unit that does not fit.
double ParseQuantity(const std::string& text, const std::string& unit);

} // namespace VX3::Tool
