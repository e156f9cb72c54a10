// A named communication port: a conversation with one partner over some medium.
#pragma once

#include "vx3/core/IObject.h"
#include "vx3/core/Status.h"

#include <cstddef>
#include <cstdint>

namespace VX3 {

class ICommPort : public IObject {
public:
    ~ICommPort() override = default;
    virtual StatusCode Open(const char* name) = 0;
    virtual StatusCode Close() = 0;
    // Bytes sent, or a negative code.
    [[nodiscard]] virtual StatusCode SendData(const void* bytes, std::size_t length) = 0;
    // Length of the message received, which may exceed `size` (the rest is then lost), or a negative code.
    [[nodiscard]] virtual StatusCode RecvData(void* buffer, std::size_t size, std::uint32_t timeoutMs) = 0;
    virtual bool IsOpened() const = 0;
    virtual StatusCode ClearSendBuff() = 0;
    virtual StatusCode ClearRecvBuff() = 0;
    virtual StatusCode SetParam(const void* param) = 0;
};

} // namespace VX3
