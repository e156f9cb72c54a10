#include "cameralink/GenCpDevice.h"

#include "genicam/XmlData.h"
#include "platform/clprotocol/CDeviceID.h"
#include "platform/clprotocol/PortError.h"
#include "vx3/core/IntfDevType.h"
#include "vx3/core/LastFailure.h"
#include "vx3/core/Logger.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace VX3 {

using CLProtocol::CDeviceID;
using CLProtocol::PortError;
using std::chrono::milliseconds;

namespace {

constexpr unsigned int GenCpDeviceType = TypeIds::SubDevice + static_cast<unsigned int>(IntfDevType::GenCP);
constexpr milliseconds LongestPeriod{1000};
constexpr milliseconds ShortestPeriod{50};

// Well before the camera gives its host up; often enough to notice one that has gone, where it never does.
milliseconds PeriodFor(milliseconds timeout) {
    return timeout == milliseconds(0) ? LongestPeriod
                                      : std::clamp(timeout / 3, ShortestPeriod, LongestPeriod);
}

StatusCode CodeOf(const PortError& error) {
    switch (error.Kind()) {
    case CLProtocol::Failure::Refused:
        return Status::FromGvcp(error.Status());
    case CLProtocol::Failure::Malformed:
        return Status::Malformed;
    case CLProtocol::Failure::InUse:
        return Status::OpenFailed;
    case CLProtocol::Failure::Abandoned:
        return Status::WrongState;
    case CLProtocol::Failure::Argument:
        return Status::NotFound;
    default:
        return Status::DeviceLost;
    }
}

} // namespace

GenCpDevice::GenCpDevice(const char* name, const std::string& portId, const std::string& deviceId,
                         IDevice* parent)
    : GenIDevice(GenCpDeviceType, name, parent),
      portId_(portId),
      deviceId_(deviceId),
      heart_([this] { return Beat(); }) {}

GenCpDevice::~GenCpDevice() {
    Shutdown();
    heart_.Stop();
}

// Identity -------------------------------------------------------------------------------------------------

std::string GenCpDevice::ModelName() const {
    const std::string model = GenIDevice::ModelName();
    return model.empty() ? CDeviceID::FromString(deviceId_).Model() : model;
}

std::string GenCpDevice::SerialNumber() const {
    const std::string serial = GenIDevice::SerialNumber();
    return serial.empty() ? CDeviceID::FromString(deviceId_).Serial() : serial;
}

std::list<std::pair<std::string, std::string>> GenCpDevice::GetInfo() const {
    return {{"Name", Name()}, {"PortId", portId_}, {"DeviceId", deviceId_}};
}

// Connection -----------------------------------------------------------------------------------------------

StatusCode GenCpDevice::ConnectP() {
    lossTold_ = false;
    try {
        serial_.Connect(portId_, deviceId_);
    } catch (const std::exception& error) {
        return Judge(error);
    }
    LogNote();
    period_ = PeriodFor(serial_.HeartbeatTimeout());
    heart_.Start(period_);
    return Status::Ok;
}

StatusCode GenCpDevice::DisConnectP() {
    heart_.Stop();
    serial_.DisConnect();
    return Status::Ok;
}

void GenCpDevice::LogNote() {
    const std::string note = serial_.TakeNote();
    if (!note.empty())
        VxLoggerLog(LogLevel::Warning, "SDK", "%s: %s", Name().c_str(), note.c_str());
}

// False once the camera is lost. This object may have gone by then.
bool GenCpDevice::Beat() {
    const std::shared_ptr<GenIDevice> self = weak_from_this().lock();
    if (!self)
        return false;
    try {
        serial_.KeepAlive(period_);
        return true;
    } catch (const PortError& error) {
        if (!error.IsLoss())
            return true; // refused, it is there; not waited for, the thread is told to end
    }
    HeartBeatTimeOut();
    return false;
}

void GenCpDevice::HeartBeatTimeOut() {
    if (lossTold_.exchange(true))
        return;
    VxLoggerLog(LogLevel::Warning, "SDK", "%s Device heart beat timeout!", Name().c_str());
    serial_.Lose();
    ReportLost();
}

// Registers ------------------------------------------------------------------------------------------------

StatusCode GenCpDevice::Judge(const std::exception& error) {
    const auto* known = dynamic_cast<const PortError*>(&error);
    const StatusCode code = known != nullptr ? CodeOf(*known) : Status::DeviceLost;
    if (code == Status::DeviceLost)
        HeartBeatTimeOut();
    return SetLastFailure(code, Name() + ": " + error.what());
}

template <typename Operation>
StatusCode GenCpDevice::Transfer(unsigned int length, Operation operation) {
    if (!serial_.IsConnected())
        return DeviceState() == DEVICE_STATE::Lost ? Status::DeviceLost : Status::NotConnected;
    try {
        operation();
        return static_cast<StatusCode>(length);
    } catch (const std::exception& error) {
        return Judge(error);
    }
}

StatusCode GenCpDevice::ReadPort(unsigned long long address, unsigned char* buffer, unsigned int length) {
    return Transfer(length, [&] { serial_.Read(buffer, address, length); });
}

StatusCode GenCpDevice::WritePort(unsigned long long address, const unsigned char* buffer,
                                  unsigned int length) {
    if (!IsWritable())
        return Status::NotAvailable;
    return Transfer(length, [&] { serial_.Write(buffer, address, length); });
}

// Description ----------------------------------------------------------------------------------------------

std::unique_ptr<IXmlData> GenCpDevice::GetXmlData() {
    try {
        std::vector<std::string> ids;
        serial_.GetXMLIDs(ids);
        if (ids.empty())
            return FailWithoutFeatures("it has no description");
        const std::string text = serial_.GetXML(ids.front(), true);
        LogNote();
        if (text.empty())
            return FailWithoutFeatures("its description is empty");
        std::unique_ptr<unsigned char[]> bytes(new unsigned char[text.size()]);
        std::memcpy(bytes.get(), text.data(), text.size());
        return std::make_unique<XmlData>(ids.front() + ".xml", std::move(bytes),
                                         static_cast<unsigned int>(text.size()));
    } catch (const std::exception& error) {
        (void)Judge(error);
        return FailWithoutFeatures(std::string("its description cannot be read: ") + error.what());
    }
}

} // namespace VX3
