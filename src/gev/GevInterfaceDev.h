// One host network interface: finds the GigE Vision cameras behind it, from every address it has. Owned by
// its manager; owns its cameras. Enumeration runs on the caller's thread or the monitor's; every round has
// sockets of its own, and takes as long as discovery alone, however many cameras stay silent when asked more.
#pragma once

#include "device/InterfaceDevAbs.h"
#include "gev/GevDevice.h"
#include "gev/control/GevDiscoveryRound.h"
#include "vx3/core/Mutex.h"
#include "vx3/gev/NetParam.h"

#include <atomic>
#include <cstdint>
#include <list>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace VX3 {

class GevInterfaceDev : public InterfaceDevAbs {
public:
    // How cameras are named: model(serial) for 0 and any other value, model@ip for 1, model(serial)@ip for 2,
    // model for 3.
    enum NameRule : std::uint32_t { ModelSerial = 0, ModelIp = 1, ModelSerialIp = 2, Model = 3 };

    GevInterfaceDev(const std::string& name, const std::string& description, const std::string& id,
                    std::uint32_t macHigh, std::uint32_t macLow);
    ~GevInterfaceDev() override;

    std::string UniqueName() const override { return Name(); }
    std::string FriendlyName() const override { return Name(); }
    std::list<std::pair<std::string, std::string>> GetInfo() const override;

    std::list<std::shared_ptr<IDevice>> EnumSubDevices(unsigned int timeoutMs) override;
    // One round from one address; target 0 broadcasts. Takes a second after the last camera was heard of, and
    // three at most.
    virtual std::list<std::shared_ptr<IDevice>> EnumSubDevices(const NET_PARAM& param, std::uint32_t target);
    // A camera that broadcasts do not reach, by its dotted address. It is asked again in every later round.
    // NotFound: not an address, or nobody answers there. NoIpAddress: this interface has none.
    StatusCode AddSubDevice(const std::string& text) override;

    void SetNameRule(std::uint32_t rule) { nameRule_ = rule; }
    std::uint32_t MacHigh() const { return macHigh_; }
    std::uint32_t MacLow() const { return macLow_; }
    static std::string DeviceName(const GevDiscoveryInfo& info, std::uint32_t rule);
    // Up to four decimal numbers between dots, the first the most significant byte; 0 for no address.
    static std::uint32_t ParseAddress(const std::string& text);

protected:
    GevInterfaceDev(unsigned int typeId, const std::string& name, const std::string& description,
                    const std::string& id, std::uint32_t macHigh, std::uint32_t macLow);

    StatusCode ConnectP() override { return Status::Ok; }
    StatusCode DisConnectP() override { return Status::Ok; }
    // Where cameras are asked.
    virtual std::vector<std::uint16_t> Ports() const { return {Gvcp::Port}; }
    // A device for every camera that answers these questions, in order of arrival; not for what this process
    // publishes itself.
    virtual std::list<std::shared_ptr<IDevice>> Discover(std::vector<GevDiscoveryRound::Question> questions);
    virtual std::shared_ptr<IDevice> MakeDevice(const std::string& name, const GevDiscovered& found,
                                                bool noFilter);
    // Of a camera that discovery found.
    static DEVICE_STATE StateOf(GevDiscovered::Control control);

private:
    bool Knows(std::uint32_t address) VX3_EXCLUDES(addedMutex_);
    std::set<std::uint32_t> AddedAddresses() const VX3_EXCLUDES(addedMutex_);

    std::atomic<std::uint32_t> nameRule_{ModelSerial};
    std::atomic<std::uint16_t> requestCounter_{1};
    const std::string description_;
    const std::string id_; // by which its addresses are looked up
    const std::uint32_t macHigh_;
    const std::uint32_t macLow_;
    mutable Mutex addedMutex_;
    std::set<std::uint32_t> added_ VX3_GUARDED_BY(addedMutex_);
};

} // namespace VX3
