// What the targets share: an input read piece by piece, claims that abort when they do not hold, and a
// library that logs nowhere and leaves nothing behind. Leaks are looked for after an input that allocated
// more than it freed; log lines kept in memory would make that every input, at a tenth of a second each.
#pragma once

#include "vx3/core/Logger.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <log4cpp/Category.hh>
#include <string>
#include <vector>

namespace VX3::Fuzz {

inline void Require(bool holds, const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
    if (holds)
        return;
    std::fprintf(stderr, "%s:%d: does not hold\n", file, line);
    std::abort();
}

// Reads a byte, so that a place outside its memory is seen.
inline void Touch(const std::uint8_t* at) {
    static_cast<void>(*static_cast<const volatile std::uint8_t*>(at));
}

// Bytes in order; behind the end come zeros.
class FuzzInput {
public:
    FuzzInput(const std::uint8_t* data, std::size_t size) : at_(data), left_(size) {}

    bool Empty() const { return left_ == 0; }
    std::size_t Left() const { return left_; }
    template <typename T = std::uint8_t>
    T Take() {
        T value{};
        const std::size_t size = std::min(sizeof(T), left_);
        std::memcpy(&value, at_, size);
        Skip(size);
        return value;
    }
    // One of a handful of choices that get a program further than a random number would.
    template <typename Choices>
    const auto& OneOf(const Choices& choices) {
        return std::data(choices)[Take() % std::size(choices)];
    }
    // On the heap and exactly as long as asked for or left, so that a read behind the end is seen.
    std::vector<std::uint8_t> Bytes(std::size_t most) {
        const std::size_t size = std::min(most, left_);
        std::vector<std::uint8_t> bytes(at_, at_ + size);
        Skip(size);
        return bytes;
    }
    std::string Line(char last = '\n') {
        const auto* end =
            static_cast<const std::uint8_t*>(left_ == 0 ? nullptr : std::memchr(at_, last, left_));
        const std::size_t size = end == nullptr ? left_ : static_cast<std::size_t>(end - at_);
        const std::string line(reinterpret_cast<const char*>(at_), size);
        Skip(std::min(left_, size + 1));
        return line;
    }
    std::string Rest() {
        const std::string rest(reinterpret_cast<const char*>(at_), left_);
        Skip(left_);
        return rest;
    }

private:
    void Skip(std::size_t size) {
        at_ += size;
        left_ -= size;
    }

    const std::uint8_t* at_;
    std::size_t left_;
};

// One for the length of an input.
struct Silence {
    Silence() {
        VxLoggerGetLogItems(); // its first use makes the category, chatty
        static const bool once = [] {
            log4cpp::Category::getInstance("SDK").setPriority(log4cpp::Priority::EMERG);
            return true;
        }();
        static_cast<void>(once);
    }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;
    ~Silence() { std::deque<std::unique_ptr<ILogItem>>().swap(VxLoggerGetLogItems()); }
};

} // namespace VX3::Fuzz
