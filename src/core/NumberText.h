// Numbers as they stand in files and settings: always in the C locale, whatever the process's or the thread's
// is.
#pragma once

#include <cstdint>
#include <string>

namespace VX3 {

// The whole text as a number; false, and nothing stored, for any other text. Integers are decimal, or
// hexadecimal after 0x.
bool ParseInteger(const std::string& text, std::int64_t& value);
bool ParseReal(const std::string& text, double& value);
// The number that the text begins with, blanks before it skipped. False without one, and when it does not
// fit.
bool ParseLeadingReal(const std::string& text, double& value);

// Six digits behind the point.
std::string FixedText(double value);
// The fewest digits that read back as the same value.
std::string ShortestText(double value);

} // namespace VX3
