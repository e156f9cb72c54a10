// Builds a node map from a description and connects it to its owner's registers. Owned by the owner's
// configurer; the description's bytes outlive the factory, the factory outlives nothing that needs it.
#pragma once

#include "genicam/IGenApi.h"
#include "vx3/genicam/IGenIObj.h"

#include <memory>
#include <string>

namespace VX3 {

namespace GenICam {
class NodeMapFactory;
}

class GenApiRI : public IGenApi {
public:
    // `xml` named *.xml or *.zip (any case); anything else, or a description that cannot be used, leaves the
    // object without node map (logged, never thrown). A null `portName` connects the port "Device". The owner
    // is only referred to weakly.
    GenApiRI(std::unique_ptr<IXmlData> xml, std::weak_ptr<IGenIObj> owner, const char* portName);
    ~GenApiRI() override;
    GenApiRI(const GenApiRI&) = delete;
    GenApiRI& operator=(const GenApiRI&) = delete;

    IXmlData* GetXmlData() override { return xml_.get(); }
    std::shared_ptr<GenICam::INodeMap> GetNodeMap() override { return nodeMap_; }
    std::string Failure() const override { return failure_; }
    GenICam::NodeValue GetNodeValue(const std::string& name) override;
    StatusCode SetNodeValue(const std::string& name, GenICam::NodeValue& value) override;

private:
    // Static: a caller's share of the node map may outlive this object.
    static void NodeCallBack(GenICam::INode* node);
    void LoadDescription();
    void CreateNodeMap();

    const std::weak_ptr<IGenIObj> owner_;
    std::unique_ptr<IXmlData> xml_;
    std::unique_ptr<GenICam::NodeMapFactory> factory_;
    std::shared_ptr<GenICam::INodeMap> nodeMap_;
    std::string failure_;
};

} // namespace VX3
