// A CameraLink camera: its features over the serial link, its images through the frame grabber. Which camera
// is connected to which card nobody can ask, so the configuration beside the library says it:
//   [CameraLinkPair]
//   Camera = Linea(S0042)
//   Card = frame0@CameraLink-TRX(xilinx)#0
#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>
#include <vx3/core/LastFailure.h>
#include <vx3/genicam/IConfigurer.h>
#include <vx3/library/CameraSearch.h>
#include <vx3/library/System.h>

using namespace std::chrono_literals;

static int Fail(const char* what) {
    std::fprintf(stderr, "%s: %s\n", what, VX3::LastFailure().text.c_str());
    return 1;
}

static bool Execute(VX3::IConfigurer& features, const char* command) {
    VX3::GenICam::NodeValue execute(VX3::GenICam::CommandValue::Execute);
    return !VX3::Failed(features.SetNodeValue(command, execute));
}

int main() {
    const std::string cameraName = VX3::System::DefaultSystemConfigString("Camera", "CameraLinkPair");
    const std::string cardName = VX3::System::DefaultSystemConfigString("Card", "CameraLinkPair");
    const auto manager = VX3::System::CreateManager(VX3::IntfDevType::GenCP | VX3::IntfDevType::Grabber);
    const auto camera = VX3::FindCamera(*manager, cameraName, 10s);
    const auto card = VX3::FindCamera(*manager, cardName, 10s);
    if (!camera || VX3::Failed(camera->Connect()) || camera->GetConfigurer() == nullptr)
        return Fail("camera");
    if (!card || VX3::Failed(card->Connect()) || card->GetConfigurer() == nullptr)
        return Fail("card");
    VX3::IConfigurer& features = *camera->GetConfigurer();
    VX3::IConfigurer& capture = *card->GetConfigurer();

    // The card must know what the camera sends.
    if (VX3::Failed(features.SetNodeValue("Width", 640U)) ||
        VX3::Failed(features.SetNodeValue("Height", 480U)))
        return Fail("size");
    for (const char* name : {"Width", "Height"}) {
        auto value = features.GetNodeValue(name);
        if (VX3::Failed(capture.SetNodeValue(name, value)))
            return Fail(name);
    }
    if (VX3::Failed(capture.SetNodeValue("PixelFormat", static_cast<unsigned int>(VX3::Mono8))))
        return Fail("PixelFormat");

    const auto stream = card->ShareStream(0);
    std::atomic<unsigned int> frames{0};
    const auto onImage = [&](std::shared_ptr<VX3::IImage> image, VX3::IDevice*, unsigned, unsigned, void*) {
        if (image->GetImageInfo()->lostPackets == 0) // of segments: every part of the frame is there
            ++frames;
    };
    if (!stream || VX3::Failed(stream->Open(0, nullptr)) ||
        VX3::Failed(stream->Start(onImage, nullptr, 0, nullptr)))
        return Fail("stream"); // the card waits for the camera
    if (!Execute(features, "AcquisitionStart"))
        return Fail("AcquisitionStart");
    for (int waited = 0; frames < 10 && waited < 100; ++waited)
        std::this_thread::sleep_for(100ms);
    (void)Execute(features, "AcquisitionStop"); // a camera that does not take it is let go below
    stream->Stop();
    stream->Close();
    std::printf("%s through %s: %u frames\n", camera->Name().c_str(), card->Name().c_str(), frames.load());
    card->DisConnect();
    camera->DisConnect();
    return frames >= 10 ? 0 : 1;
}
