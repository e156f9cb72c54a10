#include "simulated/SoftDevice.h"

#include "core/DataDirectories.h"
#include "simulated/SoftStream.h"
#include "vx3/core/IntfDevType.h"
#include "vx3/core/Utilities.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace VX3 {

namespace {

constexpr unsigned int SoftDeviceType = TypeIds::SubDevice + static_cast<unsigned int>(IntfDevType::Virtual);

// Length of the directory part, its separator included; 0 when the path has none.
std::size_t DirectoryLength(const std::string& path) {
    std::size_t separator = path.find_last_of('/');
    if (separator == std::string::npos)
        separator = path.find_last_of('\\');
    return separator == std::string::npos ? 0 : separator + 1;
}

// True when [address, address + length) lies in the `size` bytes from `start`.
bool Contains(unsigned long long start, unsigned long long size, unsigned long long address,
              unsigned int length) {
    return address >= start && address - start <= size && length <= size - (address - start);
}

std::string Text(const char* text) {
    return text != nullptr ? text : "";
}

} // namespace

SoftDevice::SoftDevice(const char* name, const char* xmlPath, IDevice* parent)
    : RemotableDevice(SoftDeviceType, name, parent) {
    const std::string path = Text(xmlPath);
    ownDirectory_ = path.substr(0, DirectoryLength(path));
    StoreUrl("File:" + path.substr(ownDirectory_.size()));
}

SoftDevice::SoftDevice(const char* name, const char* xmlName, std::unique_ptr<unsigned char[]>&& xml,
                       unsigned int xmlSize, IDevice* parent)
    : RemotableDevice(SoftDeviceType, name, parent),
      description_(std::move(xml)),
      descriptionSize_(description_ ? xmlSize : 0) {
    StoreUrl(StringFormat("Local:%s;%x;%x", Text(xmlName).c_str(), DescriptionAddress, descriptionSize_));
}

SoftDevice::~SoftDevice() {
    Shutdown();
}

void SoftDevice::StoreUrl(const std::string& url) {
    std::memcpy(url_.data(), url.data(), std::min<std::size_t>(url.size(), UrlSize - 1));
}

std::vector<std::string> SoftDevice::DescriptionDirectories() const {
    std::vector<std::string> directories = DataDirectories();
    if (!ownDirectory_.empty())
        directories.insert(directories.begin(), ownDirectory_);
    return directories;
}

// ---- registers ----

unsigned char* SoftDevice::Region(unsigned long long address, unsigned int length) const {
    for (const StructRegDesc& region : regions_)
        if (region.memory != nullptr && Contains(region.address, region.size, address, length))
            return region.memory + (address - region.address);
    return nullptr;
}

const unsigned char* SoftDevice::Readable(unsigned long long address, unsigned int length) const {
    if (Contains(UrlAddress, UrlSize, address, length))
        return url_.data() + (address - UrlAddress);
    if (description_ && Contains(DescriptionAddress, descriptionSize_, address, length))
        return description_.get() + (address - DescriptionAddress);
    return Region(address, length);
}

StatusCode SoftDevice::ReadPort(unsigned long long address, unsigned char* buffer, unsigned int length) {
    MutexLock lock(registerMutex_);
    const unsigned char* source = Readable(address, length);
    if (source == nullptr || buffer == nullptr)
        return Status::NotFound;
    std::memcpy(buffer, source, length);
    return static_cast<StatusCode>(length);
}

StatusCode SoftDevice::WritePort(unsigned long long address, const unsigned char* buffer,
                                 unsigned int length) {
    MutexLock writing(writeMutex_);
    {
        MutexLock lock(registerMutex_);
        unsigned char* target = Region(address, length);
        if (target == nullptr || buffer == nullptr)
            return Status::NotFound;
        std::memcpy(target, buffer, length);
    }
    if (writeCallback_)
        writeCallback_(static_cast<unsigned int>(address), 0);
    return static_cast<StatusCode>(length);
}

StatusCode SoftDevice::SetRegRwParams(std::vector<StructRegDesc>& regions, WriteCallback callback) {
    MutexLock writing(writeMutex_);
    MutexLock lock(registerMutex_);
    regions_ = regions;
    writeCallback_ = std::move(callback);
    return Status::Ok;
}

StatusCode SoftDevice::SetImageGenerator(std::vector<std::unique_ptr<IImageGenerator>>& generators) {
    if (generators.empty())
        return Status::Ok;
    std::vector<std::shared_ptr<IStream>> streams;
    for (unsigned int i = 1; i <= generators.size(); ++i)
        streams.push_back(std::make_shared<SoftStream>(StringFormat("SoftStream #%u", i).c_str(), i - 1,
                                                       std::move(generators[i - 1]), this));
    generators.clear();
    UpdateStreams(streams);
    return Status::Ok;
}

} // namespace VX3
