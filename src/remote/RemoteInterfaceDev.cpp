#include "remote/RemoteInterfaceDev.h"

#include "remote/RemoteDevice.h"
#include "vx3/core/IntfDevType.h"

namespace VX3 {

RemoteInterfaceDev::RemoteInterfaceDev(const std::string& name, const std::string& description,
                                       const std::string& id, std::uint32_t macHigh, std::uint32_t macLow)
    : GevInterfaceDev(TypeIds::InterfaceDevice + static_cast<unsigned int>(IntfDevType::Remote), name,
                      description, id, macHigh, macLow) {
    SetNameRule(ModelSerialIp);
}

RemoteInterfaceDev::~RemoteInterfaceDev() {
    Shutdown();
}

StatusCode RemoteInterfaceDev::AddSubDevice(const std::string&) {
    return Status::NotSupported;
}

std::shared_ptr<IDevice> RemoteInterfaceDev::MakeDevice(const std::string& name, const GevDiscovered& found,
                                                        bool noFilter) {
    return std::make_shared<RemoteDevice>(name, found.host, found.ack, this, found.port, noFilter,
                                          StateOf(found.control));
}

} // namespace VX3
