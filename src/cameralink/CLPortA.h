// The library's thin adapter over the serial layer of CameraLink: lists and probes ports, and holds one
// connected port for a camera, which owns it. Failures of the serial layer pass through as its exceptions.
// Any thread.
#pragma once

#include "vx3/core/Mutex.h"

#include <chrono>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <vector>

namespace CLProtocol {
class CCLPort;
}

namespace VX3 {

class ISerialAdapterA; // foreign serial ports; none can be registered

class CLPortA {
public:
    CLPortA();
    virtual ~CLPortA();
    CLPortA(const CLPortA&) = delete;
    CLPortA& operator=(const CLPortA&) = delete;

    // Operations that nobody implements throw a text, a const char*, which says so.
    virtual int GetAccessMode() const;
    // Without a connected port nothing is transferred.
    virtual void Read(void* buffer, unsigned long long address, unsigned int length);
    virtual void Write(const void* buffer, unsigned long long address, unsigned int length);
    virtual int GetPrinicipalInterfaceType() const;
    virtual int SerialRead(unsigned char* buffer, unsigned int* length, unsigned int timeoutMs);
    virtual int SerialWrite(unsigned char* buffer, unsigned int* length, unsigned int timeoutMs);
    virtual int GetSupportedBaudRates(unsigned int* rates);

    // Paths and patterns of the ports that may be asked; process-wide.
    static void SetPorts(const std::string& patterns);
    static void GetPortIDs(std::list<std::string>& ports);
    static void GetDeviceIDTemplates(std::vector<std::string>& templates);
    // The id of the device found, or an empty text after `timeoutMs` at most.
    static std::string ProbeDevice(const std::string& portId, const std::string& deviceIdTemplate,
                                   unsigned int timeoutMs);
    // The same; ends early once `abandoned` is true.
    static std::string ProbeDevice(const std::string& portId, const std::string& deviceIdTemplate,
                                   unsigned int timeoutMs, std::function<bool()> abandoned);
    // Replaces a device id by its short form.
    static void GetShortDeviceId(std::string& deviceId);

    int Connect(const std::string& portId, const std::string& deviceId) VX3_EXCLUDES(mutex_);
    int Connect(const std::string& portId); // does nothing, 0
    void DisConnect() VX3_EXCLUDES(mutex_);
    void GetXMLIDs(std::vector<std::string>& ids);
    std::string GetXML(std::string xmlId, bool fromDevice);
    std::string GetXML(bool fromDevice); // the first of the ids

    // These do nothing.
    void StopProbing(unsigned int timeoutMs);
    void SetSerialTimeOut(unsigned int timeoutMs);
    void Terminate();
    void UnRegisterSerials();
    void UnRegisterSerial(const std::string& portId);
    std::string RegisterSerial(const std::string& portId, ISerialAdapterA* adapter);
    void* GetPort(const std::string& portId);

    // These throw.
    std::string MakeURLfromXMLID(const std::string& xmlId) const;
    unsigned int GetSerialTimeOut() const;
    void SetDeviceBauderate(unsigned int rate);
    unsigned int GetDeviceBauderate() const;
    unsigned int SupportedBaudrates() const;
    void StorePortIDDeviceIDPairs() const;
    void RetrievePortIDDeviceIDPairs() const;
    void GetEvent() const;
    void DeleteXMLDownload() const;

    bool IsConnected() const { return Port() != nullptr; }
    // Ends what other threads wait for, within 100 ms; the port is of no more use afterwards. While it
    // connects, too.
    void Abandon();
    // The device has gone: frees the port without a word to it.
    void Lose() VX3_EXCLUDES(mutex_);
    // Reads a register when the device was not heard for that long.
    void KeepAlive(std::chrono::milliseconds silence);
    // So much silence the device bears; 0: any.
    std::chrono::milliseconds HeartbeatTimeout() const;
    // What the serial layer did otherwise than it should, in words.
    std::string TakeNote();

private:
    std::shared_ptr<CLProtocol::CCLPort> Port() const VX3_EXCLUDES(mutex_);
    std::shared_ptr<CLProtocol::CCLPort> Take() VX3_EXCLUDES(mutex_);

    mutable Mutex mutex_;
    std::shared_ptr<CLProtocol::CCLPort> port_ VX3_GUARDED_BY(mutex_);
    std::shared_ptr<CLProtocol::CCLPort> connecting_ VX3_GUARDED_BY(mutex_);
};

} // namespace VX3
