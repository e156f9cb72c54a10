// What the C functions return, and how texts and exceptions become results.
#pragma once

#include "vx3/core/Status.h"

#include <cstddef>
#include <cstring>
#include <string>

namespace VX3::CApi {

constexpr int BadHandle = -1;
constexpr int TooSmall = -2;     // a text and its NUL do not fit
constexpr int NoStream = -2;     // no stream at that index
constexpr int NoValue = -2;      // the feature has no value of that kind
constexpr int CopyTooSmall = -3; // a feature's text or the description does not fit

// Nothing thrown crosses the C boundary.
template <typename Result, typename Body>
Result Guarded(Result onException, Body&& body) noexcept {
    try {
        return body();
    } catch (...) {
        return onException;
    }
}
template <typename Body>
int Guarded(Body&& body) noexcept {
    return Guarded<int>(static_cast<int>(Status::Generic), body);
}

// Copies `text` with its NUL; `tooSmall` and an untouched buffer when it does not fit.
inline int CopyText(const std::string& text, char* buf, std::size_t size, int tooSmall) {
    if (buf == nullptr)
        return BadHandle;
    if (size < text.size() + 1)
        return tooSmall;
    std::memcpy(buf, text.c_str(), text.size() + 1);
    return 0;
}

} // namespace VX3::CApi
