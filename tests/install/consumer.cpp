// The class interface from the installed tree only.
#include <cstdio>
#include <vx3/library/System.h>

int main() {
    const auto manager = VX3::System::CreateManager(static_cast<unsigned int>(VX3::IntfDevType::Virtual));
    std::printf("vx3 %s, %d interface device(s)\n", VX3::System::SDKVersion().c_str(),
                manager->GetDevices(VX3::IntfDevType::All));
    return manager->GetDevices(VX3::IntfDevType::All) == 1 ? 0 : 1;
}
