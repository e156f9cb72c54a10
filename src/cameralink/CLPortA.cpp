#include "cameralink/CLPortA.h"

#include "platform/clprotocol/CCLPort.h"
#include "platform/clprotocol/CDeviceID.h"

#include <utility>

namespace VX3 {

using CLProtocol::CCLPort;

namespace {

constexpr int PortInterface = 11; // what GenApi calls a port

[[noreturn]] void NotImplemented() {
    throw "The method or operation is not implemented.";
}

} // namespace

CLPortA::CLPortA() = default;

CLPortA::~CLPortA() {
    DisConnect();
}

// Listing and probing --------------------------------------------------------------------------------------

void CLPortA::SetPorts(const std::string& patterns) {
    CCLPort::SetPortPatterns(patterns);
}

void CLPortA::GetPortIDs(std::list<std::string>& ports) {
    const std::vector<std::string> ids = CCLPort::GetPortIDs();
    ports.assign(ids.begin(), ids.end());
}

void CLPortA::GetDeviceIDTemplates(std::vector<std::string>& templates) {
    templates = CCLPort::GetDeviceIDTemplates();
}

std::string CLPortA::ProbeDevice(const std::string& portId, const std::string& deviceIdTemplate,
                                 unsigned int timeoutMs) {
    return ProbeDevice(portId, deviceIdTemplate, timeoutMs, {});
}

std::string CLPortA::ProbeDevice(const std::string& portId, const std::string& deviceIdTemplate,
                                 unsigned int timeoutMs, std::function<bool()> abandoned) {
    return CCLPort::ProbeDevice(portId, deviceIdTemplate, timeoutMs, std::move(abandoned));
}

void CLPortA::GetShortDeviceId(std::string& deviceId) {
    deviceId = CLProtocol::CDeviceID::FromString(deviceId).GetShortDeviceID();
}

// The held port --------------------------------------------------------------------------------------------

std::shared_ptr<CCLPort> CLPortA::Port() const {
    MutexLock lock(mutex_);
    return port_;
}

std::shared_ptr<CCLPort> CLPortA::Take() {
    MutexLock lock(mutex_);
    return std::exchange(port_, nullptr);
}

int CLPortA::Connect(const std::string& portId, const std::string& deviceId) {
    DisConnect();
    const auto port = std::make_shared<CCLPort>();
    {
        MutexLock lock(mutex_);
        connecting_ = port;
    }
    try {
        port->Connect(portId, deviceId);
    } catch (...) {
        MutexLock lock(mutex_);
        connecting_.reset();
        throw;
    }
    MutexLock lock(mutex_);
    connecting_.reset();
    port_ = port;
    return 0;
}

int CLPortA::Connect(const std::string& /*portId*/) {
    return 0;
}

// What the port says to its device at the end is said outside the lock, by whoever uses it last.
void CLPortA::DisConnect() {
    Take().reset();
}

void CLPortA::Lose() {
    if (const auto port = Take())
        port->Forget();
}

void CLPortA::Abandon() {
    MutexLock lock(mutex_);
    for (const auto& port : {port_, connecting_})
        if (port)
            port->Abandon();
}

void CLPortA::Read(void* buffer, unsigned long long address, unsigned int length) {
    if (const auto port = Port())
        port->Read(buffer, address, length);
}

void CLPortA::Write(const void* buffer, unsigned long long address, unsigned int length) {
    if (const auto port = Port())
        port->Write(buffer, address, length);
}

void CLPortA::GetXMLIDs(std::vector<std::string>& ids) {
    const auto port = Port();
    ids = port ? port->GetXMLIDs() : std::vector<std::string>();
}

std::string CLPortA::GetXML(std::string xmlId, bool fromDevice) {
    const auto port = Port();
    return port ? port->GetXML(xmlId, fromDevice) : std::string();
}

std::string CLPortA::GetXML(bool fromDevice) {
    std::vector<std::string> ids;
    GetXMLIDs(ids);
    return ids.empty() ? std::string() : GetXML(ids.front(), fromDevice);
}

void CLPortA::KeepAlive(std::chrono::milliseconds silence) {
    if (const auto port = Port())
        port->KeepAlive(silence);
}

std::chrono::milliseconds CLPortA::HeartbeatTimeout() const {
    const auto port = Port();
    return port ? port->HeartbeatTimeout() : std::chrono::milliseconds(0);
}

std::string CLPortA::TakeNote() {
    const auto port = Port();
    return port ? port->TakeNote() : std::string();
}

int CLPortA::GetPrinicipalInterfaceType() const {
    return PortInterface;
}

// The rest of the surface ----------------------------------------------------------------------------------

void CLPortA::StopProbing(unsigned int) {}
void CLPortA::SetSerialTimeOut(unsigned int) {}
void CLPortA::Terminate() {}
void CLPortA::UnRegisterSerials() {}
void CLPortA::UnRegisterSerial(const std::string&) {}
std::string CLPortA::RegisterSerial(const std::string&, ISerialAdapterA*) {
    return {};
}
void* CLPortA::GetPort(const std::string&) {
    return nullptr;
}

int CLPortA::GetAccessMode() const {
    NotImplemented();
}
int CLPortA::SerialRead(unsigned char*, unsigned int*, unsigned int) {
    NotImplemented();
}
int CLPortA::SerialWrite(unsigned char*, unsigned int*, unsigned int) {
    NotImplemented();
}
int CLPortA::GetSupportedBaudRates(unsigned int*) {
    NotImplemented();
}
std::string CLPortA::MakeURLfromXMLID(const std::string&) const {
    NotImplemented();
}
unsigned int CLPortA::GetSerialTimeOut() const {
    NotImplemented();
}
void CLPortA::SetDeviceBauderate(unsigned int) {
    NotImplemented();
}
unsigned int CLPortA::GetDeviceBauderate() const {
    return GetSerialTimeOut();
}
unsigned int CLPortA::SupportedBaudrates() const {
    return GetSerialTimeOut();
}
void CLPortA::StorePortIDDeviceIDPairs() const {
    NotImplemented();
}
void CLPortA::RetrievePortIDDeviceIDPairs() const {
    StorePortIDDeviceIDPairs();
}
void CLPortA::GetEvent() const {
    NotImplemented();
}
void CLPortA::DeleteXMLDownload() const {
    NotImplemented();
}

} // namespace VX3
