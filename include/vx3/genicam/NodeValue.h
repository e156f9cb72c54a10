// A tagged value for feature access by name.
#pragma once

#include "vx3/core/Export.h"

#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>

namespace VX3::GenICam {

// What a command is told; 0 executes it.
enum class CommandValue : int { Execute = 0 };

class VX3_API NodeValue {
public:
    enum class Type : std::uint32_t {
        Empty = 0,
        Integer = 1,
        Float = 2,
        Boolean = 3,
        String = 4,
        Command = 7,
        Buffer = 8
    };

    NodeValue() = default;
    NodeValue(long value);
    NodeValue(double value);
    NodeValue(bool value);
    NodeValue(std::string value);
    // A text literal would otherwise become a boolean.
    NodeValue(const char* value) : NodeValue(std::string(value ? value : "")) {}
    NodeValue(CommandValue value);
    // Every other integer: 5, -5, a size_t.
    template <typename T, std::enable_if_t<std::is_integral_v<T> && !std::is_same_v<T, bool>, int> = 0>
    NodeValue(T value) : NodeValue(static_cast<long>(value)) {}
    // A pointer would otherwise become a boolean.
    template <typename T>
    NodeValue(const T* pointer) = delete;
    // Copies `size` bytes; copies of the NodeValue share them. Size 0 is an empty buffer.
    NodeValue(const unsigned char* data, unsigned int size);

    Type GetType() const { return type_; }
    bool IsEmpty() const { return type_ == Type::Empty; }
    // The scalar as the tag's type; callers check the tag (or take the zero of a foreign tag).
    long AsInteger() const { return type_ == Type::Integer ? integer_ : 0; }
    double AsFloat() const { return type_ == Type::Float ? float_ : 0.0; }
    bool AsBoolean() const { return type_ == Type::Boolean && boolean_; }
    CommandValue AsCommand() const { return command_; }
    const std::string& AsString() const { return text_; }
    const unsigned char* Buffer() const { return buffer_.get(); }
    unsigned int BufferLength() const { return bufferLength_; }

private:
    union {
        std::int64_t integer_ = 0;
        double float_;
        bool boolean_;
        CommandValue command_;
    };
    std::string text_;
    std::shared_ptr<unsigned char[]> buffer_;
    unsigned int bufferLength_ = 0;
    Type type_ = Type::Empty;
};

} // namespace VX3::GenICam
