#include "GenApi/NodeMapFactory.h"

#include "GenApi/vx3/Polling.h"
#include "GenApi/vx3/Problems.h"
#include "platform/genapi/description/Description.h"
#include "platform/genapi/map/NodeMap.h"

#include <mutex>

namespace GenApi_3_2 {

using Engine::Description;

struct CNodeMapFactory::Impl {
    std::shared_ptr<const Description> description;
    std::string fileName;
    bool suppressStrings = false;
    mutable std::mutex mutex;
    mutable std::string xml; // guarded by mutex; empty once released
};

namespace {

std::string_view Bytes(const void* data, std::size_t size) {
    return data ? std::string_view(static_cast<const char*>(data), size) : std::string_view();
}

} // namespace

CNodeMapFactory::CNodeMapFactory() : impl_(std::make_shared<Impl>()) {}
CNodeMapFactory::~CNodeMapFactory() = default;
CNodeMapFactory::CNodeMapFactory(const CNodeMapFactory&) = default;
CNodeMapFactory& CNodeMapFactory::operator=(const CNodeMapFactory&) = default;

CNodeMapFactory::CNodeMapFactory(EContentType_t, const void* pData, std::size_t DataSize, ECacheUsage_t,
                                 bool SuppressStrings)
    : CNodeMapFactory() {
    // The bytes themselves tell whether they are zipped; callers guess it from file names.
    impl_->fileName = "description";
    impl_->suppressStrings = SuppressStrings;
    impl_->xml = Engine::UnpackDescription(Bytes(pData, DataSize), impl_->fileName);
    impl_->description = Description::FromXml(impl_->xml, impl_->fileName);
}

CNodeMapFactory::CNodeMapFactory(const gcstring& Xml, ECacheUsage_t CacheUsage, bool SuppressStrings)
    : CNodeMapFactory(ContentType_Xml, Xml.c_str(), Xml.size(), CacheUsage, SuppressStrings) {}

CNodeMapFactory::CNodeMapFactory(EContentType_t, const gcstring& FileName, ECacheUsage_t,
                                 bool SuppressStrings)
    : CNodeMapFactory() {
    impl_->fileName = FileName.c_str();
    impl_->suppressStrings = SuppressStrings;
    impl_->description = Description::FromFile(impl_->fileName);
}

INodeMap* CNodeMapFactory::CreateNodeMap(const gcstring& DeviceName,
                                         bool ReleaseCameraDescriptionFileData) const {
    if (!impl_->description)
        throw GenICam_3_2::RuntimeException("no description is loaded", __FILE__, __LINE__);
    auto map = std::make_unique<Engine::NodeMap>(impl_->description, DeviceName, impl_->suppressStrings);
    if (ReleaseCameraDescriptionFileData)
        this->ReleaseCameraDescriptionFileData();
    return map.release();
}

void CNodeMapFactory::ReleaseCameraDescriptionFileData() const {
    const std::lock_guard<std::mutex> lock(impl_->mutex);
    std::string().swap(impl_->xml);
}

bool CNodeMapFactory::IsEmpty() const {
    return !impl_->description;
}

gcstring CNodeMapFactory::ToString() const {
    if (!impl_->description)
        return "empty";
    const Engine::DescriptionHeader& header = impl_->description->Header();
    const std::string text = std::string(header.vendorName) + " " + std::string(header.modelName) + ", " +
                             std::to_string(impl_->description->Nodes().size()) + " nodes";
    return text.c_str();
}

gcstring CNodeMapFactory::ToXml() const {
    const std::lock_guard<std::mutex> lock(impl_->mutex);
    return gcstring(impl_->xml.data(), impl_->xml.size());
}

namespace vx3 {

std::vector<NodeMapProblem> GetProblems(const CNodeMapFactory& factory) {
    std::vector<NodeMapProblem> problems;
    if (factory.GetImpl()->description)
        for (const Engine::Problem& problem : factory.GetImpl()->description->Problems())
            problems.push_back({problem.line, problem.node, problem.text});
    return problems;
}

std::vector<NodeMapProblem> GetProblems(const INodeMap& nodeMap) {
    const auto* map = dynamic_cast<const Engine::NodeMap*>(&nodeMap);
    return map ? map->Problems() : std::vector<NodeMapProblem>();
}

std::int64_t GetPollingTime(const INodeMap& nodeMap) {
    const auto* map = dynamic_cast<const Engine::NodeMap*>(&nodeMap);
    return map ? map->PollingTime() : -1;
}

} // namespace vx3
} // namespace GenApi_3_2
