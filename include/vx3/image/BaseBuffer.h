// The raw block that travels between pools and buffer handles.
#pragma once

#include "vx3/core/Export.h"

#include <memory>
#include <utility>

namespace VX3 {

struct VX3_API BaseBuffer {
    BaseBuffer(unsigned int size_, unsigned int capacity_, unsigned int id_,
               std::unique_ptr<unsigned char[]>&& data_)
        : capacity(capacity_), size(size_), id(id_), data(std::move(data_)) {}

    unsigned int capacity; // bytes allocated; size class and accounting go by this
    unsigned int size;     // bytes the present user asked for
    unsigned int id;
    std::unique_ptr<unsigned char[]> data;
};

} // namespace VX3
