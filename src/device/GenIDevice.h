// A device with GenICam features: fetches its description, builds the configurer on it while connected, and
// starts and stops acquisition through the standard features. Transports derive their cameras from it; held
// by std::shared_ptr, since the node map's port refers to it weakly.
//
// GetConfigurer hands out a plain pointer: configurers of the last KeptConfigurers connections are kept, so
// that a thread that still uses one while another disconnects does no harm. ShareConfigurer hands out an
// owner.
#pragma once

#include "device/DeviceAbs.h"
#include "vx3/genicam/IConfigurer.h"
#include "vx3/genicam/IGenIObj.h"
#include "vx3/genicam/IXmlData.h"

#include <deque>
#include <memory>
#include <string>
#include <vector>

namespace VX3 {

class GenIDevice : public IGenIObj, public DeviceAbs, public std::enable_shared_from_this<GenIDevice> {
public:
    static constexpr std::size_t KeptConfigurers = 4;
    static constexpr unsigned int MaxDescriptionSize = 0x6400000; // bytes

    GenIDevice(unsigned int typeId, const char* name, IDevice* parent);
    ~GenIDevice() override;

    bool IsConfigurable() const override { return true; }
    // Null while disconnected.
    IConfigurer* GetConfigurer() override VX3_EXCLUDES(configurerMutex_);
    std::shared_ptr<IConfigurer> ShareConfigurer() override VX3_EXCLUDES(configurerMutex_);
    // Keeps the device alive too.
    std::shared_ptr<IStream> ShareStream(unsigned int index) override;

    // The text of the description's URL. NotSupported without an address for it.
    [[nodiscard]] virtual StatusCode GetXmlUrl(std::string& url);
    // Null on any failure, which FeaturesFailure then tells.
    [[nodiscard]] virtual std::unique_ptr<IXmlData> GetXmlData() VX3_EXCLUDES(configurerMutex_);

    std::string VendorName() const override;
    std::string ModelName() const override;
    std::string DeviceVersion() const override;
    std::string ManufacturerInfo() const override;
    std::string SerialNumber() const override;
    std::string FeaturesFailure() const override VX3_EXCLUDES(configurerMutex_);

    bool IsWritable() const override { return Access() == DeviceAccess::Control; }
    bool IsReachable() const override { return IsInReach(); }

protected:
    // The transport's own start and stop, after (before) the camera's features.
    [[nodiscard]] virtual StatusCode AcquisitionStartPP(unsigned int streamIndex) = 0;
    virtual StatusCode AcquisitionStopPP(unsigned int streamIndex) = 0;
    // Directories, each with a trailing "/", where a description file with a relative name is looked for when
    // the working directory does not have it.
    virtual std::vector<std::string> DescriptionDirectories() const { return {}; }

    StatusCode AcquisitionStartP(unsigned int streamIndex) override;
    StatusCode AcquisitionStopP(unsigned int streamIndex) override;
    StatusCode CreateConfigurer() override VX3_EXCLUDES(configurerMutex_);
    StatusCode ReleaseConfigurer() override VX3_EXCLUDES(configurerMutex_);
    // Replaces the configurer; for devices that build theirs in another way.
    void InstallConfigurer(std::shared_ptr<IConfigurer> configurer) VX3_EXCLUDES(configurerMutex_);
    // What FeaturesFailure tells; gives null.
    std::unique_ptr<IXmlData> FailWithoutFeatures(const std::string& reason) VX3_EXCLUDES(configurerMutex_);

private:
    std::unique_ptr<IXmlData> ReadDescriptionFile(const std::string& path);
    std::unique_ptr<IXmlData> ReadDescriptionMemory(const std::string& location);
    std::string FeatureText(const char* feature) const;

    mutable Mutex configurerMutex_;
    std::shared_ptr<IConfigurer> configurer_ VX3_GUARDED_BY(configurerMutex_);
    std::deque<std::shared_ptr<IConfigurer>> retired_ VX3_GUARDED_BY(configurerMutex_);
    std::string featuresFailure_ VX3_GUARDED_BY(configurerMutex_);
};

} // namespace VX3
