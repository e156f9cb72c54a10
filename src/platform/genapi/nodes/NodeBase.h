// The value side of all nodes: reading, writing and checking of numbers and texts through the cache, and the
// building of a node from its elements. Owned by the NodeContext. Everything not inherited from the GenApi
// interfaces is called with the map's lock held.
#pragma once

#include "platform/genapi/base/Ranges.h"
#include "platform/genapi/nodes/CachedValue.h"
#include "platform/genapi/nodes/Failure.h"
#include "platform/genapi/nodes/NodeFace.h"

#include <string>

namespace GenApi_3_2 {
namespace Engine {

class NodeBase : public NodeFace, virtual public IValue {
public:
    NodeBase(NodeContext& context, const NodeRecord& record, EInterfaceType interfaceType)
        : NodeFace(context, record, interfaceType) {}

    // INode, what depends on the value
    void InvalidateNode() override;
    bool IsCachable() const override { return value_.IsCachable(); }
    ECachingMode GetCachingMode() const override { return IsCachable() ? OwnCaching() : NoCache; }
    void GetChildren(NodeList_t& Children, ELinkType LinkType = ctReadingChildren) const override;
    void GetParents(NodeList_t& Parents) const override;
    void ImposeAccessMode(EAccessMode ImposedAccessMode) override;

    // IValue
    INode* GetNode() override { return this; }
    gcstring ToString(bool Verify = false, bool IgnoreCache = false) override;
    void FromString(const gcstring& ValueStr, bool Verify = true) override;
    bool IsValueCacheValid() const override;

    // The value as a number: from the cache, or fetched. Texts and categories have none and throw.
    std::int64_t GetInteger(bool ignoreCache = false) {
        const std::int64_t* known = value_.Integer();
        return known && !ignoreCache ? *known : FetchInteger(ignoreCache);
    }
    double GetFloat(bool ignoreCache = false) {
        const double* known = value_.Float();
        return known && !ignoreCache ? *known : FetchFloat(ignoreCache);
    }
    std::string GetText(bool ignoreCache = false);
    void SetInteger(std::int64_t value, bool verify);
    void SetFloat(double value, bool verify);
    void SetText(const std::string& value, bool verify);
    // The value as a Float over this node sees it: enumerations have numbers of their own for that.
    virtual double GetNumeric(bool ignoreCache) { return GetFloat(ignoreCache); }
    virtual void SetNumeric(double value, bool verify) { SetFloat(value, verify); }
    // The node that holds what this node shows unchanged: its unit is this node's too. Null when there is
    // none, or it cannot be found out now.
    virtual NodeBase* Origin() const { return nullptr; }
    // Bounds are evaluated anew at each call.
    virtual IntegerRange GetRange();
    virtual FloatRange GetFloatRange();
    virtual bool IsFloating() const { return false; }

    // Reads the record's elements and finds the nodes they name. Called once, after all nodes were made.
    void ReadElements();
    // Switches the node off for good: it is not available, and its value operations throw this text.
    void SetBroken(const Element* element, const std::string& reason, bool isNew = true);
    bool IsBroken() const { return isBroken_; }
    // What was found out about the links of all nodes: may the value and the access mode be kept?
    void SetCachable(bool isValueCachable, bool isAccessCachable);

    // The node that a reference names, null when there is none; remembers the link.
    NodeBase* Refer(const Element& element, Role role);
    // The same, and the node is switched off when there is none.
    NodeBase* Require(const Element& element, Role role);
    void AddLink(NodeBase& node, Role role) { context_.Links().push_back({&node, role}); }
    void Report(const Element& element, const std::string& text);
    // Tells the cache that this node has a new value of its own.
    void Changed();

    // The caching that the node itself allows, apart from what it is calculated from.
    virtual ECachingMode OwnCaching() const { return WriteThrough; }
    // Forgets what was read from the device.
    virtual void DropValue() { value_.Drop(); }
    // True when a change of another node at the same address may change this node's bits.
    virtual bool SharesBitsWith(const NodeBase&) const { return true; }
    // The mode that inner nodes and the port allow.
    virtual EAccessMode InnerAccess() const { return RW; }
    VisitMarks& Marks() { return marks_; }
    // Counts this node; throws when an operation visits more nodes than any sane description needs.
    void Visit() const {
        if (!context_.CountVisit())
            FailEndless();
    }

protected:
    // Takes an element that the node type knows; false hands it to the common ones.
    virtual bool Take(const Element&) { return false; }
    // Called when all elements were taken.
    virtual void Finish() {}
    virtual EAccessMode DefaultAccess() const { return RW; }

    // What the node type is made of.
    virtual std::int64_t ReadInteger(bool ignoreCache);
    virtual double ReadFloat(bool ignoreCache);
    virtual std::string ReadText(bool ignoreCache);
    virtual void WriteInteger(std::int64_t value, bool verify);
    virtual void WriteFloat(double value, bool verify);
    virtual void WriteText(const std::string& value, bool verify);
    // Throw when the value may not be written.
    virtual void VerifyInteger(std::int64_t value);
    void VerifyFloat(double value);
    virtual gcstring ShownText(bool ignoreCache);
    virtual void TakeShownText(const gcstring& text, bool verify);
    virtual bool HasValidCache() const { return value_.IsKnown(); }

    void RequireReadable() const;
    void RequireWritable() const;
    // Throws when the node is switched off; counts the visit.
    void Enter() const;
    // The element of this node or, where it has none, of the nodes whose value it shows; null without any.
    const Element* FindAtOrigin(ElementId id) const;
    // Runs a public write: checks, writes, tells those who depend on this node.
    template <class Function>
    void Write(bool verify, Function&& write);

    CachedValue value_;

private:
    [[noreturn]] void FailEndless() const;
    std::int64_t FetchInteger(bool ignoreCache);
    double FetchFloat(bool ignoreCache);
    void TakeCommon(const Element& element);
    void CheckDeviceError();

    bool isBroken_ = false;
    VisitMarks marks_;
    NodeBase* error_ = nullptr;
};

template <class Function>
void NodeBase::Write(bool verify, Function&& write) {
    const Operation operation(context_);
    try {
        if (verify)
            RequireWritable();
        write();
        Changed();
        CheckDeviceError();
    } catch (...) {
        // What was written before the failure has changed all the same.
        context_.FireChanged();
        throw;
    }
    context_.FireChanged();
}

} // namespace Engine
} // namespace GenApi_3_2
