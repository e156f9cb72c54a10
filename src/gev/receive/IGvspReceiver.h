// Receives one stream: owns the way datagrams come in and the thread that parses them. Owned by a stream.
#pragma once

#include "gev/stream/IGvspParser.h"
#include "vx3/core/Status.h"
#include "vx3/device/Statistics.h"
#include "vx3/gev/NetParam.h"
#include "vx3/image/IImagePool.h"

#include <chrono>
#include <memory>

namespace VX3 {

class IGvspReceiver {
public:
    virtual ~IGvspReceiver() = default;
    // The port the camera is to send to (positive), or a code: WrongState while listening, -1 when the host
    // address cannot be bound. `count` spare blocks (0: eight).
    [[nodiscard]] virtual StatusCode StartListen(const GevStreamParam& param,
                                                 std::shared_ptr<IImagePool> pool, GvspImageCallback callback,
                                                 unsigned int count) = 0;
    virtual StatusCode SetGvspParser(std::unique_ptr<IGvspParser> parser) = 0;
    virtual StatusCode ResetListen() = 0;
    // Ends within milliseconds; afterwards the callback is not called any more. -1 when not listening.
    virtual StatusCode StopListen() = 0;
    virtual bool IsListening() const = 0;
    // One more spare block, made by the receive thread. WrongState unless listening.
    [[nodiscard]] virtual StatusCode AllocOneBuff() = 0;
    // Of the latest stream; lives as long as the receiver. Any thread.
    virtual LiveStatistics* GetStatistics() = 0;

    // Waits until packets would be heard; false after `timeout`.
    virtual bool WaitUntilReady(std::chrono::milliseconds timeout) = 0;
};

} // namespace VX3
