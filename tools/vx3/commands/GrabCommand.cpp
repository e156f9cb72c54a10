// vx3 grab: streams frames and saves them as pictures.
#include "base/Console.h"
#include "base/Interrupt.h"
#include "base/ToolError.h"
#include "commands/Assignments.h"
#include "commands/Commands.h"
#include "grab/GrabSession.h"
#include "grab/HistogramPlot.h"
#include "grab/ImageWriter.h"
#include "search/Connection.h"
#include "vx3/core/Utilities.h"
#include "vx3/gev/StreamPacketSize.h"

#include <filesystem>
#include <optional>

namespace VX3::Tool {

namespace {

unsigned int ParseLevel(const std::string& text) {
    std::size_t used = 0;
    unsigned long level = 65536;
    try {
        level = std::stoul(text, &used);
    } catch (const std::exception&) {
        used = 0;
    }
    if (used == 0 || used != text.size() || level > 65535)
        throw ToolError("\"" + text + "\" is not a level from 0 to 65535");
    return static_cast<unsigned int>(level);
}

// NAME or NAME:LOW:RANGE.
void ParseMap(const std::string& text, PictureOptions& picture) {
    const std::vector<std::string> parts = SplitString(text, ':');
    if (parts.size() != 1 && parts.size() != 3)
        throw ToolError("\"" + text + "\" is not NAME or NAME:LOW:RANGE");
    picture.map = true;
    picture.mapIndex = MapIndex(parts[0]);
    if (parts.size() == 3) {
        picture.mapLow = ParseLevel(parts[1]);
        picture.mapRange = ParseLevel(parts[2]);
    }
}

// Through the feature; where a description lacks it, through the transport.
void SetPacketSize(const Connection& connection, unsigned int size) {
    if (connection.Nodes()->GetNode("GevSCPSPacketSize") != nullptr) {
        Assign(connection, {"GevSCPSPacketSize", std::to_string(size)});
        return;
    }
    const StatusCode code = SetStreamPacketSize(connection.Device(), 0, size);
    if (code == Status::NotSupported)
        throw ToolError(Describe(connection.Found()) + " has no packet size");
    if (Failed(code))
        throw ToolError("the packet size could not be set", code);
}

class GrabCommand : public Command {
public:
    GrabCommand(Arguments& arguments, const GlobalOptions& options)
        : Command(arguments, options, "grab", "Stream frames and save them as pictures") {
        AddCameraArgument(camera_);
        Args()
            .Add("-n,--frames", limits_.frames, "Frames to grab; 0 until Ctrl-C (default 1)")
            .Check([](const std::string& text) { // a negative number would wrap
                const bool digits =
                    !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
                return digits ? std::string() : "\"" + text + "\" is not a number of frames";
            });
        Args().Add("-o,--output", writer_.directory, "Directory of the pictures (default .)");
        Args()
            .Add("--format", writer_.picture.format, "Picture format (default png)")
            .OneOf({"png", "tiff", "bmp", "raw"});
        Args()
            .Add("--set", assignments_, "FEATURE=VALUE to write before streaming; repeatable")
            .OneAtATime()
            .Check([](const std::string& text) {
                return text.find('=') == std::string::npos ? "\"" + text + "\" is not FEATURE=VALUE" : "";
            });
        Args()
            .Add("--packet-size", packetSize_, "Bytes of a GigE Vision packet, headers included")
            .Between(46, 65535);
        Args()
            .Add("--timeout", limits_.timeout, "Seconds without a frame that end the run (default 5)")
            .Between(0.01, 1e6);
        Args().Flag("--no-save", noSave_, "Only count the frames");
        Args().Add("--convert", conversion_, "Save as rgb8 or mono8").OneOf({"rgb8", "mono8"});
        Args().Add("--map", map_, "False colour of mono frames: NAME[:LOW:RANGE]");
        Args().Flag("--histogram", writer_.histogram, "Plot the histogram of all frames");
        Args()
            .Add("--queue", queueMegabytes_, "Megabytes of frames that may wait to be saved (default 512)")
            .Between(1, 1 << 20);
    }

    int Run() override {
        Prepare();
        CatchInterrupts();
        CameraSearch search(Options());
        const Connection connection(search.Find(camera_));
        if (packetSize_ != 0)
            SetPacketSize(connection, packetSize_);
        for (const Assignment& assignment : ParseAssignments(assignments_))
            Assign(connection, assignment);
        std::optional<ImageWriter> writer;
        if (writer_.save || writer_.histogram)
            writer.emplace(writer_);
        GrabSession session(connection.Device(), writer ? &*writer : nullptr, limits_);
        const GrabSummary summary = session.Run();
        if (writer)
            writer->Finish();
        return Report(summary, writer ? &*writer : nullptr);
    }

private:
    void Prepare() {
        writer_.save = !noSave_;
        writer_.queueBytes = static_cast<std::uint64_t>(queueMegabytes_) * 1024 * 1024;
        if (conversion_ == "rgb8")
            writer_.picture.conversion = RGB8;
        else if (conversion_ == "mono8")
            writer_.picture.conversion = Mono8;
        if (!map_.empty())
            ParseMap(map_, writer_.picture);
        std::error_code error;
        if (writer_.save || writer_.histogram)
            std::filesystem::create_directories(writer_.directory, error);
        if (error)
            throw ToolError("the directory " + writer_.directory + " cannot be made: " + error.message());
    }

    int Report(const GrabSummary& summary, const ImageWriter* writer) const {
        Json json = ToJson(summary);
        Console& console = Console::Instance();
        if (!Options().json)
            PrintSummary(console.Out(), summary);
        bool good = summary.end == "done" || summary.end == "interrupted";
        if (writer != nullptr)
            good = ReportWriter(*writer, json) && good;
        if (Options().json)
            console.PrintJson(json);
        if (summary.end == "timeout")
            console.Say(
                "no frame arrived for " + NumberText(limits_.timeout) +
                " s: the camera may wait for a trigger, or its packets are dropped on the way (firewall, "
                "packet size larger than the network's, address of another interface)");
        if (summary.end == "lost")
            console.Say("the camera was lost while streaming: " + StatusWords(Status::DeviceLost));
        return good ? 0 : 1;
    }

    // False when a picture is missing.
    bool ReportWriter(const ImageWriter& writer, Json& json) const {
        Console& console = Console::Instance();
        const ImageWriter::Counts counts = writer.GetCounts();
        if (writer_.save) {
            json["saved"] = counts.saved;
            json["not_saved"] = counts.dropped + counts.failed;
            json["directory"] = writer_.directory;
            if (!Options().json)
                console.Out() << counts.saved << " pictures in " << writer_.directory << '\n';
        }
        if (counts.dropped != 0)
            console.Say(
                std::to_string(counts.dropped) +
                " frames were not saved, since saving is slower than the camera; --queue lets more of "
                "them wait, --format raw or bmp saves faster");
        if (counts.failed != 0)
            console.Say(std::to_string(counts.failed) + " frames could not be saved: " + counts.firstFailure);
        bool plotted = true;
        if (writer_.histogram) {
            const std::string path = writer_.directory + "/histogram.png";
            plotted = PlotHistogram(writer.Histogram().Counts(), path);
            json["histogram"] = {{"file", path}, {"channels", writer.Histogram().Figures()}};
            if (!plotted)
                console.Say(path + " could not be written");
            else if (!Options().json)
                console.Out() << "histogram of all frames in " << path << '\n';
        }
        return counts.dropped == 0 && counts.failed == 0 && plotted;
    }

    std::string camera_;
    GrabLimits limits_;
    WriterOptions writer_;
    std::vector<std::string> assignments_;
    std::string conversion_;
    std::string map_;
    unsigned int packetSize_ = 0;
    unsigned int queueMegabytes_ = 512;
    bool noSave_ = false;
};

} // namespace

std::unique_ptr<Command> CreateGrabCommand(Arguments& arguments, const GlobalOptions& options) {
    return std::make_unique<GrabCommand>(arguments, options);
}

} // namespace VX3::Tool
