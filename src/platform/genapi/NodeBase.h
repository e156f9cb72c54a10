// What all nodes share: their record, links to other nodes, cached value and access mode, callbacks. Owned by
// the NodeMap. Everything not inherited from the GenApi interfaces is called with the map's lock held.
#pragma once

#include "GenApi/GenApi.h"
#include "platform/genapi/Description.h"
#include "platform/genapi/Failure.h"
#include "platform/genapi/Ranges.h"

#include <memory>
#include <string>
#include <vector>

namespace GenApi_3_2 {
namespace Engine {

class NodeBase;
class NodeMap;

// Why a node mentions another one; this decides what depends on what.
enum class Role : std::uint8_t {
    Target,      // the value is that node's value
    Copy,        // gets every written value, is not read
    Variable,    // the value is calculated from that node's value
    Index,       // selects the value or is part of a register's address
    Bound,       // minimum, maximum or increment
    BoundOf,     // the value is calculated from that node's bounds
    Condition,   // implemented, available or locked
    Entry,       // of an enumeration
    Port,        // of a register
    Written,     // read when this node is written
    Invalidator, // a change of that node makes this node's value unknown
    Feature,     // of a category
};

struct Link {
    NodeBase* node;
    Role role;
};

// A slice of an array that the map owns.
struct LinkSpan {
    const Link* first = nullptr;
    std::size_t count = 0;
    const Link* begin() const { return first; }
    const Link* end() const { return first + count; }
};

class NodeBase : virtual public INode, virtual public IValue, public ISelector {
public:
    NodeBase(NodeMap& map, const NodeRecord& record, EInterfaceType interfaceType);
    ~NodeBase() override;
    NodeBase(const NodeBase&) = delete;
    NodeBase& operator=(const NodeBase&) = delete;

    // IBase and INode
    EAccessMode GetAccessMode() const override;
    gcstring GetName(bool FullQualified = false) const override;
    ENameSpace GetNameSpace() const override;
    EVisibility GetVisibility() const override;
    void InvalidateNode() override;
    bool IsCachable() const override { return cachable_; }
    EYesNo IsAccessModeCacheable() const override { return accessCachable_ ? Yes : No; }
    ECachingMode GetCachingMode() const override;
    std::int64_t GetPollingTime() const override { return pollingTime_; }
    gcstring GetToolTip() const override;
    gcstring GetDescription() const override;
    gcstring GetDisplayName() const override;
    gcstring GetDeviceName() const override;
    void GetChildren(NodeList_t& Children, ELinkType LinkType = ctReadingChildren) const override;
    void GetParents(NodeList_t& Parents) const override;
    CallbackHandleType RegisterCallback(CNodeCallback* pCallback) override;
    bool DeregisterCallback(CallbackHandleType hCallback) override;
    INodeMap* GetNodeMap() const override;
    gcstring GetEventID() const override;
    bool IsStreamable() const override;
    void GetPropertyNames(gcstring_vector& PropertyNames) const override;
    bool GetProperty(const gcstring& PropertyName, gcstring& ValueStr, gcstring& AttributeStr) override;
    void ImposeAccessMode(EAccessMode ImposedAccessMode) override;
    void ImposeVisibility(EVisibility ImposedVisibility) override;
    INode* GetAlias() const override { return alias_; }
    INode* GetCastAlias() const override { return castAlias_; }
    gcstring GetDocuURL() const override;
    bool IsDeprecated() const override;
    EInterfaceType GetPrincipalInterfaceType() const override { return interfaceType_; }
    bool IsFeature() const override { return isFeature_; }

    // IValue
    INode* GetNode() override { return this; }
    gcstring ToString(bool Verify = false, bool IgnoreCache = false) override;
    void FromString(const gcstring& ValueStr, bool Verify = true) override;
    bool IsValueCacheValid() const override;

    // ISelector
    bool IsSelector() const override { return !selected_.empty(); }
    void GetSelectedFeatures(FeatureList_t& Features) const override;
    void GetSelectingFeatures(FeatureList_t& Features) const override;

    // The value as a number: from the cache, or fetched. Texts and categories have none and throw.
    std::int64_t GetInteger(bool ignoreCache = false) {
        if (valueState_ == ValueState::Integer && !ignoreCache)
            return value_.integer;
        return FetchInteger(ignoreCache);
    }
    double GetFloat(bool ignoreCache = false) {
        if (valueState_ == ValueState::Float && !ignoreCache)
            return value_.real;
        return FetchFloat(ignoreCache);
    }
    std::string GetText(bool ignoreCache = false);
    void SetInteger(std::int64_t value, bool verify);
    void SetFloat(double value, bool verify);
    void SetText(const std::string& value, bool verify);
    // The value as a Float over this node sees it: enumerations have numbers of their own for that.
    virtual double GetNumeric(bool ignoreCache) { return GetFloat(ignoreCache); }
    virtual void SetNumeric(double value, bool verify) { SetFloat(value, verify); }
    // Bounds are evaluated anew at each call.
    virtual IntegerRange GetRange();
    virtual FloatRange GetFloatRange();
    virtual bool IsFloating() const { return false; }

    // The effective access mode; never throws.
    EAccessMode AccessMode() const;

    // Reads the record's elements and finds the nodes they name. Called once, after all nodes were made.
    void ReadElements();
    void AddSelecting(NodeBase& selector) { selecting_.push_back(&selector); }

    // Switches the node off for good: it is not available, and its value operations throw this text.
    void SetBroken(const Element* element, const std::string& reason, bool isNew = true);
    bool IsBroken() const { return broken_; }

    // The node that a reference names, null when there is none; remembers the link.
    NodeBase* Refer(const Element& element, Role role);
    // The same, and the node is switched off when there is none.
    NodeBase* Require(const Element& element, Role role);
    void AddLink(NodeBase& node, Role role);
    void Report(const Element& element, const std::string& text);
    // Tells the cache that this node has a new value of its own.
    void Changed();

    const NodeRecord& Record() const { return record_; }
    NodeMap& Map() const { return map_; }
    std::string_view Name() const { return record_.name; }
    LinkSpan Links() const;

    // The caching that the node itself allows, apart from what it is calculated from.
    virtual ECachingMode OwnCaching() const { return WriteThrough; }
    // Forgets what was read from the device.
    virtual void DropValue() { valueState_ = ValueState::None; }
    void DropAccess() const { accessCache_ = _UndefinedAccesMode; }
    // True when a change of another node at the same address may change this node's bits.
    virtual bool SharesBitsWith(const NodeBase&) const { return true; }

protected:
    // Takes an element that the node type knows; false hands it to the common ones.
    virtual bool Take(const Element&) { return false; }
    // Called when all elements were taken.
    virtual void Finish() {}

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
    virtual bool HasValidCache() const { return valueState_ != ValueState::None; }
    // The mode that inner nodes and the port allow.
    virtual EAccessMode InnerAccess() const { return RW; }
    virtual EAccessMode DefaultAccess() const { return RW; }

    // Keeps a fetched value if the node is cachable.
    void KeepInteger(std::int64_t value);
    void KeepFloat(double value);

    void RequireReadable() const;
    void RequireWritable() const;
    // Runs a public write: checks, writes, tells those who depend on this node.
    template <class Function>
    void Write(bool verify, Function&& write);
    // Runs a public operation under the map's lock.
    template <class Function>
    auto Locked(Function&& function) const;
    // Throws when the node is switched off or an operation visits more nodes than any sane description needs.
    void Enter() const;

private:
    friend class Cache;
    friend class LinkCheck;
    friend class NodeMap;
    friend class AccessRules;
    enum class ValueState : std::uint8_t { None, Integer, Float };
    struct Callbacks;

    std::int64_t FetchInteger(bool ignoreCache);
    double FetchFloat(bool ignoreCache);
    void TakeCommon(const Element& element);
    void TakeCondition(const Element& element);
    void CheckDeviceError();
    void Fire(ECallbackType type);
    gcstring TextProperty(ElementId id, bool isHelp) const;

    union {
        std::int64_t integer;
        double real;
    } value_ = {0};
    ValueState valueState_ = ValueState::None;
    bool cachable_ = false;
    bool accessCachable_ = false;
    bool broken_ = false;
    bool isFeature_ = false;
    EInterfaceType interfaceType_;
    mutable EAccessMode accessCache_ = _UndefinedAccesMode;
    EAccessMode ownMode_ = RW;
    EAccessMode imposedMode_ = RW;
    EVisibility imposedVisibility_ = _UndefinedVisibility;
    std::uint32_t firstLink_ = 0;
    std::uint32_t linkCount_ = 0;
    std::uint32_t upEpoch_ = 0;
    std::uint32_t downEpoch_ = 0;
    NodeMap& map_;
    const NodeRecord& record_;
    NodeBase* isImplemented_ = nullptr;
    NodeBase* isAvailable_ = nullptr;
    NodeBase* isLocked_ = nullptr;
    NodeBase* error_ = nullptr;
    NodeBase* blockPolling_ = nullptr;
    NodeBase* alias_ = nullptr;
    NodeBase* castAlias_ = nullptr;
    std::int64_t pollingTime_ = -1;
    std::int64_t sinceLastPoll_ = 0;
    std::vector<NodeBase*> selected_;
    std::vector<NodeBase*> selecting_;
    std::unique_ptr<Callbacks> callbacks_;
};

} // namespace Engine
} // namespace GenApi_3_2
