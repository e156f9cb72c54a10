#include "device/GenIDevice.h"

#include "core/DefaultConfig.h"
#include "genicam/GenApiRI.h"
#include "genicam/GenICamConfigurer.h"
#include "genicam/XmlData.h"
#include "vx3/core/LastFailure.h"
#include "vx3/core/Logger.h"
#include "vx3/core/Utilities.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

namespace VX3 {

namespace {

// SFNC names.
constexpr const char* LockFeature = "TLParamsLocked";
constexpr const char* StartFeature = "AcquisitionStart";
constexpr const char* StopFeature = "AcquisitionStop";

[[nodiscard]] StatusCode Execute(IConfigurer& configurer, const char* command) {
    GenICam::NodeValue execute(GenICam::CommandValue::Execute);
    return configurer.SetNodeValue(command, execute);
}

// Cameras that have nothing to lock may come without the feature.
[[nodiscard]] StatusCode SetLock(IConfigurer& configurer, unsigned int locked) {
    const auto map = configurer.GetNodeMap();
    return map && map->GetNode(LockFeature) == nullptr ? Status::Ok
                                                       : configurer.SetNodeValue(LockFeature, locked);
}

bool IsFileUrl(const std::string& url) {
    return url.compare(0, 5, "file:") == 0 || url.compare(0, 5, "File:") == 0;
}

// The bytes of the first of `directories` + `path` that can be read. Regular files only: opening a pipe that
// a camera names would wait for a writer, opening a device may do anything.
std::unique_ptr<XmlData> ReadFirst(const std::vector<std::string>& directories, const std::string& path) {
    for (const std::string& directory : directories) {
        std::error_code error;
        if (!std::filesystem::is_regular_file(directory + path, error))
            continue;
        std::ifstream file(directory + path, std::ios::binary | std::ios::ate);
        const std::streamoff size = file ? static_cast<std::streamoff>(file.tellg()) : -1;
        if (size <= 0 || size > GenIDevice::MaxDescriptionSize)
            continue;
        std::unique_ptr<unsigned char[]> bytes(new unsigned char[static_cast<std::size_t>(size)]);
        file.seekg(0);
        if (file.read(reinterpret_cast<char*>(bytes.get()), size))
            return std::make_unique<XmlData>(path, std::move(bytes), static_cast<unsigned int>(size));
    }
    return nullptr;
}

} // namespace

GenIDevice::GenIDevice(unsigned int typeId, const char* name, IDevice* parent)
    : DeviceAbs(typeId, name, parent) {}

GenIDevice::~GenIDevice() = default;

// ---- configurer ----

IConfigurer* GenIDevice::GetConfigurer() {
    MutexLock lock(configurerMutex_);
    return configurer_.get();
}

std::shared_ptr<IConfigurer> GenIDevice::ShareConfigurer() {
    struct Kept {
        std::shared_ptr<GenIDevice> device;
        std::shared_ptr<IConfigurer> configurer;
    };
    MutexLock lock(configurerMutex_);
    if (!configurer_)
        return nullptr;
    IConfigurer* plain = configurer_.get();
    return {std::make_shared<Kept>(Kept{weak_from_this().lock(), configurer_}), plain};
}

std::shared_ptr<IStream> GenIDevice::ShareStream(unsigned int index) {
    struct Kept {
        std::shared_ptr<GenIDevice> device;
        std::shared_ptr<IStream> stream;
    };
    auto stream = DeviceAbs::ShareStream(index);
    if (!stream)
        return nullptr;
    IStream* plain = stream.get();
    return {std::make_shared<Kept>(Kept{weak_from_this().lock(), std::move(stream)}), plain};
}

void GenIDevice::InstallConfigurer(std::shared_ptr<IConfigurer> configurer) {
    std::shared_ptr<IConfigurer> expired; // released after the lock is gone
    MutexLock lock(configurerMutex_);
    if (configurer_)
        retired_.push_back(std::move(configurer_));
    configurer_ = std::move(configurer);
    if (retired_.size() > KeptConfigurers) {
        expired = std::move(retired_.front());
        retired_.pop_front();
    }
}

StatusCode GenIDevice::CreateConfigurer() {
    if (!IsConnected() || !IsConfigurable())
        return Status::WrongState;
    (void)FailWithoutFeatures("");
    auto description = GetXmlData();
    if (!description)
        return Status::WrongState;
    auto genApi =
        std::make_unique<GenApiRI>(std::move(description), std::weak_ptr<IGenIObj>(weak_from_this()),
                                   IsInterface() ? "InterfacePort" : nullptr);
    if (!genApi->GetNodeMap())
        (void)FailWithoutFeatures(genApi->Failure());
    InstallConfigurer(std::make_shared<GenICamConfigurer>(std::move(genApi), this));
    return Status::Ok;
}

StatusCode GenIDevice::ReleaseConfigurer() {
    InstallConfigurer(nullptr);
    return Status::Ok;
}

std::string GenIDevice::FeaturesFailure() const {
    MutexLock lock(configurerMutex_);
    return featuresFailure_;
}

std::unique_ptr<IXmlData> GenIDevice::FailWithoutFeatures(const std::string& reason) {
    MutexLock lock(configurerMutex_);
    featuresFailure_ = reason;
    return nullptr;
}

// ---- description ----

StatusCode GenIDevice::GetXmlUrl(std::string& url) {
    const std::int64_t address = GetXmlUrlAddr();
    if (address == -1)
        return Status::NotSupported;
    std::array<unsigned char, 256> text{};
    const StatusCode status = ReadPort(static_cast<unsigned long long>(address), text.data(),
                                       static_cast<unsigned int>(text.size()));
    if (Failed(status))
        return status;
    url.assign(text.begin(), std::find(text.begin(), text.end(), 0));
    if (ConfigBool(ConfigKeys::ReadXmlFromFile) && !IsFileUrl(url)) {
        const std::size_t scheme = std::min<std::size_t>(6, url.size()); // "local:"
        url = "file:" + url.substr(scheme, url.find(';', scheme) - scheme);
    }
    return Status::Ok;
}

std::unique_ptr<IXmlData> GenIDevice::GetXmlData() {
    std::string url;
    const StatusCode status = GetXmlUrl(url);
    if (status == Status::NotSupported && GetXmlUrlAddr() == -1)
        return nullptr; // its kind has none
    if (Failed(status))
        return FailWithoutFeatures("the address of its description cannot be read: " + StatusText(status));
    const std::vector<std::string> pieces = SplitStringByColon(url);
    const std::string scheme = pieces.size() == 2 ? pieces[0] : "";
    if (scheme == "file" || scheme == "File")
        return ReadDescriptionFile(pieces[1]);
    if (scheme == "local" || scheme == "Local")
        return ReadDescriptionMemory(pieces[1]);
    return FailWithoutFeatures("its description lies at \"" + url + "\", which cannot be fetched");
}

std::unique_ptr<IXmlData> GenIDevice::ReadDescriptionFile(const std::string& location) {
    const std::string path = location.compare(0, 3, "///") == 0 ? location.substr(3) : location;
    std::vector<std::string> directories{""};
    if (!path.empty() && path.front() != '/')
        for (std::string& directory : DescriptionDirectories())
            directories.push_back(std::move(directory));
    auto description = ReadFirst(directories, path);
    return description ? std::move(description)
                       : FailWithoutFeatures("its description file \"" + path + "\" cannot be read");
}

// "file name;address;length", numbers in hexadecimal; GenICam allows "?SchemaVersion=..." behind the length.
std::unique_ptr<IXmlData> GenIDevice::ReadDescriptionMemory(const std::string& location) {
    std::string text = location.substr(0, location.find('?'));
    const std::size_t bar = text.find('|');
    if (bar != std::string::npos)
        text[bar] = ':';
    std::vector<std::string> parts = SplitString(text, ';');
    const bool whole = parts.size() == 3 && !parts[0].empty();
    const std::uint64_t address = whole ? AscH2Integer(parts[1]) : 0;
    const std::uint64_t length = whole ? AscH2Integer(parts[2]) : 0;
    if (address == 0 || length < 1 || length > MaxDescriptionSize)
        return FailWithoutFeatures("its description cannot lie at \"local:" + location + "\"");
    // Cameras are read in words: the last one may reach past the end.
    std::unique_ptr<unsigned char[]> bytes(new unsigned char[length + 8]());
    const StatusCode status = ReadPort(address, bytes.get(), static_cast<unsigned int>(length));
    if (Failed(status))
        return FailWithoutFeatures("its description cannot be read: " + StatusText(status));
    return std::make_unique<XmlData>(parts[0], std::move(bytes), static_cast<unsigned int>(length));
}

// ---- features ----

std::string GenIDevice::FeatureText(const char* feature) const {
    std::shared_ptr<IConfigurer> configurer;
    {
        MutexLock lock(configurerMutex_);
        configurer = configurer_;
    }
    return configurer ? configurer->GetNodeValue(feature).AsString() : std::string();
}

std::string GenIDevice::VendorName() const {
    return FeatureText("DeviceVendorName");
}
std::string GenIDevice::ModelName() const {
    return FeatureText("DeviceModelName");
}
std::string GenIDevice::DeviceVersion() const {
    return FeatureText("DeviceVersion");
}
std::string GenIDevice::ManufacturerInfo() const {
    return FeatureText("DeviceManufacturerInfo");
}
std::string GenIDevice::SerialNumber() const {
    return FeatureText("DeviceSerialNumber");
}

StatusCode GenIDevice::AcquisitionStartP(unsigned int streamIndex) {
    if (!IsWritable())
        return SetLastFailure(Status::NotAvailable, Name() + " is connected to be read only");
    const std::shared_ptr<IConfigurer> configurer = ShareConfigurer();
    if (!configurer && GetXmlUrlAddr() == -1)
        return AcquisitionStartPP(streamIndex);
    if (!configurer || !configurer->GetNodeMap())
        return SetLastFailure(Status::NotAvailable, Name() + " has no features: " + FeaturesFailure());
    StatusCode status = SetLock(*configurer, 1);
    if (Failed(status))
        return status;
    status = Execute(*configurer, StartFeature);
    if (!Failed(status))
        status = AcquisitionStartPP(streamIndex);
    if (Failed(status))
        (void)SetLock(*configurer, 0); // the start's code is the one that matters
    return status;
}

StatusCode GenIDevice::AcquisitionStopP(unsigned int streamIndex) {
    const std::shared_ptr<IConfigurer> configurer = ShareConfigurer();
    if (!configurer || !IsInReach()) // a lost camera would only be waited for
        return AcquisitionStopPP(streamIndex);
    // A camera that does not take the command may still be streaming: its parameters stay locked.
    if (!Failed(Execute(*configurer, StopFeature)) && Failed(SetLock(*configurer, 0)))
        VxLoggerLog(LogLevel::Warning, "SDK", "%s: its parameters stay locked", Name().c_str());
    return AcquisitionStopPP(streamIndex);
}

} // namespace VX3
