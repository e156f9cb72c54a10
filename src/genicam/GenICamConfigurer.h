// The configurer of a GenICam object: values by name over its node map, every exception turned into a code.
// Owned by the device or stream it configures.
#pragma once

#include "genicam/AbsConfigurer.h"
#include "genicam/IGenApi.h"

#include <memory>
#include <string>

namespace VX3 {

class GenICamConfigurer : public AbsConfigurer {
public:
    // `owner` is the object that hands this configurer out and outlives it. A null `genApi` answers as one
    // without node map.
    GenICamConfigurer(std::unique_ptr<IGenApi> genApi, IObject* owner);
    ~GenICamConfigurer() override;

    std::shared_ptr<GenICam::INodeMap> GetNodeMap() override;
    GenICam::NodeValue GetNodeValue(const std::string& name) override;
    StatusCode ReadNodeValue(const std::string& name, GenICam::NodeValue& value) override;
    IXmlData* GetXmlData() override;
    using AbsConfigurer::SetNodeValue;
    StatusCode SetNodeValue(const std::string& name, GenICam::NodeValue& value) override;

private:
    // Without a node map, or without that node in it: the code and, as the thread's last failure, the reason.
    StatusCode FailWithoutNode(const std::string& name);

    std::unique_ptr<IGenApi> genApi_;
};

} // namespace VX3
