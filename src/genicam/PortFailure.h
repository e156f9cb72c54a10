// What a node map's port throws when its owner does not carry an access out: GenApi's exception for whoever
// uses typed nodes, with the owner's code for access by name.
#pragma once

#include "GenApi/GenApi.h"
#include "vx3/core/Status.h"

namespace VX3::GenICam {

class PortFailure {
public:
    explicit PortFailure(StatusCode code) : code_(code) {}
    StatusCode Code() const { return code_; }

protected:
    ~PortFailure() = default;

private:
    const StatusCode code_;
};

// `Exception` is one of GenApi's.
template <class Exception>
class PortException final : public Exception, public PortFailure {
public:
    PortException(StatusCode code, const char* description)
        : Exception(description, __FILE__, __LINE__), PortFailure(code) {}
};

} // namespace VX3::GenICam
