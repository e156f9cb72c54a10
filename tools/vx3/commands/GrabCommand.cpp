// vx3 grab: streams frames and saves them as pictures.
#include "base/Console.h"
#include "base/ExitCode.h"
#include "base/ToolError.h"
#include "commands/Assignments.h"
#include "commands/Commands.h"
#include "features/FeatureText.h"
#include "grab/FrameFiles.h"
#include "grab/GrabSession.h"
#include "grab/HistogramPlot.h"
#include "grab/ImageWriter.h"
#include "search/Connection.h"
#include "vx3/core/Utilities.h"
#include "vx3/gev/StreamPacketSize.h"

#include <cmath>
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
            .Add("-n,--frames", frames_, "Frames to grab; 0 until Ctrl-C (default 1; any with --duration)")
            .Check(FramesFault);
        Args().AddSeconds("--duration", limits_.duration, "Time after which to end (default: never)", 0.001,
                          1e9);
        Args().Add("-o,--output", writer_.directory, "Directory of the pictures (default .)");
        Args()
            .Add("--format", writer_.picture.format, "Picture format (default png)")
            .OneOf({"png", "tiff", "bmp", "jpeg", "jpg", "raw"});
        Args().Flag("--overwrite", overwrite_, "Number the files from 1, whatever the directory holds");
        Args()
            .Add("--set", assignments_, "FEATURE=VALUE to write before streaming; repeatable")
            .OneAtATime()
            .Check(AssignmentFault);
        Args()
            .Add("--packet-size", packetSize_, "Bytes of a GigE Vision packet, headers included")
            .Between(46, 65535);
        Args().AddSeconds("--timeout", limits_.timeout,
                          "Time without a frame that ends the run (default 5 s)", 0.01, 1e6);
        Args()
            .Add("--trigger-rate", triggerRate_, "Trigger every frame by software, so often a second")
            .Between(0.001, 1e5);
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
        CameraSearch search(Options());
        const Connection connection(search.Find(camera_));
        if (packetSize_ != 0)
            SetPacketSize(connection, packetSize_);
        int status = Exit::Done;
        for (const Assignment& assignment : ParseAssignments(assignments_))
            if (Assign(connection, assignment).adjusted)
                status = Exit::Adjusted;
        std::optional<SoftwareTrigger> trigger;
        if (triggerRate_ > 0.0)
            trigger.emplace(connection.Configurer(), triggerRate_);
        std::optional<ImageWriter> writer;
        if (writer_.save || writer_.histogram)
            writer.emplace(writer_);
        GrabSession session(connection.Device(), writer ? &*writer : nullptr, trigger ? &*trigger : nullptr,
                            limits_);
        const GrabSummary summary = session.Run();
        if (writer)
            writer->Finish();
        if (summary.end == "trigger")
            Console::Instance().Say(Printable(trigger->FailureText()));
        return Report(summary, writer ? &*writer : nullptr, status);
    }
    bool EndsByInterrupt() const override { return limits_.frames == 0 && limits_.duration <= 0.0; }

private:
    void Prepare() {
        limits_.frames = frames_ != NotAsked ? frames_ : limits_.duration > 0.0 ? 0 : 1;
        writer_.save = !noSave_;
        writer_.queueBytes = static_cast<std::uint64_t>(queueMegabytes_) * 1024 * 1024;
        if (conversion_ == "rgb8")
            writer_.picture.conversion = RGB8;
        else if (conversion_ == "mono8")
            writer_.picture.conversion = Mono8;
        if (!map_.empty())
            ParseMap(map_, writer_.picture);
        if (!writer_.save && !writer_.histogram)
            return;
        std::error_code error;
        std::filesystem::create_directories(writer_.directory, error);
        if (error)
            throw ToolError("the directory " + writer_.directory + " cannot be made: " + error.message());
        if (writer_.save && !overwrite_)
            writer_.firstNumber = HighestFrame(writer_.directory) + 1;
    }

    int Report(const GrabSummary& summary, const ImageWriter* writer, int status) const {
        Json json = ToJson(summary);
        Console& console = Console::Instance();
        if (!Options().json)
            PrintSummary(console.Out(), summary);
        status = Graver(status, Judge(summary));
        if (writer != nullptr)
            status = Graver(status, ReportWriter(*writer, json));
        json["code"] = status;
        if (Options().json)
            console.PrintJson(json);
        return status;
    }

    // Says why the run is not what was asked for.
    int Judge(const GrabSummary& summary) const {
        Console& console = Console::Instance();
        const bool missing = summary.frames < limits_.frames;
        const std::string frames = limits_.frames == 0 ? std::to_string(summary.frames) + " frames"
                                                       : std::to_string(summary.frames) + " of " +
                                                             std::to_string(limits_.frames) + " frames";
        int status = missing ? Exit::Incomplete : Exit::Done;
        if (summary.end == "timeout") {
            console.Say(TimeoutWords(summary));
            status = summary.frames == 0 ? Exit::Failure : Exit::Incomplete;
        } else if (summary.end == "lost") {
            console.Say("the camera was lost while streaming: " + StatusWords(Status::DeviceLost));
            status = Exit::Failure;
        } else if (summary.end == "trigger") {
            status = Exit::Failure;
        } else if (summary.end == "interrupted" && !EndsByInterrupt()) {
            console.Say("interrupted after " + frames);
            status = Exit::Interrupted;
        } else if (summary.end == "duration") {
            console.Say("the time was over after " + frames);
        }
        if (triggerRate_ > 0.0 && summary.triggers > 1 && summary.triggersPerSecond < 0.9 * triggerRate_)
            console.Say("the camera took " + NumberText(std::round(summary.triggersPerSecond * 10) / 10) +
                        " triggers a second instead of " + NumberText(triggerRate_));
        const std::uint64_t faulty = summary.incomplete + summary.lostFrames + summary.droppedFrames;
        if (faulty != 0)
            console.Say(std::to_string(summary.incomplete) + " frames are incomplete, " +
                        std::to_string(summary.lostFrames + summary.droppedFrames) + " are missing");
        return faulty != 0 ? Graver(status, Exit::Incomplete) : status;
    }

    std::string TimeoutWords(const GrabSummary& summary) const {
        if (triggerRate_ > 0.0)
            return "no frame arrived for " + NumberText(limits_.timeout) + " s, although " +
                   std::to_string(summary.triggers) +
                   " triggers were sent: the camera may wait for another one, or its packets are dropped on "
                   "the way";
        return "no frame arrived for " + NumberText(limits_.timeout) +
               " s: the camera may wait for a trigger (--trigger-rate sends them), or its packets are "
               "dropped "
               "on the way (firewall, packet size larger than the network's, address of another interface)";
    }

    // The exit status as far as pictures go.
    int ReportWriter(const ImageWriter& writer, Json& json) const {
        Console& console = Console::Instance();
        const ImageWriter::Counts counts = writer.GetCounts();
        if (writer_.save) {
            json["saved"] = counts.saved;
            json["not_saved"] = counts.dropped + counts.failed;
            json["directory"] = writer_.directory;
            json["first_number"] = writer_.firstNumber;
            if (!Options().json)
                console.Out() << counts.saved << " pictures in " << writer_.directory << ", numbered from "
                              << writer_.firstNumber << '\n';
        }
        if (counts.dropped != 0)
            console.Say(
                std::to_string(counts.dropped) +
                " frames were not saved, since saving is slower than the camera; --queue lets more of "
                "them wait, --format raw or bmp saves faster");
        if (counts.failed != 0)
            console.Say(std::to_string(counts.failed) + " frames could not be saved: " + counts.firstFailure);
        const bool plotted = !writer_.histogram || ReportHistogram(writer.Histogram(), json);
        if (counts.failed != 0 || !plotted)
            return Exit::Failure;
        return counts.dropped != 0 ? Exit::Incomplete : Exit::Done;
    }

    bool ReportHistogram(const HistogramSum& histogram, Json& json) const {
        Console& console = Console::Instance();
        const std::string path = overwrite_ ? writer_.directory + "/histogram.png"
                                            : FreePath(writer_.directory, "histogram", "png");
        json["histogram"] = {{"file", path}, {"channels", histogram.Figures()}};
        const std::string fault = PlotHistogram(histogram.Counts(), path);
        if (!fault.empty())
            console.Say(Printable(fault));
        else if (!Options().json)
            console.Out() << "histogram of all frames in " << path << '\n';
        return fault.empty();
    }

    // A negative number would wrap.
    static std::string FramesFault(const std::string& text) {
        const bool digits = !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
        return digits ? std::string() : "\"" + text + "\" is not a number of frames";
    }

    static constexpr std::uint64_t NotAsked = UINT64_MAX;

    std::string camera_;
    GrabLimits limits_;
    WriterOptions writer_;
    std::vector<std::string> assignments_;
    std::string conversion_;
    std::string map_;
    unsigned int packetSize_ = 0;
    unsigned int queueMegabytes_ = 512;
    bool noSave_ = false;
    bool overwrite_ = false;
    std::uint64_t frames_ = NotAsked;
    double triggerRate_ = 0.0;
};

} // namespace

std::unique_ptr<Command> CreateGrabCommand(Arguments& arguments, const GlobalOptions& options) {
    return std::make_unique<GrabCommand>(arguments, options);
}

} // namespace VX3::Tool
