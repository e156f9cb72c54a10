#include "platform/genapi/map/NodeMap.h"

#include "platform/genapi/map/LinkCheck.h"
#include "platform/genapi/map/NodeBuilder.h"
#include "platform/genapi/registers/PortNode.h"

#include <utility>

namespace GenApi_3_2 {
namespace Engine {

NodeMap::NodeMap(std::shared_ptr<const Description> description, const gcstring& deviceName,
                 bool suppressStrings)
    : context_(*this, std::move(description), deviceName, suppressStrings) {
    MakeNodes();
    context_.GetCache().Build(context_.Nodes(), context_.Links());
    LinkCheck(context_.Nodes()).Run();
    MarkFeatures();
    for (const NodeBase* node : context_.GetCache().Polled())
        if (const std::int64_t time = node->GetPollingTime(); pollingTime_ < 0 || time < pollingTime_)
            pollingTime_ = time;
}

NodeMap::~NodeMap() = default;

void NodeMap::MakeNodes() {
    const auto& records = context_.Text().Nodes();
    auto& nodes = context_.Nodes();
    nodes.reserve(records.size());
    context_.Links().reserve(4 * records.size());
    for (const NodeRecord& record : records)
        nodes.push_back(MakeNode(context_, record));
    for (const auto& node : nodes)
        node->ReadElements();
    ShareAddresses(nodes, context_.GetCache());
}

void NodeMap::MarkFeatures() {
    NodeBase* root = Find("Root");
    if (!root)
        return;
    std::vector<NodeBase*> reached{root};
    root->MarkAsFeature();
    for (std::size_t i = 0; i < reached.size(); ++i)
        for (const Link& link : reached[i]->Links())
            if ((link.role == Role::Feature || link.role == Role::Entry) && !link.node->IsFeature()) {
                link.node->MarkAsFeature();
                reached.push_back(link.node);
            }
}

NodeBase* NodeMap::Find(std::string_view name) const {
    return context_.NodeAt(context_.Text().IndexOf(name));
}

// ---- INodeMap

void NodeMap::GetNodes(NodeList_t& Nodes) const {
    Nodes.clear();
    Nodes.reserve(context_.Nodes().size());
    for (const auto& node : context_.Nodes())
        Nodes.push_back(node.get());
}

INode* NodeMap::GetNode(const gcstring& Name) const {
    return Find(std::string_view(Name.c_str(), Name.size()));
}

std::uint64_t NodeMap::GetNumNodes() const {
    return context_.Nodes().size();
}

void NodeMap::InvalidateNodes() const {
    context_.InvalidateAll();
}

bool NodeMap::Connect(IPort* pPort, const gcstring& PortName) const {
    auto* port = dynamic_cast<PortNode*>(GetNode(PortName));
    if (!port)
        return false;
    const Operation operation(context_);
    port->SetPortImpl(pPort);
    return true;
}

bool NodeMap::Connect(IPort* pPort) const {
    if (Connect(pPort, "Device"))
        return true;
    // Some descriptions give their only port another name.
    PortNode* only = nullptr;
    for (const auto& node : context_.Nodes())
        if (auto* port = dynamic_cast<PortNode*>(node.get())) {
            if (only)
                return false;
            only = port;
        }
    return only && Connect(pPort, only->GetName());
}

void NodeMap::Poll(std::int64_t ElapsedTime) {
    if (pollingTime_ < 0)
        return; // nor is anybody waited for who holds the lock
    const Operation operation(context_);
    context_.GetCache().Poll(ElapsedTime);
    context_.FireChanged();
}

// ---- IDeviceInfo

gcstring NodeMap::GetModelName() {
    return ToGc(context_.Text().Header().modelName);
}
gcstring NodeMap::GetVendorName() {
    return ToGc(context_.Text().Header().vendorName);
}
gcstring NodeMap::GetToolTip() {
    return ToGc(context_.Text().Header().toolTip);
}
gcstring NodeMap::GetStandardNameSpace() {
    return ToGc(context_.Text().Header().standardNameSpace);
}
gcstring NodeMap::GetProductGuid() {
    return ToGc(context_.Text().Header().productGuid);
}
gcstring NodeMap::GetVersionGuid() {
    return ToGc(context_.Text().Header().versionGuid);
}

void NodeMap::GetGenApiVersion(Version_t& Version, std::uint16_t& Build) {
    Version.Major = 3;
    Version.Minor = 2;
    Version.SubMinor = 0;
    Build = 0;
}

void NodeMap::GetSchemaVersion(Version_t& Version) {
    const DescriptionHeader& header = context_.Text().Header();
    Version.Major = static_cast<std::uint16_t>(header.schemaMajorVersion);
    Version.Minor = static_cast<std::uint16_t>(header.schemaMinorVersion);
    Version.SubMinor = static_cast<std::uint16_t>(header.schemaSubMinorVersion);
}

void NodeMap::GetDeviceVersion(Version_t& Version) {
    const DescriptionHeader& header = context_.Text().Header();
    Version.Major = static_cast<std::uint16_t>(header.majorVersion);
    Version.Minor = static_cast<std::uint16_t>(header.minorVersion);
    Version.SubMinor = static_cast<std::uint16_t>(header.subMinorVersion);
}

} // namespace Engine
} // namespace GenApi_3_2
