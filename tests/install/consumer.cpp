// The class interface from the installed tree only.
#include <cstdio>
#include <vx3/library/System.h>
#include <vx3/simulated/Camera.h>

// A client's own camera, up, told a fault, and down again.
static bool CameraWorks() {
    VX3::Simulated::CameraConfig config;
    config.width = 320;
    VX3::Simulated::Camera camera(config);
    VX3::Simulated::StreamScript script;
    script.dropProbability = 0.01;
    const bool up = camera.Start() == VX3::Status::Ok && camera.GvcpPort() == 3956 &&
                    camera.SetStreamScript(script) == VX3::Status::Ok &&
                    camera.Register(VX3::Simulated::CameraRegister::Width) == 320;
    camera.Stop();
    return up && !camera.IsRunning();
}

int main() {
    const auto manager = VX3::System::CreateManager(static_cast<unsigned int>(VX3::IntfDevType::Virtual));
    std::printf("vx3 %s, %d interface device(s)\n", VX3::System::SDKVersion().c_str(),
                manager->GetDevices(VX3::IntfDevType::All));
    return manager->GetDevices(VX3::IntfDevType::All) == 1 && CameraWorks() ? 0 : 1;
}
