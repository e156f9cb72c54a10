// vx3 list: the cameras that answer now.
#include "base/Console.h"
#include "base/ExitCode.h"
#include "commands/Commands.h"
#include "search/CameraSearch.h"
#include "search/Connection.h"

#include <array>

namespace VX3::Tool {

namespace {

constexpr std::size_t Columns = 6;
using Row = std::array<std::string, Columns>;

void PrintTable(std::ostream& out, const std::vector<Row>& rows) {
    std::array<std::size_t, Columns> widths{};
    for (const Row& row : rows)
        for (std::size_t i = 0; i < Columns; ++i)
            widths[i] = std::max(widths[i], row[i].size());
    for (const Row& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < Columns; ++i)
            line += Padded(row[i], widths[i]) + (i + 1 < Columns ? "  " : "");
        line.erase(line.find_last_not_of(' ') + 1);
        out << line << '\n';
    }
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
            {"interface", found.interfaceDevice->Name()}};
}

class ListCommand : public Command {
public:
    ListCommand(Arguments& arguments, const GlobalOptions& options)
        : Command(arguments, options, "list", "List the cameras that answer") {}

    int Run() override {
        CameraSearch search(Options());
        const std::vector<FoundCamera> cameras = search.Cameras();
        if (Options().json) {
            Json list = Json::array();
            for (const FoundCamera& found : cameras)
                list.push_back(CameraJson(found));
            Console::Instance().PrintJson(list);
        } else if (!cameras.empty()) {
            PrintCameras(cameras);
        }
        if (!cameras.empty())
            return Exit::Done;
        const std::size_t count = search.Interfaces().size();
        Console::Instance().Say("no camera answered on " + std::to_string(count) +
                                (count == 1 ? " interface" : " interfaces"));
        return Exit::Nothing;
    }

private:
    static void PrintCameras(const std::vector<FoundCamera>& cameras) {
        std::vector<Row> rows{{"NAME", "SERIAL", "ADDRESS", "STATE", "TRANSPORT", "INTERFACE"}};
        for (const FoundCamera& found : cameras) {
            const IDevice& camera = *found.camera;
            const auto orDash = [](const std::string& text) { return text.empty() ? "-" : Printable(text); };
            rows.push_back({Printable(camera.Name()), orDash(camera.SerialNumber()),
                            orDash(AddressOf(camera)), StateText(camera.DeviceState()), TransportName(camera),
                            Printable(found.interfaceDevice->Name())});
        }
        PrintTable(Console::Instance().Out(), rows);
    }
};

} // namespace

std::unique_ptr<Command> CreateListCommand(Arguments& arguments, const GlobalOptions& options) {
    return std::make_unique<ListCommand>(arguments, options);
}

} // namespace VX3::Tool
