// Every status code of the library, named once, with its meaning in words.
//
// Operations return a signed 32-bit status: 0 (or a positive count where the operation says so) is success,
// failures are negative with the bit pattern 0x800000xx and travel unchanged up to the C interface. What a
// GenTL producer answers travels as it comes: -1001 and below, the standard's GC_ERROR.
#pragma once

#include "vx3/core/Export.h"

#include <cstdint>
#include <string>

namespace VX3 {

using StatusCode = std::int32_t;

// X(name, bit pattern, meaning)
#define VX3_STATUS_TABLE(X)                                                                                  \
    X(Ok, 0x00000000, "success")                                                                             \
    X(QueueFull, 0x80000001, "the queue is full")                                                            \
    X(NoBuffer, 0x80000003, "no image or block buffer is free")                                              \
    X(NotFound, 0x80000004, "not found, index out of range, or invalid argument or address")                 \
    X(NotSupported, 0x80000006, "this object does not support the operation")                                \
    X(NoIpAddress, 0x80000007, "the interface has no IPv4 address")                                          \
    X(NotConnected, 0x80000008, "not connected")                                                             \
    X(AlreadyConnected, 0x80000009,                                                                          \
      "this user is already connected; when a remote user disconnects: was not")                             \
    X(AlreadyStreaming, 0x8000000B, "the stream is already streaming")                                       \
    X(AlreadyOpen, 0x8000000D, "the stream is already open")                                                 \
    X(NotOpen, 0x8000000E, "the stream is not open")                                                         \
    X(StillStreaming, 0x8000000F, "the stream is still streaming")                                           \
    X(Malformed, 0x80000018, "malformed or mismatched acknowledgement or packet")                            \
    X(IncompleteWrite, 0x80000019, "the write was acknowledged incompletely")                                \
    X(TimeOut, 0x8000001B, "time-out")                                                                       \
    X(PortNotOpen, 0x8000001F, "the port is not open")                                                       \
    X(NodeFailed, 0x80000021, "the feature refused the operation or could not be reached")                   \
    X(NotAvailable, 0x80000022, "not available")                                                             \
    X(WrongState, 0x80000024, "wrong state for this operation")                                              \
    X(OpenFailed, 0x80000025, "the device node could not be opened")                                         \
    X(DeviceLost, 0x80000026, "the device is lost, or its driver failed the request")                        \
    X(Generic, 0xFFFFFFFF, "failed")

namespace Status {
#define VX3_STATUS_CONSTANT(name, value, text) constexpr StatusCode name = static_cast<StatusCode>(value##U);
VX3_STATUS_TABLE(VX3_STATUS_CONSTANT)
#undef VX3_STATUS_CONSTANT

// Base of the codes that carry the status of a GVCP acknowledgement in their low 16 bits.
constexpr StatusCode GvcpBase = static_cast<StatusCode>(0x80010000U);

// The code for an acknowledgement that reported `gvcpStatus` (GigE Vision, non-zero).
constexpr StatusCode FromGvcp(std::uint16_t gvcpStatus) {
    return static_cast<StatusCode>(0x80010000U + gvcpStatus);
}
// True for the codes FromGvcp makes.
constexpr bool IsGvcp(StatusCode code) {
    return (static_cast<std::uint32_t>(code) & 0xFFFF0000U) == 0x80010000U;
}
} // namespace Status

// True when an operation failed (negative code).
constexpr bool Failed(StatusCode code) {
    return code < 0;
}

// The code in words, for logs and tools; GVCP statuses are named as GigE Vision names them,
// producers' codes as GenTL does. Never empty.
VX3_API std::string StatusText(StatusCode code);

} // namespace VX3
