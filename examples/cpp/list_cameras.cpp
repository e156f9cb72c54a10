// Lists every camera the library can find, with what it says about itself.
#include "FirstCamera.h"

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
    const unsigned long families = argc > 1 ? std::strtoul(argv[1], nullptr, 0) : 65535;
    const auto manager = VX3::System::CreateManager(static_cast<unsigned int>(families));
    for (unsigned int i = 0; auto device = manager->GetDevice(i, VX3::IntfDevType::All); ++i) {
        std::printf("%s\n", device->Name().c_str());
        for (const auto& camera : FindCameras(*device, std::chrono::milliseconds(2000))) {
            std::printf("  %s\n", camera->Name().c_str());
            for (const auto& [key, value] : camera->GetInfo())
                std::printf("    %s: %s\n", key.c_str(), value.c_str());
        }
    }
    return 0;
}
