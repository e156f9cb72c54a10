// vx3 list: the cameras that answer now.
#include "base/Console.h"
#include "base/ExitCode.h"
#include "commands/Commands.h"
#include "search/CameraSearch.h"
#include "search/Connection.h"
#include "vx3/gentl/Producers.h"

#include <algorithm>
#include <vector>

namespace VX3::Tool {

namespace {

using Row = std::vector<std::string>;

void PrintTable(std::ostream& out, const std::vector<Row>& rows) {
    std::vector<std::size_t> widths(rows.front().size());
    for (const Row& row : rows)
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], row[i].size());
    for (const Row& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i)
            line += Padded(row[i], widths[i]) + (i + 1 < row.size() ? "  " : "");
        line.erase(line.find_last_not_of(' ') + 1);
        out << line << '\n';
    }
}

// A camera that another program of this host publishes: its pictures may be had here without a network.
bool IsOfThisHost(const IDevice& camera) {
    for (const auto& [name, value] : camera.GetInfo())
        if (name == "Published")
            return true;
    return false;
}

Json CameraJson(const FoundCamera& found) {
    const IDevice& camera = *found.camera;
    return {{"name", camera.Name()},
            {"vendor", camera.VendorName()},
            {"model", camera.ModelName()},
            {"serial", camera.SerialNumber()},
            {"user_name", camera.UserName()},
            {"unique_name", camera.UniqueName()},
            {"address", AddressOf(camera)},
            {"state", StateText(camera.DeviceState())},
            {"transport", TransportName(camera)},
            {"interface", found.interfaceDevice->Name()},
            {"published_here", IsOfThisHost(camera)}};
}

Json ProducerJson(const GenTLProducer& producer) {
    return {{"path", producer.path},       {"vendor", producer.vendor},    {"model", producer.model},
            {"version", producer.version}, {"transport", producer.tlType}, {"failure", producer.failure}};
}

std::string OrDash(const std::string& text) {
    return text.empty() ? "-" : Printable(text);
}

void PrintProducers(const std::vector<GenTLProducer>& producers) {
    std::vector<Row> rows{{"PRODUCER", "VENDOR", "MODEL", "VERSION", "STATE"}};
    for (const GenTLProducer& producer : producers)
        rows.push_back({Printable(producer.path), OrDash(producer.vendor), OrDash(producer.model),
                        OrDash(producer.version),
                        producer.failure.empty() ? "loaded" : "not used: " + Printable(producer.failure)});
    PrintTable(Console::Instance().Out(), rows);
}

class ListCommand : public Command {
public:
    ListCommand(Arguments& arguments, const GlobalOptions& options)
        : Command(arguments, options, "list", "List the cameras that answer") {
        Args().Flag("--probe-serial", probeSerial_,
                    "Ask every serial port for a camera, too: they get bytes that only cameras understand");
    }

    int Run() override {
        CameraSearch search(Options());
        std::vector<FoundCamera> cameras = search.Cameras();
        if (probeSerial_) {
            search.ProbeSerialPorts();
            cameras = search.Cameras();
        }
        // Which producers there are matters to who asks for their cameras alone.
        const bool withProducers = Options().transport == "gentl";
        const std::vector<GenTLProducer> producers =
            withProducers ? GenTLProducers() : std::vector<GenTLProducer>();
        if (Options().json)
            Console::Instance().PrintJson(withProducers ? Json{{"cameras", CamerasJson(cameras)},
                                                               {"producers", ProducersJson(producers)}}
                                                        : CamerasJson(cameras));
        else
            Print(cameras, producers);
        if (!cameras.empty())
            return Exit::Done;
        const std::size_t count = search.Interfaces().size();
        Console::Instance().Say("no camera answered on " + std::to_string(count) +
                                (count == 1 ? " interface" : " interfaces"));
        return Exit::Nothing;
    }

private:
    static Json CamerasJson(const std::vector<FoundCamera>& cameras) {
        Json list = Json::array();
        for (const FoundCamera& found : cameras)
            list.push_back(CameraJson(found));
        return list;
    }

    static Json ProducersJson(const std::vector<GenTLProducer>& producers) {
        Json list = Json::array();
        for (const GenTLProducer& producer : producers)
            list.push_back(ProducerJson(producer));
        return list;
    }

    static void Print(const std::vector<FoundCamera>& cameras, const std::vector<GenTLProducer>& producers) {
        if (!producers.empty())
            PrintProducers(producers);
        if (!producers.empty() && !cameras.empty())
            Console::Instance().Out() << '\n';
        if (!cameras.empty())
            PrintCameras(cameras);
    }

    static void PrintCameras(const std::vector<FoundCamera>& cameras) {
        std::vector<Row> rows{{"NAME", "SERIAL", "ADDRESS", "STATE", "TRANSPORT", "INTERFACE"}};
        for (const FoundCamera& found : cameras) {
            const IDevice& camera = *found.camera;
            rows.push_back(
                {Printable(camera.Name()), OrDash(camera.SerialNumber()), OrDash(AddressOf(camera)),
                 StateText(camera.DeviceState()), TransportName(camera),
                 Printable(found.interfaceDevice->Name()) + (IsOfThisHost(camera) ? " (this host)" : "")});
        }
        PrintTable(Console::Instance().Out(), rows);
    }

    bool probeSerial_ = false;
};

} // namespace

std::unique_ptr<Command> CreateListCommand(Arguments& arguments, const GlobalOptions& options) {
    return std::make_unique<ListCommand>(arguments, options);
}

} // namespace VX3::Tool
