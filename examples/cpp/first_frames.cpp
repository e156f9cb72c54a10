#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>
#include <vx3/core/LastFailure.h>
#include <vx3/genicam/IConfigurer.h>
#include <vx3/library/CameraSearch.h>
#include <vx3/library/System.h>
#include <vx3/processing/SaveLoadImage.h>

using namespace std::chrono_literals;

static int Fail(const char* what) {
    std::fprintf(stderr, "%s: %s\n", what, VX3::LastFailure().text.c_str());
    return 1;
}

int main(int argc, char** argv) {
    const auto manager = VX3::System::CreateManager(VX3::IntfDevType::All);
    const auto camera = VX3::FindCamera(*manager, argc > 1 ? argv[1] : "", 5s);
    if (!camera || VX3::Failed(camera->Connect()) || !camera->GetConfigurer())
        return Fail("camera");
    if (VX3::Failed(camera->GetConfigurer()->SetNodeValue("Width", 320)))
        return Fail("Width");
    const auto stream = camera->ShareStream(0);
    if (!stream || VX3::Failed(stream->Open(8, nullptr)))
        return Fail("stream");
    std::atomic<int> frames{0};
    const auto onImage = [&](std::shared_ptr<VX3::IImage> image, VX3::IDevice*, unsigned, unsigned, void*) {
        frames += VX3::SaveLoadImage::Save2File(image, "frame.png", 0) == 0; // on the stream's own thread
    };
    if (VX3::Failed(stream->Start(onImage, nullptr, 0, nullptr)))
        return Fail("start");
    for (int waited = 0; frames < 5 && waited < 100; ++waited)
        std::this_thread::sleep_for(100ms);
    stream->Stop();
    stream->Close(); // onImage is not called after this
    camera->DisConnect();
    std::printf("%d frames saved\n", frames.load());
    return frames >= 5 ? 0 : 1;
}
