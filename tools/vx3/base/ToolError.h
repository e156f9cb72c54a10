// A failure of the program in words, with the library's code behind them where there is one.
#pragma once

#include "vx3/core/Status.h"

#include <stdexcept>
#include <string>

namespace VX3::Tool {

// "words (0x80000021)".
std::string StatusWords(StatusCode code);

// ": REASON" when that code was the calling thread's last failure, else nothing.
std::string ReasonWords(StatusCode code);

class ToolError : public std::runtime_error {
public:
    explicit ToolError(const std::string& text) : std::runtime_error(text) {}
    // "TEXT: words (0x80000021)", and the reason where the library gave this thread one.
    ToolError(const std::string& text, StatusCode code)
        : std::runtime_error(text + ": " + StatusWords(code) + ReasonWords(code)), code_(code) {}

    // Ok where the library was not asked.
    StatusCode Code() const { return code_; }
    // The same failure, seen from farther away.
    ToolError Behind(const std::string& prefix) const {
        ToolError error(prefix + what());
        error.code_ = code_;
        return error;
    }

private:
    StatusCode code_ = Status::Ok;
};

} // namespace VX3::Tool
