// Owner of one file descriptor; closes it on destruction.
#pragma once

namespace VX3 {

class UniqueFd {
public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) : fd_(fd) {}
    UniqueFd(UniqueFd&& other) noexcept : fd_(other.Release()) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept {
        if (this != &other)
            Reset(other.Release());
        return *this;
    }
    UniqueFd(const UniqueFd&) = delete;
    UniqueFd& operator=(const UniqueFd&) = delete;
    ~UniqueFd() { Reset(); }

    int Get() const { return fd_; }
    explicit operator bool() const { return fd_ >= 0; }
    int Release() {
        const int fd = fd_;
        fd_ = -1;
        return fd;
    }
    void Reset(int fd = -1);

private:
    int fd_ = -1;
};

} // namespace VX3
