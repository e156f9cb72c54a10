// Prints a live histogram of a virtual camera's frames as text: live_histogram [FRAMES]
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vx3/library/CameraSearch.h>
#include <vx3/library/System.h>

static constexpr unsigned int Columns = 32;

static void Print(const VX3::HistogramData& histogram) {
    static const char* const bars[] = {" ", "▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
    unsigned long long sums[Columns] = {};
    for (unsigned int bin = 0; bin < histogram.Bins(); ++bin)
        sums[bin * Columns / histogram.Bins()] += histogram.Data()[bin];
    const auto top = std::max(*std::max_element(sums, sums + Columns), 1ULL);
    std::string line;
    for (const auto sum : sums)
        line += bars[(sum * 8 + top - 1) / top];
    const VX3::StatisticsInfo statistics = histogram.CreateStatistics(0, histogram.Bins());
    std::printf("|%s| min %3u max %3u mean %6.2f sd %6.2f\n", line.c_str(), statistics.min, statistics.max,
                statistics.mean, statistics.stddev);
}

int main(int argc, char** argv) {
    const int frames = argc > 1 ? std::atoi(argv[1]) : 5;
    const auto manager = VX3::System::CreateManager(VX3::IntfDevType::Virtual);
    const auto camera = VX3::FindCamera(*manager, "", std::chrono::seconds(5));
    if (!camera || VX3::Failed(camera->Connect()))
        return 1;
    VX3::IStream* stream = camera->GetStream(0);
    if (VX3::Failed(stream->Open(8, nullptr)) || VX3::Failed(stream->Start(nullptr, nullptr, 0, nullptr)))
        return 1;
    int shown = 0;
    for (; shown < frames; ++shown) {
        const auto image = stream->Snap(2000, VX3::SnapMode::Default);
        if (!image)
            break;
        const VX3::ROIRect centre{100, 100, 200, 200};
        for (const auto& channel : image->CreateHistogram(&centre, 0))
            Print(channel.second);
    }
    (void)stream->Stop();
    (void)stream->Close();
    (void)camera->DisConnect();
    return shown == frames ? 0 : 1;
}
