#include "platform/genapi/NodeMap.h"

#include "platform/genapi/LinkCheck.h"
#include "platform/genapi/NodeBuilder.h"
#include "platform/genapi/PortNode.h"

#include <exception>
#include <utility>

namespace GenApi_3_2 {
namespace Engine {
namespace {

gcstring ToGc(std::string_view text) {
    return gcstring(text.data(), text.size());
}

} // namespace

NodeMap::NodeMap(std::shared_ptr<const Description> description, const gcstring& deviceName,
                 bool suppressStrings)
    : description_(std::move(description)), deviceName_(deviceName), suppressStrings_(suppressStrings) {
    for (const Problem& problem : description_->Problems())
        problems_.push_back({problem.line, problem.node, problem.text});
    MakeNodes();
    cache_.Build(nodes_, links_);
    LinkCheck(nodes_).Run();
    MarkFeatures();
}

NodeMap::~NodeMap() = default;

void NodeMap::MakeNodes() {
    const auto& records = description_->Nodes();
    nodes_.reserve(records.size());
    links_.reserve(4 * records.size());
    for (const NodeRecord& record : records)
        nodes_.push_back(MakeNode(*this, record));
    for (const auto& node : nodes_)
        node->ReadElements();
    ShareAddresses(nodes_, cache_);
}

void NodeMap::MarkFeatures() {
    NodeBase* root = NodeAt(description_->IndexOf("Root"));
    if (!root)
        return;
    std::vector<NodeBase*> reached{root};
    root->isFeature_ = true;
    for (std::size_t i = 0; i < reached.size(); ++i)
        for (const Link& link : reached[i]->Links())
            if ((link.role == Role::Feature || link.role == Role::Entry) && !link.node->isFeature_) {
                link.node->isFeature_ = true;
                reached.push_back(link.node);
            }
}

NodeBase* NodeMap::NodeAt(std::int32_t index) const {
    return index < 0 || static_cast<std::size_t>(index) >= nodes_.size()
               ? nullptr
               : nodes_[static_cast<std::size_t>(index)].get();
}

void NodeMap::Report(const NodeRecord& record, std::uint32_t line, const std::string& text) {
    if (problems_.size() < 2 * Description::MaxProblems)
        problems_.push_back({line, std::string(record.name), text});
}

void NodeMap::SetBrokenReason(const NodeBase& node, const std::string& reason) {
    brokenReasons_.emplace(&node, reason);
}

const std::string& NodeMap::BrokenReason(const NodeBase& node) const {
    static const std::string unknown = "switched off";
    const auto found = brokenReasons_.find(&node);
    return found == brokenReasons_.end() ? unknown : found->second;
}

// ---- INodeMap

void NodeMap::GetNodes(NodeList_t& Nodes) const {
    Nodes.clear();
    Nodes.reserve(nodes_.size());
    for (const auto& node : nodes_)
        Nodes.push_back(node.get());
}

INode* NodeMap::GetNode(const gcstring& Name) const {
    return NodeAt(description_->IndexOf(std::string_view(Name.c_str(), Name.size())));
}

std::uint64_t NodeMap::GetNumNodes() const {
    return nodes_.size();
}

void NodeMap::InvalidateNodes() const {
    const Operation operation(*this);
    cache_.InvalidateAll(nodes_);
    FireChanged();
}

bool NodeMap::Connect(IPort* pPort, const gcstring& PortName) const {
    auto* port = dynamic_cast<PortNode*>(GetNode(PortName));
    if (!port)
        return false;
    const Operation operation(*this);
    port->SetPortImpl(pPort);
    return true;
}

bool NodeMap::Connect(IPort* pPort) const {
    if (Connect(pPort, "Device"))
        return true;
    // Some descriptions give their only port another name.
    PortNode* only = nullptr;
    for (const auto& node : nodes_)
        if (auto* port = dynamic_cast<PortNode*>(node.get())) {
            if (only)
                return false;
            only = port;
        }
    return only && Connect(pPort, only->GetName());
}

void NodeMap::Poll(std::int64_t ElapsedTime) {
    const Operation operation(*this);
    cache_.Poll(ElapsedTime);
    FireChanged();
}

// ---- Operations and callbacks

void NodeMap::Begin() const {
    lock_.Lock();
    if (depth_++ == 0)
        visits_ = 0;
}

void NodeMap::End() const noexcept {
    if (--depth_ > 0 || outside_.empty()) {
        lock_.Unlock();
        return;
    }
    const std::vector<NodeBase*> nodes = std::exchange(outside_, {});
    lock_.Unlock();
    FireOutside(nodes);
}

void NodeMap::FireChanged() const {
    if (!cache_.HasChanged())
        return;
    const std::vector<NodeBase*> nodes = cache_.TakeChanged();
    outside_.insert(outside_.end(), nodes.begin(), nodes.end());
    std::exception_ptr failure;
    for (NodeBase* node : nodes) {
        try {
            node->Fire(cbPostInsideLock);
        } catch (...) {
            failure = std::current_exception();
        }
    }
    if (failure)
        std::rethrow_exception(failure);
}

void NodeMap::FireOutside(const std::vector<NodeBase*>& nodes) const {
    for (NodeBase* node : nodes) {
        try {
            node->Fire(cbPostOutsideLock);
        } catch (...) { // nobody is left to tell: the operation itself has succeeded
        }
    }
}

// ---- IDeviceInfo

gcstring NodeMap::GetModelName() {
    return ToGc(description_->Header().modelName);
}
gcstring NodeMap::GetVendorName() {
    return ToGc(description_->Header().vendorName);
}
gcstring NodeMap::GetToolTip() {
    return ToGc(description_->Header().toolTip);
}
gcstring NodeMap::GetStandardNameSpace() {
    return ToGc(description_->Header().standardNameSpace);
}
gcstring NodeMap::GetProductGuid() {
    return ToGc(description_->Header().productGuid);
}
gcstring NodeMap::GetVersionGuid() {
    return ToGc(description_->Header().versionGuid);
}

void NodeMap::GetGenApiVersion(Version_t& Version, std::uint16_t& Build) {
    Version.Major = 3;
    Version.Minor = 2;
    Version.SubMinor = 0;
    Build = 0;
}

void NodeMap::GetSchemaVersion(Version_t& Version) {
    const DescriptionHeader& header = description_->Header();
    Version.Major = static_cast<std::uint16_t>(header.schemaMajorVersion);
    Version.Minor = static_cast<std::uint16_t>(header.schemaMinorVersion);
    Version.SubMinor = static_cast<std::uint16_t>(header.schemaSubMinorVersion);
}

void NodeMap::GetDeviceVersion(Version_t& Version) {
    const DescriptionHeader& header = description_->Header();
    Version.Major = static_cast<std::uint16_t>(header.majorVersion);
    Version.Minor = static_cast<std::uint16_t>(header.minorVersion);
    Version.SubMinor = static_cast<std::uint16_t>(header.subMinorVersion);
}

} // namespace Engine
} // namespace GenApi_3_2
