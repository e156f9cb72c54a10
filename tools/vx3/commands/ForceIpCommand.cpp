// vx3 force-ip: gives a camera an address until its next restart, also when it is in another subnet.
#include "base/Console.h"
#include "base/ExitCode.h"
#include "base/ToolError.h"
#include "commands/Commands.h"
#include "search/CameraSearch.h"
#include "vx3/core/Utilities.h"

#include <arpa/inet.h>

namespace VX3::Tool {

namespace {

std::string IsAddress(const std::string& text) {
    in_addr address = {};
    return inet_pton(AF_INET, text.c_str(), &address) == 1 ? "" : "\"" + text + "\" is no IPv4 address";
}

std::uint32_t ParseAddress(const std::string& text) {
    in_addr address = {};
    inet_pton(AF_INET, text.c_str(), &address);
    return ntohl(address.s_addr);
}

class ForceIpCommand : public Command {
public:
    ForceIpCommand(Arguments& arguments, const GlobalOptions& options)
        : Command(arguments, options, "force-ip", "Give a GigE Vision camera an address until it restarts") {
        AddCameraArgument(camera_);
        Args().Add("ADDRESS", address_, "The camera's new address").Required().Check(IsAddress);
        Args().Add("MASK", mask_, "Its subnet mask (default: the host interface's)").Check(IsAddress);
        Args().Add("GATEWAY", gateway_, "Its gateway (default 0.0.0.0)").Check(IsAddress);
    }

    int Run() override {
        std::string name;
        {
            CameraSearch search(Options());
            const FoundCamera found = search.Find(camera_);
            name = found.camera->Name();
            Force(found);
        }
        return Verify(name);
    }

private:
    void Force(const FoundCamera& found) const {
        GevDeviceAddress settings;
        StatusCode code = found.camera->GetIpAddress(&settings);
        if (Failed(code))
            throw ToolError(Describe(found) + " has no address that could be set", code);
        settings.mask = mask_.empty() ? settings.hostMask : ParseAddress(mask_);
        settings.ip = ParseAddress(address_);
        settings.gateway = ParseAddress(gateway_);
        code = found.camera->SetIpAddress(&settings);
        // Cameras may restart their network before they answer: only the next look tells.
        if (Failed(code) && code != Status::TimeOut)
            throw ToolError(Describe(found) + " refused the address", code);
    }

    // A second, fresh look.
    int Verify(const std::string& name) const {
        CameraSearch search(Options());
        for (const FoundCamera& found : search.Cameras())
            if (found.camera->Name() == name && AddressOf(*found.camera) == address_) {
                if (Options().json)
                    Console::Instance().PrintJson({{"name", name}, {"address", address_}});
                else
                    Console::Instance().Out() << Describe(found) << '\n';
                return Exit::Done;
            }
        throw ToolError(Printable(name) + " did not appear at " + address_, Status::TimeOut);
    }

    std::string camera_;
    std::string address_;
    std::string mask_;
    std::string gateway_ = "0.0.0.0";
};

} // namespace

std::unique_ptr<Command> CreateForceIpCommand(Arguments& arguments, const GlobalOptions& options) {
    return std::make_unique<ForceIpCommand>(arguments, options);
}

} // namespace VX3::Tool
