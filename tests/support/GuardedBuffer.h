// Memory with an inaccessible page directly behind its last byte (or before its first): a kernel that leaves
// its line dies here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>

#include <sys/mman.h>
#include <unistd.h>

namespace VX3::Testing {

enum class Guard { Behind, Before };

class GuardedBuffer {
public:
    GuardedBuffer(std::size_t size, Guard guard) : size_(size) {
        const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        const std::size_t body = (size + page) / page * page;
        mapped_ = body + 2 * page;
        void* memory = mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED)
            throw std::runtime_error("mmap");
        base_ = static_cast<std::uint8_t*>(memory);
        if (mprotect(base_, page, PROT_NONE) != 0 || mprotect(base_ + page + body, page, PROT_NONE) != 0)
            throw std::runtime_error("mprotect");
        data_ = guard == Guard::Behind ? base_ + page + body - size : base_ + page;
    }
    ~GuardedBuffer() { munmap(base_, mapped_); }
    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;

    std::uint8_t* Data() { return data_; }
    const std::uint8_t* Data() const { return data_; }
    std::size_t Size() const { return size_; }
    std::uint8_t* begin() { return data_; }
    std::uint8_t* end() { return data_ + size_; }

private:
    std::size_t size_;
    std::size_t mapped_ = 0;
    std::uint8_t* base_ = nullptr;
    std::uint8_t* data_ = nullptr;
};

} // namespace VX3::Testing
