#include "genicam/NodeMapA.h"

#include "genicam/BooleanA.h"
#include "genicam/CategoryA.h"
#include "genicam/CommandA.h"
#include "genicam/EnumEntryA.h"
#include "genicam/EnumerationA.h"
#include "genicam/FloatA.h"
#include "genicam/GenIDevicePort.h"
#include "genicam/IntegerA.h"
#include "genicam/RegisterA.h"
#include "genicam/StringA.h"

#if __has_include("GenApi/vx3/Problems.h")
#include "GenApi/vx3/Problems.h"
#define VX3_GENAPI_TELLS_PROBLEMS 1
#endif

#include <utility>

namespace VX3::GenICam {

void NodeMapDestroyer::operator()(GenApi_3_2::INodeMap* map) const {
    if (auto* destroyable = dynamic_cast<GenApi_3_2::IDestroy*>(map))
        destroyable->Destroy();
}

NodeMapA::NodeMapA(GenApiNodeMap map, std::function<void(INode*)> callback)
    : callback_(std::move(callback)), map_(std::move(map)) {}

NodeMapA::~NodeMapA() {
    for (std::unique_ptr<INode>& wrapper : wrappers_)
        wrapper.reset();
    map_.reset();
}

const std::vector<INode*>& NodeMapA::GetNodes() const {
    if (!built_.load(std::memory_order_acquire))
        BuildWrappers();
    return nodes_;
}

// Under GenApi's lock, which a node callback that looks a node up holds already.
void NodeMapA::BuildWrappers() const {
    const GenApi_3_2::AutoLock lock(map_->GetLock());
    if (built_.load(std::memory_order_relaxed))
        return;
    GenApi_3_2::NodeList_t genApiNodes;
    map_->GetNodes(genApiNodes);
    wrappers_.clear();
    nodes_.clear();
    wrappers_.reserve(genApiNodes.size());
    nodes_.reserve(genApiNodes.size());
    for (GenApi_3_2::INode* node : genApiNodes) {
        indexes_[node->GetName(false).c_str()] = static_cast<unsigned int>(nodes_.size());
        wrappers_.push_back(CreateWrapper(node));
        nodes_.push_back(wrappers_.back().get());
    }
    built_.store(true, std::memory_order_release);
}

std::unique_ptr<INode> NodeMapA::CreateWrapper(GenApi_3_2::INode* node) const {
    switch (node->GetPrincipalInterfaceType()) {
    case GenApi_3_2::intfIInteger:
        return std::make_unique<IntegerA>(this, node, callback_);
    case GenApi_3_2::intfIBoolean:
        return std::make_unique<BooleanA>(this, node, callback_);
    case GenApi_3_2::intfICommand:
        return std::make_unique<CommandA>(this, node, callback_);
    case GenApi_3_2::intfIFloat:
        return std::make_unique<FloatA>(this, node, callback_);
    case GenApi_3_2::intfIString:
        return std::make_unique<StringA>(this, node, callback_);
    case GenApi_3_2::intfIRegister:
        return std::make_unique<RegisterA>(this, node, callback_);
    case GenApi_3_2::intfICategory:
        return std::make_unique<CategoryA>(this, node, callback_);
    case GenApi_3_2::intfIEnumeration:
        return std::make_unique<EnumerationA>(this, node, callback_);
    case GenApi_3_2::intfIEnumEntry:
        return std::make_unique<EnumEntryA>(this, node, callback_);
    default:
        return nullptr;
    }
}

INode* NodeMapA::GetNode(const std::string& name) const {
    const std::vector<INode*>& nodes = GetNodes();
    const auto found = indexes_.find(name);
    return found == indexes_.end() ? nullptr : nodes[found->second];
}

void NodeMapA::InvalidateNodes() const {
    map_->InvalidateNodes();
}

std::string NodeMapA::GetDeviceName() {
    return map_->GetDeviceName().c_str();
}

void NodeMapA::Poll(long elapsedMs) {
    map_->Poll(elapsedMs);
}

std::uint64_t NodeMapA::GetNumNodes() const {
    return map_->GetNumNodes();
}

// The old port of that name lives until GenApi has the new one: it holds plain pointers.
bool NodeMapA::Connect(std::weak_ptr<IGenIObj> owner, const std::string& portName) const {
    auto port = std::make_unique<GenIDevicePort>(std::move(owner));
    if (!map_->Connect(port.get(), portName.c_str()))
        return false;
    ports_[portName] = std::move(port);
    return true;
}

bool NodeMapA::Connect(std::weak_ptr<IGenIObj> owner) const {
    auto port = std::make_unique<GenIDevicePort>(std::move(owner));
    if (!map_->Connect(port.get()))
        return false;
    ports_[std::string()] = std::move(port);
    return true;
}

std::vector<std::string> NodeMapA::GetPortNames() const {
    GenApi_3_2::NodeList_t nodes;
    map_->GetNodes(nodes);
    std::vector<std::string> names;
    for (const GenApi_3_2::INode* node : nodes)
        if (node->GetPrincipalInterfaceType() == GenApi_3_2::intfIPort)
            names.emplace_back(node->GetName(false).c_str());
    return names;
}

std::vector<DescriptionProblem> NodeMapA::GetProblems() const {
    std::vector<DescriptionProblem> problems;
#ifdef VX3_GENAPI_TELLS_PROBLEMS
    for (const GenApi_3_2::vx3::NodeMapProblem& problem : GenApi_3_2::vx3::GetProblems(*map_))
        problems.push_back({problem.line, problem.node, problem.text});
#endif
    return problems;
}

} // namespace VX3::GenICam
