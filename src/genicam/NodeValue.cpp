#include "vx3/genicam/NodeValue.h"

#include <cstring>
#include <utility>

namespace VX3::GenICam {

NodeValue::NodeValue(long value) : integer_(value), type_(Type::Integer) {}

NodeValue::NodeValue(double value) : float_(value), type_(Type::Float) {}

NodeValue::NodeValue(bool value) : type_(Type::Boolean) {
    boolean_ = value;
}

NodeValue::NodeValue(std::string value) : text_(std::move(value)), type_(Type::String) {}

NodeValue::NodeValue(CommandValue value) : type_(Type::Command) {
    command_ = value;
}

NodeValue::NodeValue(const unsigned char* data, unsigned int size) : type_(Type::Buffer) {
    if (data == nullptr || size == 0)
        return;
    buffer_ =
        std::shared_ptr<unsigned char[]>(new unsigned char[size]); // make_shared takes arrays from C++20
    std::memcpy(buffer_.get(), data, size);
    bufferLength_ = size;
}

} // namespace VX3::GenICam
