// Tells the kernel which blocks of a stream a socket may queue: the others are dropped before they cost the
// receive thread anything. A classic BPF program on the socket, for which no privilege is needed. Leaders
// always pass. Owned by the receive thread.
#pragma once

#include "gev/stream/GvspAdmission.h"

namespace VX3 {

class BlockFilter {
public:
    explicit BlockFilter(int socketFd) : socketFd_(socketFd) {}

    // Takes over what `admission` admits now, when that has changed. `extended`: the stream's header form.
    void Follow(const GvspAdmission& admission, bool extended);

private:
    void Attach(const GvspAdmission& admission, bool extended) const;

    const int socketFd_;
    unsigned version_ = 0;
};

} // namespace VX3
