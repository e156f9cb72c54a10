#include "simulated/camera/RegisterFile.h"

#include <algorithm>
#include <cstring>

namespace VX3 {
namespace Simulated {

void RegisterFile::Clear(std::size_t size) {
    MutexLock lock(mutex_);
    bytes_.assign(size, 0);
    writable_.clear();
}

void RegisterFile::AllowWrites(std::uint32_t address, std::uint32_t size) {
    MutexLock lock(mutex_);
    writable_.push_back({address, std::uint64_t{address} + size});
}

std::size_t RegisterFile::Size() const {
    MutexLock lock(mutex_);
    return bytes_.size();
}

bool RegisterFile::Read(std::uint64_t address, WireRoom room) const {
    MutexLock lock(mutex_);
    if (!Holds(address, room.size))
        return false;
    if (room.size != 0)
        std::memcpy(room.data, bytes_.data() + address, room.size);
    return true;
}

bool RegisterFile::Contains(std::uint64_t address, std::size_t count) const {
    MutexLock lock(mutex_);
    return Holds(address, count);
}

bool RegisterFile::IsWritable(std::uint64_t address, std::size_t count) const {
    MutexLock lock(mutex_);
    return Holds(address, count) && std::any_of(writable_.begin(), writable_.end(), [&](const Range& range) {
               return address >= range.first && address + count <= range.end;
           });
}

bool RegisterFile::Write(std::uint64_t address, WireBytes bytes) {
    MutexLock lock(mutex_);
    if (!Holds(address, bytes.size))
        return false;
    if (bytes.size != 0)
        std::memcpy(bytes_.data() + address, bytes.data, bytes.size);
    return true;
}

bool RegisterFile::SetValue(std::uint64_t address, std::uint32_t value) {
    std::uint8_t bytes[4];
    Wire::Store(bytes, value);
    return Write(address, {bytes, sizeof(bytes)});
}

bool RegisterFile::SetText(std::uint64_t address, const std::string& text, std::size_t width) {
    std::vector<std::uint8_t> field(width);
    WireWriter writer(field.data(), width);
    return writer.Text(text, width) && Write(address, {field.data(), width});
}

std::uint32_t RegisterFile::Value(std::uint64_t address) const {
    std::uint8_t bytes[4];
    return Read(address, {bytes, sizeof(bytes)}) ? Wire::Load<std::uint32_t>(bytes) : 0;
}

} // namespace Simulated
} // namespace VX3
