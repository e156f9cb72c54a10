// Reads and writes features of the first virtual camera, by name and through the node map.
#include <cstdio>
#include <exception>
#include <vx3/genicam/GenICamPointer.h>
#include <vx3/genicam/IConfigurer.h>
#include <vx3/library/CameraSearch.h>
#include <vx3/library/System.h>

using IntegerPointer = VX3::GenICam::GenICamPointer<VX3::GenICam::IInteger, VX3::GenICam::INode>;

static void ShowInteger(const VX3::GenICam::INodeMap& map, const char* name) {
    const IntegerPointer node(map.GetNode(name));
    if (node)
        std::printf("%s = %ld (%ld .. %ld step %ld)\n", name, node->GetValue(false, false), node->GetMin(),
                    node->GetMax(), node->GetInc());
}

int main() {
    const auto manager = VX3::System::CreateManager(VX3::IntfDevType::Virtual);
    const auto camera = VX3::FindCamera(*manager, "", std::chrono::seconds(5));
    if (!camera || VX3::Failed(camera->Connect()) || camera->GetConfigurer() == nullptr) {
        std::fprintf(stderr, "no camera\n");
        return 1;
    }
    VX3::IConfigurer& features = *camera->GetConfigurer();
    const auto map = features.GetNodeMap();
    int result = 1;
    // The node interfaces throw what the description's rules forbid; access by name returns codes instead.
    try {
        std::printf("vendor: %s\n", camera->VendorName().c_str());
        ShowInteger(*map, "Width");
        IntegerPointer(map->GetNode("Width"))->SetValue(203, true); // snapped onto the increment grid
        ShowInteger(*map, "Width");
        const VX3::StatusCode status = features.SetNodeValue("SensorWidth", 1U);
        std::printf("setting SensorWidth: %s\n", VX3::StatusText(status).c_str());
        result = status == VX3::Status::NodeFailed ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
    }
    (void)camera->DisConnect();
    return result;
}
