// The buffer behind standard output. Unlike the standard library's it keeps why a write failed.
#pragma once

#include <array>
#include <atomic>
#include <streambuf>

namespace VX3::Tool {

class OutputBuffer : public std::streambuf {
public:
    explicit OutputBuffer(int fd);

    // The error number of the first write that failed; 0 while all is well. Any thread.
    int Error() const { return error_; }

protected:
    int_type overflow(int_type c) override;
    int sync() override;

private:
    const int fd_;
    std::atomic<int> error_{0};
    std::array<char, 65536> bytes_;
};

} // namespace VX3::Tool
