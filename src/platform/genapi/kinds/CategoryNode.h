// Category: a named list of features.
#pragma once

#include "platform/genapi/nodes/NodeBase.h"

#include <vector>

namespace GenApi_3_2 {
namespace Engine {

class CategoryNode final : public NodeBase, public ICategory {
public:
    CategoryNode(NodeContext& context, const NodeRecord& record) : NodeBase(context, record, intfICategory) {}

    void GetFeatures(FeatureList_t& Features) const override {
        Features.assign(features_.begin(), features_.end());
    }

protected:
    bool Take(const Element& element) override {
        if (element.id != ElementId::pFeature)
            return false;
        if (NodeBase* node = Refer(element, Role::Feature))
            features_.push_back(node);
        return true;
    }
    EAccessMode DefaultAccess() const override { return RO; }

private:
    std::vector<NodeBase*> features_;
};

// Nodes that a description may hold but that stand for nothing a client could use.
class PlainNode final : public NodeBase {
public:
    PlainNode(NodeContext& context, const NodeRecord& record) : NodeBase(context, record, intfIBase) {}
};

} // namespace Engine
} // namespace GenApi_3_2
