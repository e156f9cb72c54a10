#include "genicam/GenApiRI.h"

#include "GenApi/GenApi.h"
#include "genicam/NodeMapA.h"
#include "genicam/NodeMapFactory.h"
#include "genicam/ValueByName.h"
#include "vx3/core/Logger.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace VX3 {

using GenICam::INode;
using GenICam::NodeValue;

namespace {

// The text after the last '.', in lower case; empty when there is none.
std::string ExtensionOf(const std::string& name) {
    const std::size_t dot = name.rfind('.');
    if (dot == std::string::npos)
        return {};
    std::string extension = name.substr(dot + 1);
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

// A description that breaks the standard a little still works: what was skipped is said once.
void LogProblems(const std::string& name, const GenICam::INodeMap& map) {
    const auto* nodeMap = dynamic_cast<const GenICam::NodeMapA*>(&map);
    if (nodeMap == nullptr)
        return;
    const std::vector<GenICam::DescriptionProblem> problems = nodeMap->GetProblems();
    if (problems.empty())
        return;
    VxLoggerLog(LogLevel::Warning, "SDK", "%s: %zu problems in the description, the first in line %u: %s",
                name.c_str(), problems.size(), problems.front().line, problems.front().text.c_str());
    constexpr std::size_t MostDetails = 100;
    for (std::size_t i = 0; i < std::min(problems.size(), MostDetails); ++i)
        VxLoggerLog(LogLevel::Debug, "SDK", "%s:%u: %s", name.c_str(), problems[i].line,
                    problems[i].text.c_str());
}

} // namespace

GenApiRI::GenApiRI(std::unique_ptr<IXmlData> xml, std::weak_ptr<IGenIObj> owner, const char* portName)
    : owner_(owner), xml_(std::move(xml)) {
    CreateNodeMap();
    if (!nodeMap_)
        return;
    LogProblems(xml_->GetXmlName(), *nodeMap_);
    const bool connected =
        portName ? nodeMap_->Connect(std::move(owner), portName) : nodeMap_->Connect(std::move(owner));
    if (!connected)
        VxLoggerLog(LogLevel::Warning, "SDK", "%s has no port \"%s\": its registers cannot be reached.",
                    xml_->GetXmlName().c_str(), portName ? portName : "Device");
}

void GenApiRI::LoadDescription() {
    if (!xml_) {
        failure_ = "there is no description";
        return;
    }
    const std::string extension = ExtensionOf(xml_->GetXmlName());
    if (extension != "xml" && extension != "zip") {
        failure_ = "the description's name \"" + xml_->GetXmlName() + "\" ends in neither .xml nor .zip";
        return;
    }
    const auto type = extension == "zip" ? GenICam::EContentType::ZippedXml : GenICam::EContentType::Xml;
    try {
        factory_ = std::make_unique<GenICam::NodeMapFactory>(type, xml_->GetXmlData(), xml_->GetXmlDataSize(),
                                                             GenICam::ECacheUsage::Automatic, false);
    } catch (const GenICam_3_2::GenericException& exception) {
        failure_ = exception.GetDescription();
    } catch (const std::exception& exception) {
        failure_ = exception.what();
    }
    if (!factory_)
        GenICam::LogGenICamException(failure_.c_str());
}

void GenApiRI::CreateNodeMap() {
    LoadDescription();
    if (!factory_)
        return;
    nodeMap_ = factory_->CreateNodeMap(&GenApiRI::NodeCallBack, "Device", true);
    if (!nodeMap_)
        failure_ = factory_->Failure();
}

GenApiRI::~GenApiRI() {
    nodeMap_.reset();
    factory_.reset();
}

// The map's own notification; nobody listens to it.
void GenApiRI::NodeCallBack(INode* /*node*/) {}

NodeValue GenApiRI::GetNodeValue(const std::string& name) {
    INode* node = nodeMap_ ? nodeMap_->GetNode(name) : nullptr;
    return node ? GenICam::ReadByType(*node) : NodeValue();
}

StatusCode GenApiRI::SetNodeValue(const std::string& name, NodeValue& value) {
    if (!nodeMap_)
        return Status::Generic;
    if (name == GenICam::DelayNodeName)
        return GenICam::Delay(value, owner_);
    INode* node = nodeMap_->GetNode(name);
    return node ? GenICam::WriteByType(*node, value) : Status::NotFound;
}

} // namespace VX3
