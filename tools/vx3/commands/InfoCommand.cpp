// vx3 info: everything that is known of one camera without changing it.
#include "base/Console.h"
#include "base/ExitCode.h"
#include "commands/Commands.h"
#include "search/CameraSearch.h"
#include "search/Connection.h"
#include "vx3/core/Utilities.h"

#include <cstdio>
#include <optional>

namespace VX3::Tool {

namespace {

std::string MacText(const GevDeviceAddress& address) {
    char text[24];
    const unsigned int high = address.macHigh;
    const unsigned int low = address.macLow;
    std::snprintf(text, sizeof(text), "%02x:%02x:%02x:%02x:%02x:%02x", (high >> 8) & 0xFF, high & 0xFF,
                  (low >> 24) & 0xFF, (low >> 16) & 0xFF, (low >> 8) & 0xFF, low & 0xFF);
    return text;
}

void AddIdentity(Json& json, const IDevice& camera) {
    json["vendor"] = camera.VendorName();
    json["model"] = camera.ModelName();
    json["version"] = camera.DeviceVersion();
    json["serial"] = camera.SerialNumber();
    json["manufacturer_info"] = camera.ManufacturerInfo();
    json["user_name"] = camera.UserName();
}

void AddAddress(Json& json, const IDevice& camera) {
    GevDeviceAddress address;
    if (camera.GetIpAddress(&address) != Status::Ok)
        return;
    json["address"] = Ipv4Text(address.ip);
    json["mask"] = Ipv4Text(address.mask);
    json["gateway"] = Ipv4Text(address.gateway);
    json["mac"] = MacText(address);
    json["host_address"] = Ipv4Text(address.hostIp);
    json["host_mask"] = Ipv4Text(address.hostMask);
}

void AddFeatureValue(Json& json, const char* key, IConfigurer& configurer, const char* feature) {
    const GenICam::NodeValue value = configurer.GetNodeValue(feature);
    if (value.GetType() == GenICam::NodeValue::Type::Integer)
        json[key] = value.AsInteger();
}

class InfoCommand : public Command {
public:
    InfoCommand(Arguments& arguments, const GlobalOptions& options)
        : Command(arguments, options, "info", "Show what is known of a camera") {
        AddCameraArgument(camera_);
        Args().Flag("--no-connect", noConnect_, "Show only what discovery told");
    }

    int Run() override {
        CameraSearch search(Options());
        const FoundCamera found = search.Find(camera_);
        IDevice& camera = *found.camera;
        Json json = {{"name", camera.Name()},
                     {"unique_name", camera.UniqueName()},
                     {"state", StateText(camera.DeviceState())},
                     {"transport", TransportName(camera)},
                     {"interface", found.interfaceDevice->Name()}};
        AddAddress(json, camera);
        const bool connect = !noConnect_ && camera.DeviceState() != DEVICE_STATE::Unreachable;
        std::optional<Connection> connection;
        if (connect)
            connection.emplace(found, Use::Read);
        AddIdentity(json, camera);
        if (connection)
            AddConnected(json, *connection);
        for (const auto& [key, value] : camera.GetInfo())
            json["discovery"][key] = value;
        Print(json);
        return Exit::Done;
    }

private:
    static void AddConnected(Json& json, const Connection& connection) {
        if (connection.Device().Access() == DeviceAccess::Control)
            json["streams"] = connection.Device().StreamCnt();
        const std::string failure = connection.Device().FeaturesFailure();
        if (!failure.empty()) {
            json["features_failure"] = failure;
            return;
        }
        IConfigurer& configurer = connection.Configurer();
        AddFeatureValue(json, "width", configurer, "Width");
        AddFeatureValue(json, "height", configurer, "Height");
        AddFeatureValue(json, "payload_size", configurer, "PayloadSize");
        AddFeatureValue(json, "packet_size", configurer, "GevSCPSPacketSize");
        if (IXmlData* description = configurer.GetXmlData())
            json["description"] = description->GetXmlName();
        if (const auto nodes = configurer.GetNodeMap())
            json["nodes"] = nodes->GetNumNodes();
    }

    void Print(const Json& json) const {
        if (Options().json) {
            Console::Instance().PrintJson(json);
            return;
        }
        for (const auto& [key, value] : json.items()) {
            if (value.is_object() || value == "")
                continue;
            const std::string text = value.is_string() ? value.get<std::string>() : value.dump();
            Console::Instance().Out() << Padded(key, 18) << ' ' << Printable(text) << '\n';
        }
    }

    std::string camera_;
    bool noConnect_ = false;
};

} // namespace

std::unique_ptr<Command> CreateInfoCommand(Arguments& arguments, const GlobalOptions& options) {
    return std::make_unique<InfoCommand>(arguments, options);
}

} // namespace VX3::Tool
