// Where a stream's datagrams come from: one interface over the ways a UDP socket can be read, so that they
// can be compared and chosen at run time. Owned by the receive thread; the socket and the wake descriptor
// outlive it.
#pragma once

#include "gev/receive/SenderCheck.h"
#include "wire/WireCursor.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>

namespace VX3 {

enum class ReceiveMethod {
    Best,     // the best of the following that the socket grants
    RecvFrom, // one datagram a call, straight into the image
    RecvMmsg, // batches, copied into place
    Gro,      // trains of datagrams that the kernel joined, copied into place
};

class DatagramSource {
public:
    // Datagrams of one call that came from the camera, in order of arrival; valid until the next call.
    struct Batch {
        const WireBytes* items = nullptr;
        std::size_t count = 0;
        bool waited = false;  // the thread may have slept
        bool drained = false; // the socket was empty, before the call or after it
    };

    virtual ~DatagramSource() = default;
    // Waits up to `wait`, and never longer than LongestWait, for datagrams; an empty batch when none came.
    // `room` is where the next datagram should land, if the method can do that; longer datagrams are dropped
    // then.
    virtual Batch Receive(WireRoom room, std::chrono::milliseconds wait) = 0;
    // Receive uses `room`.
    virtual bool Places() const = 0;
    virtual const char* Name() const = 0;

    // Null when the system does not grant `method` (Best always is granted). `maxDatagram`: bytes; longer
    // datagrams are dropped. `senders` outlives the source.
    static std::unique_ptr<DatagramSource> Create(ReceiveMethod method, int socketFd, std::size_t maxDatagram,
                                                  SenderCheck& senders);
    // "recvfrom", "recvmmsg", "gro"; anything else is Best.
    static ReceiveMethod MethodNamed(const std::string& name);
    // What the environment variable VX3_RECEIVE_METHOD names; Best without it.
    static ReceiveMethod MethodFromEnvironment();

    // Bounds how late a stop is noticed.
    static constexpr std::chrono::milliseconds LongestWait{20};

protected:
    DatagramSource(int socketFd, SenderCheck& senders) : socketFd_(socketFd), senders_(senders) {}
    // How long the next blocking receive sleeps. One system call a datagram that way, none to poll; the limit
    // stays on the socket and is changed only when `wait` changes.
    void LimitWait(std::chrono::milliseconds wait);

    const int socketFd_;
    SenderCheck& senders_;

private:
    std::chrono::milliseconds limit_{-1};
};

} // namespace VX3
