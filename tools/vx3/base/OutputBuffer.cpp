#include "base/OutputBuffer.h"

#include <cerrno>
#include <unistd.h>

namespace VX3::Tool {

OutputBuffer::OutputBuffer(int fd) : fd_(fd) {
    setp(bytes_.data(), bytes_.data() + bytes_.size());
}

int OutputBuffer::sync() {
    const char* from = pbase();
    while (error_ == 0 && from < pptr()) {
        const ssize_t written = write(fd_, from, static_cast<std::size_t>(pptr() - from));
        if (written > 0)
            from += written;
        else if (written == 0 || errno != EINTR)
            error_ = written == 0 ? EIO : errno;
    }
    setp(bytes_.data(), bytes_.data() + bytes_.size());
    return error_ == 0 ? 0 : -1;
}

OutputBuffer::int_type OutputBuffer::overflow(int_type c) {
    if (sync() != 0)
        return traits_type::eof();
    if (!traits_type::eq_int_type(c, traits_type::eof()))
        sputc(traits_type::to_char_type(c));
    return traits_type::not_eof(c);
}

} // namespace VX3::Tool
