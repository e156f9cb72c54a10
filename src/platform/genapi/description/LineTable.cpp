#include "platform/genapi/description/LineTable.h"

#include <algorithm>
#include <cstring>

namespace GenApi_3_2 {
namespace Engine {

LineTable::LineTable(std::string_view text) {
    constexpr std::size_t UsualLine = 24;
    ends_.reserve(text.size() / UsualLine);
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    for (const char* at = begin; at != end; ++at) {
        at = static_cast<const char*>(std::memchr(at, '\n', static_cast<std::size_t>(end - at)));
        if (at == nullptr)
            break;
        ends_.push_back(static_cast<std::uint32_t>(at - begin));
    }
}

std::uint32_t LineTable::LineOf(std::size_t offset) {
    constexpr int Steps = 8;
    if (last_ == 0 || ends_[last_ - 1] < offset) {
        for (int i = 0; i < Steps && last_ < ends_.size() && ends_[last_] < offset; ++i)
            ++last_;
        if (last_ == ends_.size() || ends_[last_] >= offset)
            return static_cast<std::uint32_t>(last_ + 1);
    }
    last_ = static_cast<std::size_t>(std::lower_bound(ends_.begin(), ends_.end(), offset) - ends_.begin());
    return static_cast<std::uint32_t>(last_ + 1);
}

} // namespace Engine
} // namespace GenApi_3_2
