// A device without hardware: its registers are regions of memory, its description a file or a block of
// memory, its streams image generators.
//
//   0x80000000  512 bytes: URL of the description, read only
//   0x81000000  the description itself when it is in memory, read only
//   elsewhere   the declared regions
//
// Register access is locked; writes, with their callback, follow one another. Concrete classes call
// Shutdown() first in their destructors.
#pragma once

#include "device/GenIDevice.h"
#include "device/RemotableDevice.h"
#include "simulated/IImageGenerator.h"
#include "simulated/StructRegDesc.h"
#include "vx3/core/Mutex.h"

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace VX3 {

class SoftDevice : public RemotableDevice<GenIDevice> {
public:
    static constexpr unsigned int UrlAddress = 0x80000000U;
    static constexpr unsigned int UrlSize = 512;
    static constexpr unsigned int DescriptionAddress = 0x81000000U;

    // Called after each successful write with its start address and 0, on the writing thread. It may read
    // registers, not write them.
    using WriteCallback = std::function<void(unsigned int address, unsigned int unused)>;

    // The description is looked for by its bare file name: in the working directory, in the directory of
    // `xmlPath`, beside the library and among its installed data.
    SoftDevice(const char* name, const char* xmlPath, IDevice* parent);
    // The description is `xmlSize` bytes of memory.
    SoftDevice(const char* name, const char* xmlName, std::unique_ptr<unsigned char[]>&& xml,
               unsigned int xmlSize, IDevice* parent);
    ~SoftDevice() override;

    // Bytes transferred, or NotFound when no region holds the whole range.
    StatusCode ReadPort(unsigned long long address, unsigned char* buffer, unsigned int length) override
        VX3_EXCLUDES(registerMutex_);
    StatusCode WritePort(unsigned long long address, const unsigned char* buffer,
                         unsigned int length) override VX3_EXCLUDES(registerMutex_, writeMutex_);
    std::int64_t GetXmlUrlAddr() override { return UrlAddress; }
    bool IsManifestSupported() override { return false; }

    StatusCode SetRegRwParams(std::vector<StructRegDesc>& regions, WriteCallback callback)
        VX3_EXCLUDES(registerMutex_, writeMutex_);
    // One stream a generator; an empty list changes nothing.
    StatusCode SetImageGenerator(std::vector<std::unique_ptr<IImageGenerator>>& generators);

protected:
    StatusCode ConnectP() override { return Status::Ok; }
    StatusCode DisConnectP() override { return Status::Ok; }
    StatusCode AcquisitionStartPP(unsigned int) override { return Status::Ok; }
    StatusCode AcquisitionStopPP(unsigned int) override { return Status::Ok; }
    std::vector<std::string> DescriptionDirectories() const override;

private:
    void StoreUrl(const std::string& url);
    const unsigned char* Readable(unsigned long long address, unsigned int length) const
        VX3_REQUIRES(registerMutex_);
    unsigned char* Region(unsigned long long address, unsigned int length) const VX3_REQUIRES(registerMutex_);

    const std::unique_ptr<unsigned char[]> description_;
    const unsigned int descriptionSize_ = 0;
    std::string ownDirectory_; // of the description file
    std::array<unsigned char, UrlSize> url_{};

    Mutex writeMutex_; // taken before registerMutex_
    WriteCallback writeCallback_ VX3_GUARDED_BY(writeMutex_);
    mutable Mutex registerMutex_;
    std::vector<StructRegDesc> regions_ VX3_GUARDED_BY(registerMutex_);
};

} // namespace VX3
