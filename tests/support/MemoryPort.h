// A device's registers as plain memory behind a GenApi port: counts the accesses and fails on demand.
#pragma once

#include <GenApi/GenApi.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <vector>

namespace VX3::Test {

class MemoryPort : public GenApi_3_2::IPort {
public:
    explicit MemoryPort(std::size_t size = 0x10000) : memory(size) {}

    GenApi_3_2::EAccessMode GetAccessMode() const override { return mode; }

    void Read(void* to, std::int64_t address, std::int64_t length) override {
        ++reads;
        if (onRead)
            onRead(address);
        std::memcpy(to, At(address, length), static_cast<std::size_t>(length));
    }

    void Write(const void* from, std::int64_t address, std::int64_t length) override {
        ++writes;
        if (onWrite)
            onWrite(address);
        std::memcpy(At(address, length), from, static_cast<std::size_t>(length));
    }

    // Big-endian, 4 bytes.
    void Put(std::size_t address, std::uint32_t value) {
        for (std::size_t i = 0; i < 4; ++i)
            memory.at(address + i) = static_cast<std::uint8_t>(value >> (24 - 8 * i));
    }
    std::uint32_t Word(std::size_t address) const {
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < 4; ++i)
            value = value << 8 | memory.at(address + i);
        return value;
    }

    std::vector<std::uint8_t> memory;
    int reads = 0;
    int writes = 0;
    GenApi_3_2::EAccessMode mode = GenApi_3_2::RW;
    // Called before the transfer; what they throw is the access's failure.
    std::function<void(std::int64_t)> onRead;
    std::function<void(std::int64_t)> onWrite;

private:
    std::uint8_t* At(std::int64_t address, std::int64_t length) {
        if (address < 0 || length < 0 || static_cast<std::size_t>(address + length) > memory.size())
            throw std::out_of_range("no such address");
        return memory.data() + address;
    }
};

} // namespace VX3::Test
