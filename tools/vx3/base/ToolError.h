// A failure of the program in words, with the library's code behind them where there is one.
#pragma once

#include "vx3/core/Status.h"

#include <stdexcept>
#include <string>

namespace VX3::Tool {

// "words (0x80000021)".
std::string StatusWords(StatusCode code);

class ToolError : public std::runtime_error {
public:
    explicit ToolError(const std::string& text) : std::runtime_error(text) {}
    // "TEXT: words (0x80000021)".
    ToolError(const std::string& text, StatusCode code)
        : std::runtime_error(text + ": " + StatusWords(code)) {}
};

} // namespace VX3::Tool
