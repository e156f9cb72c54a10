#include "grabber/KdXDMADevice.h"

#include "core/LogListener.h"
#include "vx3/core/Logger.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <system_error>

namespace VX3 {

namespace {

constexpr unsigned int WordSize = sizeof(std::uint32_t);

// A page of a regular file's mapping behind the file's end would end the program.
bool IsLongEnough(int fd) {
    struct stat info {};
    return ::fstat(fd, &info) == 0 &&
           (!S_ISREG(info.st_mode) || info.st_size >= static_cast<off_t>(KdXDMADevice::WindowSize));
}

} // namespace

KdXDMADevice::KdXDMADevice(const std::string& devicePath, const char* name) {
    const std::string path = devicePath + "_user";
    fd_ = UniqueFd(::open(path.c_str(), O_RDWR | O_SYNC | O_CLOEXEC));
    if (!fd_) {
        VxLoggerLog(LogLevel::Error, "SDK", "%s: %s cannot be opened: %s", name, path.c_str(),
                    std::generic_category().message(errno).c_str());
        return;
    }
    void* base = IsLongEnough(fd_.Get())
                     ? ::mmap(nullptr, WindowSize, PROT_READ | PROT_WRITE, MAP_SHARED, fd_.Get(), 0)
                     : MAP_FAILED;
    if (base == MAP_FAILED) {
        VxLoggerLog(LogLevel::Error, "SDK", "%s: the registers of %s cannot be mapped", name, path.c_str());
        return;
    }
    base_ = static_cast<volatile std::uint32_t*>(base);
    VxLoggerLog(LogLevel::Debug, "SDK", "XDMA user device mapped to %p!", base);
}

KdXDMADevice::~KdXDMADevice() {
    if (base_ != nullptr)
        ::munmap(const_cast<std::uint32_t*>(base_), WindowSize);
}

volatile std::uint32_t* KdXDMADevice::Place(unsigned int length, unsigned long long offset) const {
    if (base_ == nullptr || length > WindowSize || offset > WindowSize)
        return nullptr;
    const std::size_t word = length == WordSize ? offset / WordSize : offset;
    return word * WordSize <= WindowSize - length ? base_ + word : nullptr;
}

StatusCode KdXDMADevice::Read(unsigned char* buffer, unsigned int length, unsigned long long offset) const {
    const volatile std::uint32_t* words = Place(length, offset);
    if (words == nullptr)
        return Status::WrongState;
    for (unsigned int done = 0; done < length; done += WordSize) {
        const std::uint32_t word = *words++;
        std::memcpy(buffer + done, &word, length - done < WordSize ? length - done : WordSize);
    }
    return static_cast<StatusCode>(length);
}

StatusCode KdXDMADevice::Write(const unsigned char* buffer, unsigned int length, unsigned long long offset) {
    volatile std::uint32_t* words = Place(length, offset);
    if (words == nullptr)
        return Status::WrongState;
    if (HasLogListener(LogLevel::Debug)) {
        std::uint32_t value = 0;
        std::memcpy(&value, buffer, length < WordSize ? length : WordSize);
        if (length == WordSize)
            VxLoggerLog(LogLevel::Debug, "SDK", "KdXDMADevice::Write offset:0x%llx data:0x%x", offset, value);
        else
            VxLoggerLog(LogLevel::Debug, "SDK", "KdXDMADevice::Write offset:0x%llx length:0x%x", offset,
                        length);
    }
    unsigned int done = 0;
    for (; length - done >= WordSize; done += WordSize) {
        std::uint32_t word = 0;
        std::memcpy(&word, buffer + done, WordSize);
        *words++ = word;
    }
    auto* bytes = reinterpret_cast<volatile unsigned char*>(words);
    for (; done < length; ++done)
        *bytes++ = buffer[done];
    return static_cast<StatusCode>(length);
}

} // namespace VX3
