// What the C functions return, and how texts and exceptions become results.
#pragma once

#include "vx3/core/LastFailure.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <string>
#include <type_traits>

namespace VX3::CApi {

constexpr int BadHandle = -1;
constexpr int TooSmall = -2;     // a text and its NUL do not fit
constexpr int NoStream = -2;     // no stream at that index
constexpr int NoValue = -2;      // the feature has no value of that kind
constexpr int CopyTooSmall = -3; // a feature's text or the description does not fit

// A result of the C interface in words: its own small negative numbers, and the library's codes.
inline std::string ResultText(int result) {
    switch (result) {
    case BadHandle:
        return "the handle is not alive, its camera or features are gone, or an output is null";
    case TooSmall:
        return "the text does not fit, there is no such stream, or the feature has no value of that kind";
    case CopyTooSmall:
        return "the buffer is too small";
    default:
        return StatusText(result);
    }
}

// Every failure has words: those of whoever recorded one in the course of the call, else the code's.
template <typename Result>
void RecordFailure(const Result& result, std::uint64_t recordedBefore) {
    if (FailureCount() != recordedBefore)
        return;
    if constexpr (std::is_same_v<Result, int>) {
        if (result < 0)
            SetLastFailure(result, ResultText(result));
    } else if constexpr (std::is_pointer_v<Result>) {
        if (result == nullptr)
            SetLastFailure(BadHandle, "there is no such object");
    }
}

template <typename Result>
StatusCode CodeOf(const Result& result) {
    if constexpr (std::is_same_v<Result, int>)
        return result;
    else
        return Status::Generic;
}

// Nothing thrown crosses the C boundary.
template <typename Result, typename Body>
Result Guarded(Result onException, Body&& body) noexcept {
    const std::uint64_t before = FailureCount();
    try {
        Result result = body();
        RecordFailure(result, before);
        return result;
    } catch (const std::exception& error) {
        SetLastFailure(CodeOf(onException), error.what());
    } catch (...) {
        SetLastFailure(CodeOf(onException), "an exception of unknown kind");
    }
    return onException;
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
