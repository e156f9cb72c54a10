// vx3 monitor: reports cameras found, lost and changed as it happens.
#include "base/Console.h"
#include "base/ExitCode.h"
#include "base/Interrupt.h"
#include "commands/Commands.h"
#include "search/CameraSearch.h"
#include "search/Connection.h"
#include "vx3/core/Mutex.h"

#include <chrono>
#include <ctime>
#include <thread>

namespace VX3::Tool {

namespace {

std::string EventText(SUB_DEVICE_EVENT event) {
    switch (event) {
    case SUB_DEVICE_EVENT::Found:
        return "found";
    case SUB_DEVICE_EVENT::Lost:
        return "lost";
    case SUB_DEVICE_EVENT::StateChanged:
        return "changed";
    }
    return "unknown";
}

// ISO 8601: "2026-11-23T11:11:00+01:00".
std::string TimeText() {
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
    localtime_r(&now, &local);
    char text[48];
    std::strftime(text, sizeof(text), "%Y-%m-%dT%H:%M:%S%z", &local);
    std::string time = text;
    time.insert(time.size() - 2, ":");
    return time;
}

class MonitorCommand : public Command {
public:
    MonitorCommand(Arguments& arguments, const GlobalOptions& options)
        : Command(arguments, options, "monitor", "Report cameras as they come, go and change, until Ctrl-C") {
        Args().AddSeconds("--period", period_, "Time between two looks (default 2 s)", 0.1, 3600.0);
        Args().AddSeconds("--duration", duration_, "Time after which to end; 0 never (default)", 0.0, 1e9);
    }

    int Run() override {
        CameraSearch search(Options());
        for (const std::shared_ptr<IDevice>& device : search.Interfaces())
            device->MonitorSubDevices(true, static_cast<unsigned int>(period_ * 1000.0), 0,
                                      [this](IDevice* interfaceDevice, const SubDeviceEvents& events) {
                                          OnEvents(*interfaceDevice, events);
                                      });
        const auto started = std::chrono::steady_clock::now();
        while (
            !Interrupted() && Console::Instance().OutputError() == 0 &&
            (duration_ == 0.0 ||
             std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count() < duration_))
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        return Exit::Done;
    }
    bool EndsByInterrupt() const override { return duration_ == 0.0; }

private:
    // One monitoring thread an interface calls this.
    void OnEvents(const IDevice& interfaceDevice, const SubDeviceEvents& events) {
        MutexLock lock(mutex_);
        for (const auto& [event, cameras] : events)
            for (const std::shared_ptr<IDevice>& camera : cameras)
                Report(interfaceDevice, event, *camera);
    }

    void Report(const IDevice& interfaceDevice, SUB_DEVICE_EVENT event, const IDevice& camera) const {
        Console& console = Console::Instance();
        if (Options().json) {
            console.PrintJsonLine({{"time", TimeText()},
                                   {"event", EventText(event)},
                                   {"name", camera.Name()},
                                   {"unique_name", camera.UniqueName()},
                                   {"address", AddressOf(camera)},
                                   {"state", StateText(camera.DeviceState())},
                                   {"interface", interfaceDevice.Name()}});
            return;
        }
        const std::string address = AddressOf(camera);
        console.Out() << TimeText() << "  " << Padded(EventText(event), 7) << "  " << Printable(camera.Name())
                      << (address.empty() ? "" : " at " + address) << " behind "
                      << Printable(interfaceDevice.Name()) << ", " << StateText(camera.DeviceState())
                      << std::endl;
    }

    Mutex mutex_; // one line at a time
    double period_ = 2.0;
    double duration_ = 0.0;
};

} // namespace

std::unique_ptr<Command> CreateMonitorCommand(Arguments& arguments, const GlobalOptions& options) {
    return std::make_unique<MonitorCommand>(arguments, options);
}

} // namespace VX3::Tool
