// Why the calling thread's last operation failed, in words: what a status code alone cannot say.
#pragma once

#include "vx3/core/Export.h"
#include "vx3/core/Status.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace VX3 {

// `text` is empty when nothing was recorded. A code of 0 with a text tells of an operation that succeeded
// otherwise than asked, such as a value that was clamped.
struct Failure {
    StatusCode code = Status::Ok;
    std::string text;
};

// Records a failure of the calling thread and returns `code`, so that it can stand in a return. Texts are cut
// to MaxFailureText bytes. Success does not clear what was recorded: ask after a code that says so, or clear
// before.
constexpr std::size_t MaxFailureText = 511;
VX3_API StatusCode SetLastFailure(StatusCode code, std::string_view text) noexcept;
VX3_API Failure LastFailure();
VX3_API void ClearLastFailure() noexcept;
// How often the calling thread has recorded something: tells whether an operation did.
VX3_API std::uint64_t FailureCount() noexcept;

} // namespace VX3
