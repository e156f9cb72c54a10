#include "genicam/GenICamConfigurer.h"

#include "genicam/PortFailure.h"
#include "vx3/core/LastFailure.h"

#include <utility>

namespace VX3 {

using GenICam::NodeValue;

namespace {

// The failure on its way, as the thread's last one. GenApi throws its exceptions, the port those that carry
// the owner's code, the checked pointers C texts, and a node callback of the client anything.
StatusCode ExplainException(const std::string& node) {
    const std::string place = node + ": ";
    try {
        throw;
    } catch (const GenICam::PortException<GenICam_3_2::TimeoutException>& exception) {
        return SetLastFailure(exception.Code(), place + exception.GetDescription());
    } catch (const GenICam::PortException<GenICam_3_2::AccessException>& exception) {
        return SetLastFailure(exception.Code(), place + exception.GetDescription());
    } catch (const GenICam_3_2::GenericException& exception) {
        return SetLastFailure(Status::NodeFailed, exception.GetDescription());
    } catch (const std::exception& exception) {
        return SetLastFailure(Status::NodeFailed, place + exception.what());
    } catch (const char* text) {
        return SetLastFailure(Status::NodeFailed, place + text);
    } catch (...) {
        return SetLastFailure(Status::NodeFailed, place + "something unknown was thrown");
    }
}

} // namespace

GenICamConfigurer::GenICamConfigurer(std::unique_ptr<IGenApi> genApi, IObject* owner)
    : AbsConfigurer(owner), genApi_(std::move(genApi)) {}

GenICamConfigurer::~GenICamConfigurer() = default;

std::shared_ptr<GenICam::INodeMap> GenICamConfigurer::GetNodeMap() {
    return genApi_ ? genApi_->GetNodeMap() : nullptr;
}

IXmlData* GenICamConfigurer::GetXmlData() {
    return genApi_ ? genApi_->GetXmlData() : nullptr;
}

StatusCode GenICamConfigurer::FailWithoutNode(const std::string& name) {
    const auto map = GetNodeMap();
    if (!map)
        return SetLastFailure(Status::Generic,
                              name + ": there is no node map" + (genApi_ ? ": " + genApi_->Failure() : ""));
    if (map->GetNode(name) == nullptr)
        return SetLastFailure(Status::NotFound, "there is no feature \"" + name + "\"");
    return Status::Ok;
}

NodeValue GenICamConfigurer::GetNodeValue(const std::string& name) {
    NodeValue value;
    (void)ReadNodeValue(name, value); // an empty value says that it failed
    return value;
}

StatusCode GenICamConfigurer::ReadNodeValue(const std::string& name, NodeValue& value) {
    try {
        value = genApi_ ? genApi_->GetNodeValue(name) : NodeValue();
        if (!value.IsEmpty())
            return Status::Ok;
        const StatusCode missing = FailWithoutNode(name);
        return Failed(missing) ? missing
                               : SetLastFailure(Status::NotSupported, name + " is no feature with a value");
    } catch (...) {
        value = NodeValue();
        return ExplainException(name);
    }
}

StatusCode GenICamConfigurer::SetNodeValue(const std::string& name, NodeValue& value) {
    ClearLastFailure(); // what it holds afterwards is about this value
    if (!genApi_)
        return FailWithoutNode(name);
    const std::uint64_t before = FailureCount();
    try {
        const StatusCode status = genApi_->SetNodeValue(name, value);
        if (!Failed(status) || FailureCount() != before)
            return status;
        if (status == Status::NotConnected)
            return SetLastFailure(status, name + ": the device is not connected any more");
        const StatusCode missing = FailWithoutNode(name);
        return Failed(missing) ? missing : SetLastFailure(status, name + " cannot be set to this");
    } catch (...) {
        (void)ExplainException(name); // its code may be the port's; to the caller the node has failed
        return Status::NodeFailed;
    }
}

} // namespace VX3
