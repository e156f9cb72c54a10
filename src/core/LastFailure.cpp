#include "vx3/core/LastFailure.h"

#include <algorithm>
#include <array>

namespace VX3 {

namespace {

// Nothing to construct or destroy: usable from a thread's first instruction to its last.
struct Record {
    std::uint64_t count;
    StatusCode code;
    std::size_t length;
    std::array<char, MaxFailureText> text;
};
thread_local Record t_last{};

// The most bytes of `text` that fit without cutting a UTF-8 character in two.
std::size_t FittingLength(std::string_view text) {
    if (text.size() <= MaxFailureText)
        return text.size();
    std::size_t length = MaxFailureText;
    while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U)
        --length;
    return length;
}

} // namespace

StatusCode SetLastFailure(StatusCode code, std::string_view text) noexcept {
    ++t_last.count;
    t_last.code = code;
    t_last.length = FittingLength(text);
    std::copy_n(text.data(), t_last.length, t_last.text.data());
    return code;
}

Failure LastFailure() {
    return {t_last.code, std::string(t_last.text.data(), t_last.length)};
}

void ClearLastFailure() noexcept {
    t_last.code = Status::Ok;
    t_last.length = 0;
}

std::uint64_t FailureCount() noexcept {
    return t_last.count;
}

} // namespace VX3
