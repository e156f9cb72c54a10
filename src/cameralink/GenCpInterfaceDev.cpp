#include "cameralink/GenCpInterfaceDev.h"

#include "cameralink/CLPortA.h"
#include "cameralink/GenCpDevice.h"
#include "core/DefaultConfig.h"
#include "device/ThreadEx.h"
#include "platform/clprotocol/PortList.h"
#include "vx3/core/IntfDevType.h"
#include "vx3/core/LastFailure.h"
#include "vx3/core/Logger.h"

#include <algorithm>
#include <exception>

namespace VX3 {

namespace {

constexpr unsigned int GenCpInterfaceType =
    TypeIds::InterfaceDevice + static_cast<unsigned int>(IntfDevType::GenCP);
constexpr const char* PortsKey = "CameraLinkPorts";

// One port, asked on a thread of its own.
class Question {
public:
    Question(const std::string& port, const std::string& deviceIdTemplate, unsigned int timeoutMs,
             std::function<bool()> abandoned)
        : port_(port), thread_([this, deviceIdTemplate, timeoutMs, abandoned](const std::atomic<bool>&) {
              try {
                  deviceId_ = CLPortA::ProbeDevice(port_, deviceIdTemplate, timeoutMs, abandoned);
              } catch (const std::exception& error) {
                  failure_ = error.what();
              }
          }) {
        (void)thread_.Start(); // it is new
    }
    void Wait() { thread_.Stop(); }
    const std::string& Port() const { return port_; }
    const std::string& DeviceId() const { return deviceId_; }
    const std::string& Failure() const { return failure_; }

private:
    const std::string port_;
    std::string deviceId_; // both are read after Wait
    std::string failure_;
    ThreadEx<> thread_;
};

} // namespace

GenCpInterfaceDev::GenCpInterfaceDev(const char* name) : GenCpInterfaceDev(name, ConfigString(PortsKey)) {}

GenCpInterfaceDev::GenCpInterfaceDev(const char* name, const std::string& ports)
    : InterfaceDevAbs(GenCpInterfaceType, name) {
    CLPortA::SetPorts(ports);
}

GenCpInterfaceDev::~GenCpInterfaceDev() {
    Shutdown();
}

GenCpInterfaceDev::Devices GenCpInterfaceDev::Known() const {
    MutexLock lock(knownMutex_);
    return known_;
}

std::vector<std::string> GenCpInterfaceDev::Free(const std::list<std::string>& ports) const {
    std::vector<std::string> used;
    for (const auto& device : Known())
        used.push_back(device->DevicePath());
    std::vector<std::string> free;
    for (const std::string& port : ports)
        if (std::none_of(used.begin(), used.end(),
                         [&](const std::string& other) { return CLProtocol::PortList::IsSame(port, other); }))
            free.push_back(port);
    return free;
}

GenCpInterfaceDev::Devices GenCpInterfaceDev::EnumSubDevices(unsigned int timeoutMs) {
    std::list<std::string> ports;
    std::vector<std::string> templates;
    CLPortA::GetPortIDs(ports);
    CLPortA::GetDeviceIDTemplates(templates);
    if (!ports.empty() && !templates.empty()) {
        const unsigned int limit = firstRound_ ? FirstProbeMs : LaterProbeMs;
        std::vector<std::string> failures;
        (void)Probe(Free(ports), templates.front(), std::min(limit, timeoutMs), failures); // known now
        TellFailures(failures);
        firstRound_ = firstRound_ && RoundInterrupted();
    }
    return Known();
}

GenCpInterfaceDev::Devices GenCpInterfaceDev::Probe(const std::vector<std::string>& ports,
                                                    const std::string& deviceIdTemplate,
                                                    unsigned int timeoutMs,
                                                    std::vector<std::string>& failures) {
    std::list<Question> questions;
    for (const std::string& port : ports)
        questions.emplace_back(port, deviceIdTemplate, timeoutMs, [this] { return RoundInterrupted(); });
    Devices found;
    for (Question& question : questions) {
        question.Wait();
        if (!question.Failure().empty())
            failures.push_back(question.Failure());
        if (question.DeviceId().empty())
            continue;
        std::string name = question.DeviceId();
        CLPortA::GetShortDeviceId(name);
        found.push_back(
            std::make_shared<GenCpDevice>(name.c_str(), question.Port(), question.DeviceId(), this));
    }
    MutexLock lock(knownMutex_);
    known_.insert(known_.end(), found.begin(), found.end());
    return found;
}

// A port that cannot be asked is no port without a camera; each reason is said when it begins.
void GenCpInterfaceDev::TellFailures(const std::vector<std::string>& failures) {
    std::set<std::string> before(failures.begin(), failures.end());
    {
        MutexLock lock(knownMutex_);
        before.swap(failures_);
    }
    for (const std::string& failure : failures)
        if (before.count(failure) == 0)
            VxLoggerLog(LogLevel::Warning, "SDK", "%s: not asked for a camera: %s", Name().c_str(),
                        failure.c_str());
}

StatusCode GenCpInterfaceDev::AddSubDevice(const std::string& ports) {
    if (ports.empty() || ports.front() != '/')
        return Status::NotSupported;
    std::vector<std::string> templates;
    CLPortA::GetDeviceIDTemplates(templates);
    const std::vector<std::string> listed = CLProtocol::PortList::Expand(ports);
    const std::vector<std::string> free = Free({listed.begin(), listed.end()});
    std::vector<std::string> failures;
    const Devices found = Probe(free, templates.front(), FirstProbeMs, failures);
    AddKnownDevices(found);
    if (!found.empty())
        return Status::Ok;
    std::string text =
        Name() + ": no camera answered at " + std::to_string(free.size() - failures.size()) + " serial ports";
    for (const std::string& failure : failures)
        text += "; " + failure;
    return SetLastFailure(Status::NotFound, text);
}

StatusCode GenCpInterfaceDev::SubDeviceLost(IDevice* device) {
    Devices lost; // released after the lock is gone
    if (dynamic_cast<GenCpDevice*>(device) != nullptr) {
        MutexLock lock(knownMutex_);
        for (auto known = known_.begin(); known != known_.end();) {
            const auto next = std::next(known);
            if (known->get() == device)
                lost.splice(lost.end(), known_, known);
            known = next;
        }
    }
    return InterfaceDevAbs::SubDeviceLost(device);
}

} // namespace VX3
