// vx3 serve: makes a camera of this host one for other hosts, until it is interrupted.
#include "base/Console.h"
#include "base/ExitCode.h"
#include "base/Interrupt.h"
#include "base/ToolError.h"
#include "commands/Assignments.h"
#include "commands/Commands.h"
#include "search/CameraSearch.h"
#include "search/Connection.h"
#include "serve/ServedCamera.h"
#include "vx3/core/Utilities.h"
#include "vx3/simulated/Publish.h"

#include <chrono>
#include <thread>

namespace VX3::Tool {

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds Look{100};

std::string EndPointText(const NET_ENDPOINT& end) {
    return Ipv4Text(end.ip) + ":" + std::to_string(end.port);
}

// Ends what is published however the verb ends.
class Published {
public:
    Published(std::shared_ptr<IDevice> camera, const PublishOptions& options) : camera_(std::move(camera)) {
        const StatusCode code = Publish(camera_, options);
        if (Failed(code))
            throw ToolError(Printable(camera_->Name()) + " cannot be served", code);
    }
    ~Published() { Withdraw(*camera_); }
    Published(const Published&) = delete;
    Published& operator=(const Published&) = delete;

    PublishState State() const {
        PublishState state;
        const StatusCode code = GetPublishState(*camera_, state);
        if (Failed(code))
            throw ToolError("it is served no longer", code);
        return state;
    }

private:
    std::shared_ptr<IDevice> camera_;
};

// What happened since the last look.
struct Rates {
    double framesPerSecond = 0;
    double megabitsPerSecond = 0;
};

Rates RatesOf(const PublishState& now, const PublishState& before, double seconds) {
    if (seconds <= 0 || now.frames < before.frames)
        return {};
    return {static_cast<double>(now.frames - before.frames) / seconds,
            static_cast<double>(now.bytes - before.bytes) * 8e-6 / seconds};
}

class ServeCommand : public Command {
public:
    ServeCommand(Arguments& arguments, const GlobalOptions& options)
        : Command(arguments, options, "serve", "Make a camera one for other hosts, until Ctrl-C") {
        Args().Add("CAMERA", camera_, "Name, serial number, user name, unique name or address");
        Args().Add("--virtual", pattern_, "A camera out of nothing: WIDTHxHEIGHT@FRAMES, as 640x480@100");
        Args().Add("--replay", folder_, "A camera that plays the pictures and raw files of a folder");
        Args()
            .Add("--fps", rate_, "Frames a second of --replay (default: as recorded, else 30)")
            .Between(0.0, 1e6);
        Args()
            .Add("--set", settings_, "FEATURE=VALUE, before it is served")
            .Check(AssignmentFault)
            .OneAtATime();
        Args()
            .Add("--port", port_,
                 "UDP port of its control channel (default: the first free one of 56000, 56002, ...)")
            .Between(0, 65534);
        Args().Flag("--standard-port", standardPort_,
                    "Answer on port 3956 too, where ordinary programs look");
        Args().Add("--loss", loss_, "Part of the packets that get lost, 0 to 1").Between(0.0, 1.0);
        Args().Flag("--single-packets", singlePackets_,
                    "Send packets one by one, for receivers on this machine that read below UDP");
        Args().AddSeconds("--duration", duration_, "Time after which to end; 0 never (default)", 0.0, 1e9);
    }

    int Run() override {
        const int sources =
            (camera_.empty() ? 0 : 1) + (pattern_.empty() ? 0 : 1) + (folder_.empty() ? 0 : 1);
        if (sources != 1)
            throw ToolError("one of CAMERA, --virtual and --replay says what is served");
        if (!camera_.empty())
            return ServeFound();
        const auto camera = pattern_.empty() ? ReplayCamera(folder_, rate_) : PatternCamera(pattern_);
        if (const StatusCode code = camera->Connect(); Failed(code))
            throw ToolError(Printable(camera->Name()) + " cannot be opened", code);
        return Serve(camera);
    }
    bool EndsByInterrupt() const override { return true; }

private:
    int ServeFound() {
        CameraSearch search(Options());
        const Connection connection(search.Find(camera_));
        for (const Assignment& assignment : ParseAssignments(settings_))
            Assign(connection, assignment);
        return Serve(connection.Found().camera);
    }

    int Serve(const std::shared_ptr<IDevice>& camera) {
        PublishOptions options;
        options.port = static_cast<std::uint16_t>(port_);
        options.standardPort = standardPort_;
        options.segmentation = !singlePackets_;
        options.faults.dropProbability = loss_;
        const Published published(camera, options);
        PublishState before = published.State();
        Begin(*camera, before);
        const auto started = Clock::now();
        auto reported = started;
        while (!Interrupted() && Console::Instance().OutputError() == 0 && !IsOver(started)) {
            std::this_thread::sleep_for(Look);
            const PublishState now = published.State();
            TellChanges(now);
            const double seconds = std::chrono::duration<double>(Clock::now() - reported).count();
            if (now.cameraLost)
                throw ToolError(Printable(camera->Name()) + " is lost: it answers no more");
            if (seconds < 1)
                continue;
            Report(now, RatesOf(now, before, seconds));
            before = now;
            reported = Clock::now();
        }
        Console::Instance().EndProgress();
        Report(published.State(), {});
        return Exit::Done;
    }

    bool IsOver(Clock::time_point started) const {
        return duration_ > 0 && std::chrono::duration<double>(Clock::now() - started).count() >= duration_;
    }

    void Begin(const IDevice& camera, const PublishState& state) const {
        if (Options().json) {
            Console::Instance().PrintJsonLine({{"event", "serving"},
                                               {"name", camera.Name()},
                                               {"port", state.port},
                                               {"standard_port", state.standardPort}});
            return;
        }
        Console::Instance().Out() << Printable(camera.Name()) << " is served on port " << state.port
                                  << (state.standardPort ? " and 3956" : "") << std::endl;
    }

    void TellChanges(const PublishState& now) {
        if (now.controller.ip == controller_.ip && now.controller.port == controller_.port)
            return;
        const bool gone = now.controller.port == 0;
        const std::string who = EndPointText(gone ? controller_ : now.controller);
        controller_ = now.controller;
        if (Options().json)
            Console::Instance().PrintJsonLine({{"event", gone ? "released" : "controlled"}, {"host", who}});
        else
            Console::Instance().Say(who + (gone ? " has let it go" : " controls it"));
    }

    void Report(const PublishState& now, const Rates& rates) const {
        if (Options().json) {
            Console::Instance().PrintJsonLine(
                {{"event", "state"},
                 {"host", now.controller.port != 0 ? EndPointText(now.controller) : ""},
                 {"streams", now.streams},
                 {"frames", now.frames},
                 {"frames_per_second", rates.framesPerSecond},
                 {"megabits_per_second", rates.megabitsPerSecond},
                 {"resent_packets", now.packetsResent},
                 {"over_limit", now.overLimit},
                 {"overrun", now.overrun}});
            return;
        }
        char rate[64];
        std::snprintf(rate, sizeof(rate), "%.1f frames/s  %.1f Mbit/s", rates.framesPerSecond,
                      rates.megabitsPerSecond);
        std::vector<std::string> parts{now.controller.port != 0 ? EndPointText(now.controller) : "no client",
                                       rate, std::to_string(now.packetsResent) + " packets resent"};
        if (now.overLimit != 0)
            parts.push_back(std::to_string(now.overLimit) + " frames over the limit (SimuBandwidthLimit)");
        if (now.overrun != 0)
            parts.push_back(std::to_string(now.overrun) + " frames too many for the network");
        Console::Instance().Progress(parts);
    }

    std::string camera_;
    std::string pattern_;
    std::string folder_;
    double rate_ = 0;
    std::vector<std::string> settings_;
    unsigned int port_ = 0;
    bool standardPort_ = false;
    double loss_ = 0;
    bool singlePackets_ = false;
    double duration_ = 0;
    NET_ENDPOINT controller_;
};

} // namespace

std::unique_ptr<Command> CreateServeCommand(Arguments& arguments, const GlobalOptions& options) {
    return std::make_unique<ServeCommand>(arguments, options);
}

} // namespace VX3::Tool
