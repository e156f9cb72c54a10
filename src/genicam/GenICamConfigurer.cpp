#include "genicam/GenICamConfigurer.h"

#include <utility>

namespace VX3 {

using GenICam::NodeValue;

GenICamConfigurer::GenICamConfigurer(std::unique_ptr<IGenApi> genApi, IObject* owner)
    : AbsConfigurer(owner), genApi_(std::move(genApi)) {}

GenICamConfigurer::~GenICamConfigurer() = default;

std::shared_ptr<GenICam::INodeMap> GenICamConfigurer::GetNodeMap() {
    return genApi_ ? genApi_->GetNodeMap() : nullptr;
}

IXmlData* GenICamConfigurer::GetXmlData() {
    return genApi_ ? genApi_->GetXmlData() : nullptr;
}

// GenApi throws its exceptions, the port and the checked pointers throw C texts, and a node callback of the
// client may throw anything: nothing of it may leave the library.
NodeValue GenICamConfigurer::GetNodeValue(const std::string& name) {
    if (!genApi_)
        return {};
    try {
        return genApi_->GetNodeValue(name);
    } catch (...) {
        return {};
    }
}

StatusCode GenICamConfigurer::SetNodeValue(const std::string& name, NodeValue& value) {
    if (!genApi_)
        return Status::Generic;
    try {
        return genApi_->SetNodeValue(name, value);
    } catch (...) {
        return Status::NodeFailed;
    }
}

} // namespace VX3
