#include "genicam/NodeMapFactory.h"

#include "GenApi/GenApi.h"
#include "genicam/NodeMapA.h"
#include "vx3/core/Logger.h"

#include <utility>

namespace VX3::GenICam {

namespace {

GenApi_3_2::EContentType_t ToGenApi(EContentType type) {
    return static_cast<GenApi_3_2::EContentType_t>(type);
}

GenApi_3_2::ECacheUsage_t ToGenApi(ECacheUsage cache) {
    return static_cast<GenApi_3_2::ECacheUsage_t>(cache);
}

} // namespace

void LogGenICamException(const char* description) {
    VxLoggerLog(LogLevel::Error, "SDK",
                "Exception from GenICam: %s...: the description is refused, there are no features",
                description);
}

NodeMapFactory::NodeMapFactory(EContentType type, const void* data, unsigned long size, ECacheUsage cache,
                               bool suppressStrings)
    : factory_(std::make_unique<GenApi_3_2::CNodeMapFactory>(ToGenApi(type), data, size, ToGenApi(cache),
                                                             suppressStrings)) {}

NodeMapFactory::NodeMapFactory(EContentType type, const std::string& fileName, ECacheUsage cache,
                               bool suppressStrings)
    : factory_(std::make_unique<GenApi_3_2::CNodeMapFactory>(
          ToGenApi(type), GenApi_3_2::gcstring(fileName.c_str()), ToGenApi(cache), suppressStrings)) {}

NodeMapFactory::NodeMapFactory(const std::string& xml, ECacheUsage cache, bool suppressStrings)
    : factory_(std::make_unique<GenApi_3_2::CNodeMapFactory>(GenApi_3_2::gcstring(xml.c_str()),
                                                             ToGenApi(cache), suppressStrings)) {}

NodeMapFactory::~NodeMapFactory() = default;

std::unique_ptr<INodeMap> NodeMapFactory::CreateNodeMap(std::function<void(INode*)> callback,
                                                        const std::string& deviceName, bool releaseData) {
    failure_ = "the description holds no node map";
    try {
        GenApiNodeMap map(factory_->CreateNodeMap(deviceName.c_str(), releaseData));
        return map ? std::make_unique<NodeMapA>(std::move(map), std::move(callback)) : nullptr;
    } catch (const GenICam_3_2::GenericException& exception) {
        failure_ = exception.GetDescription();
    } catch (const std::exception& exception) {
        failure_ = exception.what();
    }
    LogGenICamException(failure_.c_str());
    return nullptr;
}

bool NodeMapFactory::IsEmpty() const {
    return factory_->IsEmpty();
}

std::string NodeMapFactory::ToString() const {
    return factory_->ToString().c_str();
}

std::string NodeMapFactory::ToXml() const {
    return factory_->ToXml().c_str();
}

} // namespace VX3::GenICam
