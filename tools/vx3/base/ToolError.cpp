#include "base/ToolError.h"

#include "vx3/core/LastFailure.h"

#include <cstdio>

namespace VX3::Tool {

std::string StatusWords(StatusCode code) {
    char digits[16];
    std::snprintf(digits, sizeof(digits), "0x%08X", static_cast<unsigned int>(code));
    const std::string words = StatusText(code);
    return words.find(digits) == std::string::npos ? words + " (" + digits + ")" : words;
}

std::string ReasonWords(StatusCode code) {
    const Failure last = LastFailure();
    return last.code == code && !last.text.empty() ? ": " + last.text : std::string();
}

} // namespace VX3::Tool
