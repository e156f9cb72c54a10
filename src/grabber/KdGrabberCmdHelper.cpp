#include "grabber/KdGrabberCmdHelper.h"

#include <array>
#include <cstring>

namespace VX3 {

namespace {

constexpr unsigned int WordSize = 4;

unsigned int WholeWords(unsigned int length) {
    return length / WordSize * WordSize;
}

} // namespace

StatusCode KdGrabberCmdHelper::ReadRegister(unsigned int address, unsigned int& value) const {
    std::array<unsigned char, WordSize> bytes{};
    const StatusCode status = device_->Read(bytes.data(), WordSize, address);
    if (!Failed(status))
        std::memcpy(&value, bytes.data(), WordSize);
    return status;
}

StatusCode KdGrabberCmdHelper::WriteRegister(unsigned int address, unsigned int value) {
    std::array<unsigned char, WordSize> bytes{};
    std::memcpy(bytes.data(), &value, WordSize);
    return device_->Write(bytes.data(), WordSize, address);
}

StatusCode KdGrabberCmdHelper::ReadData(unsigned int address, unsigned char* buffer,
                                        unsigned int length) const {
    return device_->Read(buffer, length, address);
}

StatusCode KdGrabberCmdHelper::WriteData(unsigned int address, const unsigned char* buffer,
                                         unsigned int length) {
    return device_->Write(buffer, length, address);
}

StatusCode KdGrabberCmdHelper::ReadMemory(unsigned int address, unsigned char* buffer,
                                          unsigned int length) const {
    return length < WordSize ? Status::NotFound : ReadData(address, buffer, WholeWords(length));
}

StatusCode KdGrabberCmdHelper::WriteMemory(unsigned int address, const unsigned char* buffer,
                                           unsigned int length) {
    return length < WordSize ? Status::NotFound : WriteData(address, buffer, WholeWords(length));
}

StatusCode KdGrabberCmdHelper::WriteMetaData(unsigned int, const unsigned char*, unsigned int) {
    return Status::NotSupported;
}

StatusCode KdGrabberCmdHelper::AsyncRead(unsigned int, unsigned char*, unsigned int) const {
    return Status::NotSupported;
}

} // namespace VX3
