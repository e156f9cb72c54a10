#include "genicam/NodeA.h"

#include "core/ClientCall.h"

#include <utility>

namespace VX3::GenICam {

namespace {

std::string Text(const GenApi_3_2::gcstring& text) {
    return text.c_str();
}

} // namespace

NodeA::NodeA(const INodeMap* map, GenApi_3_2::INode* node, const std::function<void(INode*)>& callback)
    : map_(map), node_(node), mapCallback_(this, callback), name_(Text(node->GetName(false))) {
    handle_ = GenApi_3_2::Register(node_, *this, &NodeA::NodeCallBack, GenApi_3_2::cbPostInsideLock);
}

NodeA::~NodeA() {
    GenApi_3_2::Deregister(handle_);
}

void NodeA::NodeCallBack(GenApi_3_2::INode* changed) {
    if (changed != node_)
        return;
    mapCallback_();
    if (const std::shared_ptr<Callback> callback = userCallback_)
        if (const ClientCall call; call)
            (*callback)();
}

long NodeA::RegisterCallback(std::function<void(INode*)> callback) {
    ClientCall::CloseAtExit();
    auto registered = std::make_shared<Callback>(this, std::move(callback));
    const GenApi_3_2::AutoLock lock(node_->GetNodeMap()->GetLock());
    userCallback_ = std::move(registered);
    return static_cast<long>(reinterpret_cast<std::intptr_t>(userCallback_.get()));
}

bool NodeA::DeregisterCallback(long& /*handle*/) {
    const GenApi_3_2::AutoLock lock(node_->GetNodeMap()->GetLock());
    userCallback_.reset();
    return true;
}

INode* NodeA::WrapperOf(const GenApi_3_2::INode* node) const {
    return node ? map_->GetNode(Text(node->GetName(false))) : nullptr;
}

std::vector<INode*> NodeA::WrappersOf(const GenApi_3_2::NodeList_t& nodes) const {
    std::vector<INode*> wrappers;
    for (const GenApi_3_2::INode* node : nodes)
        if (INode* wrapper = WrapperOf(node))
            wrappers.push_back(wrapper);
    return wrappers;
}

std::vector<INode*> NodeA::GetChildren(ELinkType type) const {
    GenApi_3_2::NodeList_t children;
    node_->GetChildren(children, static_cast<GenApi_3_2::ELinkType>(type));
    return WrappersOf(children);
}

std::vector<INode*> NodeA::GetParents() const {
    GenApi_3_2::NodeList_t parents;
    node_->GetParents(parents);
    return WrappersOf(parents);
}

EAccessMode NodeA::GetAccessMode() const {
    return static_cast<EAccessMode>(node_->GetAccessMode());
}

ENameSpace NodeA::GetNameSpace() const {
    return static_cast<ENameSpace>(node_->GetNameSpace());
}

EVisibility NodeA::GetVisibility() const {
    return static_cast<EVisibility>(node_->GetVisibility());
}

void NodeA::InvalidateNode() {
    node_->InvalidateNode();
}

bool NodeA::IsCachable() const {
    return node_->IsCachable();
}

bool NodeA::IsAccessModeCacheable() const {
    return node_->IsAccessModeCacheable() == GenApi_3_2::Yes;
}

ECachingMode NodeA::GetCachingMode() const {
    return static_cast<ECachingMode>(node_->GetCachingMode());
}

std::int64_t NodeA::GetPollingTime() const {
    return node_->GetPollingTime();
}

std::string NodeA::GetToolTip() const {
    return Text(node_->GetToolTip());
}

std::string NodeA::GetDescription() const {
    return Text(node_->GetDescription());
}

std::string NodeA::GetDisplayName() const {
    return Text(node_->GetDisplayName());
}

std::string NodeA::GetDeviceName() const {
    return Text(node_->GetDeviceName());
}

std::string NodeA::GetEventID() const {
    return Text(node_->GetEventID());
}

bool NodeA::IsStreamable() const {
    return node_->IsStreamable();
}

bool NodeA::GetProperty(const std::string& name, std::string& value, std::string& attribute) const {
    GenApi_3_2::gcstring valueText;
    GenApi_3_2::gcstring attributeText;
    const bool found = node_->GetProperty(name.c_str(), valueText, attributeText);
    value = Text(valueText);
    attribute = Text(attributeText);
    return found;
}

std::string NodeA::GetRepresentation(const std::string& /*unused*/) const {
    std::string value;
    std::string attribute;
    return GetProperty("Representation", value, attribute) ? value : std::string();
}

std::vector<std::string> NodeA::GetPropertyNames() const {
    GenApi_3_2::gcstring_vector names;
    node_->GetPropertyNames(names);
    std::vector<std::string> texts;
    for (const GenApi_3_2::gcstring& name : names)
        texts.push_back(Text(name));
    return texts;
}

EInterfaceType NodeA::GetPrincipalInterfaceType() const {
    return static_cast<EInterfaceType>(node_->GetPrincipalInterfaceType());
}

bool NodeA::IsFeature() const {
    return node_->IsFeature();
}

} // namespace VX3::GenICam
