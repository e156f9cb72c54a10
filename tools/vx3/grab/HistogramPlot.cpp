#include "grab/HistogramPlot.h"

#include "base/Files.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

namespace VX3::Tool {

namespace {

constexpr int Width = 800;
constexpr int Height = 400;
constexpr int Left = 70;
constexpr int Right = 20;
constexpr int Top = 20;
constexpr int Bottom = 40;
constexpr int PlotWidth = Width - Left - Right;
constexpr int PlotHeight = Height - Top - Bottom;

const cv::Scalar Ink(60, 60, 60);

cv::Scalar Colour(PixelChannelID channel) {
    switch (channel) {
    case PixelChannelID::Red:
        return {40, 40, 210};
    case PixelChannelID::Green:
        return {40, 160, 40};
    case PixelChannelID::Blue:
        return {210, 80, 40};
    default:
        return Ink;
    }
}

void Label(cv::Mat& plot, const std::string& text, int x, int y) {
    cv::putText(plot, text, {x, y}, cv::FONT_HERSHEY_SIMPLEX, 0.4, Ink, 1, cv::LINE_AA);
}

// Decades of counts as horizontal lines, quarters of the range as vertical ones.
void DrawAxes(cv::Mat& plot, std::size_t bins, double logMost) {
    const cv::Scalar grid(225, 225, 225);
    for (int decade = 0; decade <= static_cast<int>(logMost); ++decade) {
        const int y = Top + PlotHeight - static_cast<int>(PlotHeight * decade / logMost);
        cv::line(plot, {Left, y}, {Left + PlotWidth, y}, grid);
        Label(plot, "1e" + std::to_string(decade), Left - 40, y + 4);
    }
    for (int quarter = 0; quarter <= 4; ++quarter) {
        const int x = Left + PlotWidth * quarter / 4;
        cv::line(plot, {x, Top}, {x, Top + PlotHeight}, grid);
        Label(plot, std::to_string((bins - 1) * static_cast<std::size_t>(quarter) / 4), x - 12,
              Top + PlotHeight + 18);
    }
    cv::rectangle(plot, {Left, Top, PlotWidth + 1, PlotHeight + 1}, Ink);
}

// The largest count of each column's bins, so that narrow peaks are seen.
void DrawCurve(cv::Mat& plot, const std::vector<std::uint64_t>& counts, double logMost,
               const cv::Scalar& colour) {
    cv::Point last;
    for (int column = 0; column < PlotWidth; ++column) {
        const std::size_t first = counts.size() * static_cast<std::size_t>(column) / PlotWidth;
        const std::size_t end =
            std::min(std::max(counts.size() * static_cast<std::size_t>(column + 1) / PlotWidth, first + 1),
                     counts.size());
        std::uint64_t most = 0;
        for (std::size_t i = first; i < end; ++i)
            most = std::max(most, counts[i]);
        const double level = most == 0 ? 0.0 : std::log10(static_cast<double>(most) + 1.0) / logMost;
        const cv::Point point(Left + column, Top + PlotHeight - static_cast<int>(PlotHeight * level));
        if (column > 0)
            cv::line(plot, last, point, colour, 1, cv::LINE_AA);
        last = point;
    }
}

} // namespace

std::string PlotHistogram(const ChannelCounts& counts, const std::string& path) {
    cv::Mat plot(Height, Width, CV_8UC3, cv::Scalar(255, 255, 255));
    std::uint64_t most = 1;
    std::size_t bins = 1;
    for (const auto& channel : counts) {
        bins = std::max(bins, channel.second.size());
        for (const std::uint64_t count : channel.second)
            most = std::max(most, count);
    }
    const double logMost = std::max(1.0, std::log10(static_cast<double>(most) + 1.0));
    DrawAxes(plot, bins, logMost);
    for (const auto& [channel, levels] : counts)
        if (!levels.empty())
            DrawCurve(plot, levels, logMost, Colour(channel));
    // Encoded in memory and written here: the codec does not notice a full disk.
    try {
        std::vector<unsigned char> bytes;
        if (!cv::imencode(".png", plot, bytes))
            return path + ": the plot cannot be encoded";
        WriteWholeFile(path, std::string(bytes.begin(), bytes.end()));
    } catch (const std::exception& error) { // OpenCV's and ours
        return error.what();
    }
    return {};
}

} // namespace VX3::Tool
