// Registers and memory of a card, over its register window, which must outlive this.
#pragma once

#include "grabber/KdXDMADevice.h"

namespace VX3 {

class KdGrabberCmdHelper {
public:
    explicit KdGrabberCmdHelper(KdXDMADevice* device) : device_(device) {}

    // 4, or WrongState.
    StatusCode ReadRegister(unsigned int address, unsigned int& value) const;
    StatusCode WriteRegister(unsigned int address, unsigned int value);
    // Any length, as the window takes it.
    StatusCode ReadData(unsigned int address, unsigned char* buffer, unsigned int length) const;
    StatusCode WriteData(unsigned int address, const unsigned char* buffer, unsigned int length);
    // Whole words: what is beyond the last is left out. NotFound for less than one.
    StatusCode ReadMemory(unsigned int address, unsigned char* buffer, unsigned int length) const;
    StatusCode WriteMemory(unsigned int address, const unsigned char* buffer, unsigned int length);
    // This card has neither: NotSupported.
    StatusCode WriteMetaData(unsigned int address, const unsigned char* buffer, unsigned int length);
    StatusCode AsyncRead(unsigned int address, unsigned char* buffer, unsigned int length) const;

private:
    KdXDMADevice* device_;
};

} // namespace VX3
