// Lists every camera the library can find, with what it says about itself.
#include <cstdio>
#include <cstdlib>
#include <vx3/library/CameraSearch.h>
#include <vx3/library/System.h>

int main(int argc, char** argv) {
    const unsigned long families = argc > 1 ? std::strtoul(argv[1], nullptr, 0) : 65535;
    const auto manager = VX3::System::CreateManager(static_cast<unsigned int>(families));
    for (const auto& camera : VX3::FindCameras(*manager, std::chrono::seconds(5))) {
        const VX3::IDevice* behind = camera->Parent();
        std::printf("%s behind %s\n", camera->Name().c_str(),
                    behind != nullptr ? behind->Name().c_str() : "nothing");
        for (const auto& [key, value] : camera->GetInfo())
            std::printf("    %s: %s\n", key.c_str(), value.c_str());
    }
    return 0;
}
