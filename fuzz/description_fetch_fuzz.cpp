// Where a camera says its description lies, and what lies there. Input: a line with the URL, then the
// device's memory, which is also the content of the file that a "File:" URL may name. Either there is a
// description of the promised size, or none.
#include "FuzzInput.h"
#include "support/FakeDevice.h"
#include "support/TempDir.h"
#include "vx3/genicam/INodeMap.h"

#include <fstream>
#include <sys/stat.h>

using namespace VX3;
using namespace VX3::Fuzz;

namespace {

// "File:" URLs lead into a directory of our own, where there also are a pipe that nobody writes and a
// directory.
std::string Confined(std::string url, const std::string& content) {
    static const Test::TempDir directory;
    static const bool once = ::mkfifo((directory / "pipe").c_str(), 0600) == 0 &&
                             ::mkdir((directory / "folder.xml").c_str(), 0700) == 0;
    Require(once);
    if (url.compare(0, 5, "File:") != 0 && url.compare(0, 5, "file:") != 0)
        return url;
    std::ofstream(directory / "d.xml", std::ios::binary) << content;
    std::replace(url.begin(), url.end(), '/', '_');
    return url.insert(5, directory.Path() + "/");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Silence silence;
    FuzzInput in(data, size);
    const auto device = std::make_shared<Test::FakeDevice>("fuzz");
    const std::string url = in.Line();
    const std::string memory = in.Rest();
    device->memory.assign(memory.begin(), memory.end());
    device->url = Confined(url, memory);
    Require(device->Connect() == Status::Ok);
    if (IConfigurer* configurer = device->GetConfigurer()) {
        const IXmlData* description = configurer->GetXmlData();
        Require(description != nullptr && !description->GetXmlName().empty());
        Require(description->GetXmlDataSize() != 0 && description->GetXmlDataSize() <= memory.size());
        if (const auto nodes = configurer->GetNodeMap())
            for (const GenICam::INode* node : nodes->GetNodes())
                Require(node == nullptr || !node->GetName().empty());
        static_cast<void>(device->ModelName());
    }
    Require(device->DisConnect() == Status::Ok);
    Require(device.use_count() == 1);
    return 0;
}
