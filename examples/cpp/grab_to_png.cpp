// Streams frames from the first virtual camera and saves them as PNG pictures: grab_to_png [FOLDER [COUNT]]
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <vx3/core/Status.h>
#include <vx3/library/CameraSearch.h>
#include <vx3/library/System.h>
#include <vx3/processing/SaveLoadImage.h>

int main(int argc, char** argv) {
    const std::string folder = argc > 1 ? argv[1] : ".";
    const int wanted = argc > 2 ? std::atoi(argv[2]) : 5;
    const auto manager = VX3::System::CreateManager(VX3::IntfDevType::Virtual);
    const auto camera = VX3::FindCamera(*manager, "", std::chrono::seconds(5));
    if (!camera || VX3::Failed(camera->Connect())) {
        std::fprintf(stderr, "no camera\n");
        return 1;
    }

    std::mutex mutex;
    std::condition_variable done;
    int seen = 0;
    int failed = 0;
    // Runs on the stream's delivery thread. The image goes back to its pool when the last copy of the pointer
    // goes.
    const auto onImage = [&](std::shared_ptr<VX3::IImage> image, VX3::IDevice*, unsigned int, unsigned int,
                             void*) {
        const std::lock_guard<std::mutex> lock(mutex);
        if (seen >= wanted)
            return;
        const std::string path = folder + "/frame_" + std::to_string(image->GetImageInfo()->blockId) + ".png";
        const auto status = static_cast<VX3::StatusCode>(VX3::SaveLoadImage::Save2File(image, path, 0));
        if (VX3::Failed(status)) {
            std::fprintf(stderr, "%s: %s\n", path.c_str(), VX3::StatusText(status).c_str());
            ++failed;
        } else {
            std::printf("%s\n", path.c_str());
        }
        if (++seen == wanted)
            done.notify_one();
    };

    VX3::IStream* stream = camera->GetStream(0);
    VX3::StatusCode status = stream->Open(8, nullptr);
    if (!VX3::Failed(status))
        status = stream->Start(onImage, nullptr, 0, nullptr);
    if (VX3::Failed(status)) {
        std::fprintf(stderr, "the stream does not start: %s\n", VX3::StatusText(status).c_str());
        return 1;
    }
    {
        std::unique_lock<std::mutex> lock(mutex);
        done.wait(lock, [&] { return seen >= wanted; });
    }
    (void)stream->Stop();
    (void)stream->Close();
    (void)camera->DisConnect();
    return failed == 0 ? 0 : 1;
}
