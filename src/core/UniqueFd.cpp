#include "core/UniqueFd.h"

#include <unistd.h>

namespace VX3 {

void UniqueFd::Reset(int fd) {
    if (fd_ >= 0 && fd_ != fd)
        ::close(fd_);
    fd_ = fd;
}

} // namespace VX3
