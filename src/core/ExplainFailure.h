// Words for a failure that nobody has explained.
#pragma once

#include "vx3/core/LastFailure.h"

#include <cstdint>
#include <string>
#include <utility>

namespace VX3 {

// The words of a code, for a failure within a scope of which nothing else was recorded on this thread.
class ExplainFailure {
public:
    explicit ExplainFailure(std::string where) : where_(std::move(where)), before_(FailureCount()) {}
    StatusCode operator()(StatusCode status) const {
        if (!Failed(status) || FailureCount() != before_)
            return status;
        return SetLastFailure(status, where_ + ": " + StatusText(status));
    }

private:
    std::string where_;
    std::uint64_t before_;
};

} // namespace VX3
