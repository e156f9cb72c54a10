// An interface that a producer reports, as an interface device: its registers, and the cameras behind it.
// Owned by the manager, which finds it again at every enumeration.
#pragma once

#include "device/InterfaceDevAbs.h"
#include "gentl/GenTLInterface.h"

#include <functional>
#include <list>
#include <memory>
#include <string>
#include <utility>

namespace VX3 {

class GenTLInterfaceDev final : public InterfaceDevAbs {
public:
    // Opens the interface. A producer that refuses leaves it without cameras, and the log says why.
    GenTLInterfaceDev(std::shared_ptr<GenTLAPI> producer, const char* id, const char* displayName);
    ~GenTLInterfaceDev() override;

    StatusCode ReadPort(unsigned long long address, unsigned char* buffer, unsigned int length) override;
    StatusCode WritePort(unsigned long long address, const unsigned char* buffer,
                         unsigned int length) override;
    StatusCode GetXmlUrl(std::string& url) override;
    bool IsConfigurable() const override { return true; }
    std::list<std::shared_ptr<IDevice>> EnumSubDevices(unsigned int timeoutMs) override
        VX3_EXCLUDES(foundMutex_);
    // A connected camera that the producer lists no more is lost.
    SubDeviceEvents UpdateSubDevicesA(std::list<std::shared_ptr<IDevice>> found, bool strict) override;
    std::list<std::pair<std::string, std::string>> GetInfo() const override;
    std::string UniqueName() const override { return id_; }

    const std::shared_ptr<GenTLInterface>& Interface() const { return interface_; }

    // Told of every camera lost, then of every one found, of all producers, on the thread that looked for
    // them: while the configuration key "CreateRemoteDevice" is true. For whoever publishes cameras to other
    // hosts.
    using Observer = std::function<void(SUB_DEVICE_EVENT event, const std::shared_ptr<IDevice>& camera)>;
    static void Observe(Observer observer);

protected:
    // It is opened when it is made.
    StatusCode ConnectP() override { return Status::Ok; }
    StatusCode DisConnectP() override { return Status::Ok; }
    StatusCode CreateConfigurer() override;

private:
    const std::shared_ptr<GenTLAPI> producer_;
    const std::string id_;
    const std::shared_ptr<GenTLInterface> interface_; // null when the producer did not return
    Mutex foundMutex_;
    std::list<std::shared_ptr<IDevice>> found_ VX3_GUARDED_BY(foundMutex_); // by the last round
};

} // namespace VX3
