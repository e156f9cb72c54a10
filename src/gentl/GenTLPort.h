// The registers of one producer module (interface, remote device, data stream) and where its descriptions
// lie. Owned by the object that stands for the module.
#pragma once

#include "gentl/GenTLAPI.h"
#include "gentl/GenTLHandle.h"

#include <memory>
#include <string>
#include <vector>

namespace VX3 {

class GenTLPort {
public:
    // What a camera behind a producer may take for one access, or for its description.
    static constexpr std::chrono::milliseconds AccessBound{10000};

    explicit GenTLPort(std::shared_ptr<GenTLAPI> producer) : producer_(std::move(producer)) {}

    GenTLHandle& Handle() { return handle_; }
    const GenTLHandle& Handle() const { return handle_; }
    const std::shared_ptr<GenTLAPI>& Producer() const { return producer_; }

    // The bytes that the producer moved, or its code; NotConnected without a handle, TimeOut when it does not
    // return. Bytes that were not moved are left as they are.
    [[nodiscard]] StatusCode Read(unsigned long long address, unsigned char* buffer, unsigned int length);
    [[nodiscard]] StatusCode Write(unsigned long long address, const unsigned char* buffer,
                                   unsigned int length);
    // The URLs of its descriptions, in the producer's order; empty when there are none.
    std::vector<std::string> Urls();
    // What its description calls the port; empty when the producer does not say.
    std::string PortName();

private:
    StatusCode Result(const char* what, GenTL::GC_ERROR code, const std::string& why, std::size_t moved,
                      unsigned int length) const;

    const std::shared_ptr<GenTLAPI> producer_;
    GenTLHandle handle_;
};

} // namespace VX3
