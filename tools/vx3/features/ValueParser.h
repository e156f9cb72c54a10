// What a person typed as a value. Every function throws ToolError, saying what it expected, when the whole
// text is no such value.
#pragma once

#include "vx3/genicam/INode.h"

#include <string>
#include <vector>

namespace VX3::Tool {

// Decimal ("010" is ten), hexadecimal with 0x, a dotted address, or six colon-separated hexadecimal bytes.
long ParseInteger(const std::string& text);
double ParseFloat(const std::string& text);
// The same for a feature with that unit: "5ms" or "5000us" into microseconds, "640.0" into an integer.
long ParseIntegerIn(const std::string& text, const std::string& unit);
double ParseFloatIn(const std::string& text, const std::string& unit);
// true, false, on, off, yes, no, 1 or 0, in any case.
bool ParseBoolean(const std::string& text);
// A symbolic name in any case that tells it from the others, else a number, of an entry that exists; returns
// its number.
long ParseEnumeration(GenICam::IEnumeration& enumeration, const std::string& text);
// Pairs of hexadecimal digits, with or without 0x in front.
std::vector<unsigned char> ParseBytes(const std::string& text);

} // namespace VX3::Tool
