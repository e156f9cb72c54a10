// A map of nodes over one device, and what its description tells about that device.
#pragma once

#include "GenApi/IPort.h"
#include "GenApi/IValues.h"
#include "GenApi/Lock.h"

namespace GenApi_3_2 {

class INodeMap {
public:
    virtual void GetNodes(NodeList_t& Nodes) const = 0;
    // Null when there is no node of that name; the names of entries are "EnumEntry_Enumeration_Entry".
    virtual INode* GetNode(const gcstring& Name) const = 0;
    virtual void InvalidateNodes() const = 0;
    // False when the description has no port of that name. The port must outlive the map or be replaced.
    virtual bool Connect(IPort* pPort, const gcstring& PortName) const = 0;
    virtual bool Connect(IPort* pPort) const = 0;
    virtual gcstring GetDeviceName() const = 0;
    // Milliseconds passed since the last call. Returns at once where no node has a polling time.
    virtual void Poll(std::int64_t ElapsedTime) = 0;
    virtual CLock& GetLock() const = 0;
    virtual std::uint64_t GetNumNodes() const = 0;

protected:
    virtual ~INodeMap() = default;
};

class IDeviceInfo {
public:
    virtual gcstring GetModelName() = 0;
    virtual gcstring GetVendorName() = 0;
    virtual gcstring GetToolTip() = 0;
    virtual gcstring GetStandardNameSpace() = 0;
    virtual void GetGenApiVersion(Version_t& Version, std::uint16_t& Build) = 0;
    virtual void GetSchemaVersion(Version_t& Version) = 0;
    virtual void GetDeviceVersion(Version_t& Version) = 0;
    virtual gcstring GetProductGuid() = 0;
    virtual gcstring GetVersionGuid() = 0;

protected:
    virtual ~IDeviceInfo() = default;
};

} // namespace GenApi_3_2
