#include "library/Transports.h"

#include "cameralink/GenCpManager.h"
#include "gentl/GenTLInterfaceDev.h"
#include "gentl/MiscDeviceManager.h"
#include "gev/GevManager.h"
#include "grabber/KdManager.h"
#include "library/PublishFound.h"
#include "remote/RemoteDeviceManager.h"
#include "simulated/VirtualManager.h"

namespace VX3 {

namespace {

template <typename Manager>
std::unique_ptr<IManager> Make(const char* name) {
    return std::make_unique<Manager>(name);
}

// What its interfaces find is published where the configuration wants that.
std::unique_ptr<IManager> MakeGenTL(const char* name) {
    GenTLInterfaceDev::Observe(PublishFound);
    return Make<MiscDeviceManager>(name);
}

} // namespace

const TransportTable& Transports() {
    static const bool observed = [] {
        GenTLInterfaceDev::Observe(PublishFound);
        return true;
    }();
    (void)observed;
    static const TransportTable table{
        {IntfDevType::Virtual, "ManagerAll Virtual", Make<VirtualManager>},
        {IntfDevType::GigEVision, "ManagerAll GigE", Make<GevManager>},
        {IntfDevType::Grabber, "ManagerAll KD", Make<KdManager>},
        {IntfDevType::GenCP, "ManagerAll GenCP", Make<GenCpManager>},
        {IntfDevType::Misc, "ManagerAll Misc", MakeGenTL},
        {IntfDevType::Remote, "ManagerAll Remote", Make<RemoteDeviceManager>},
    };
    return table;
}

} // namespace VX3
