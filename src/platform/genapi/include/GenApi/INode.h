// What every node of a map has: names, texts, links, callbacks.
#pragma once

#include "GenApi/IBase.h"

namespace GenApi_3_2 {

class INodeMap;
class CNodeCallback;

class INode : virtual public IBase {
public:
    virtual gcstring GetName(bool FullQualified = false) const = 0;
    virtual ENameSpace GetNameSpace() const = 0;
    virtual EVisibility GetVisibility() const = 0;
    virtual void InvalidateNode() = 0;
    virtual bool IsCachable() const = 0;
    virtual EYesNo IsAccessModeCacheable() const = 0;
    virtual ECachingMode GetCachingMode() const = 0;
    // Milliseconds between two polls; -1 when the node is not polled.
    virtual std::int64_t GetPollingTime() const = 0;
    virtual gcstring GetToolTip() const = 0;
    virtual gcstring GetDescription() const = 0;
    virtual gcstring GetDisplayName() const = 0;
    virtual gcstring GetDeviceName() const = 0;
    virtual void GetChildren(NodeList_t& Children, ELinkType LinkType = ctReadingChildren) const = 0;
    virtual void GetParents(NodeList_t& Parents) const = 0;
    // Takes over the callback; it is destroyed by DeregisterCallback or with the node.
    virtual CallbackHandleType RegisterCallback(CNodeCallback* pCallback) = 0;
    virtual bool DeregisterCallback(CallbackHandleType hCallback) = 0;
    virtual INodeMap* GetNodeMap() const = 0;
    virtual gcstring GetEventID() const = 0;
    virtual bool IsStreamable() const = 0;
    virtual void GetPropertyNames(gcstring_vector& PropertyNames) const = 0;
    // Several values of one property are separated by tabs, and so are their attributes.
    virtual bool GetProperty(const gcstring& PropertyName, gcstring& ValueStr, gcstring& AttributeStr) = 0;
    virtual void ImposeAccessMode(EAccessMode ImposedAccessMode) = 0;
    virtual void ImposeVisibility(EVisibility ImposedVisibility) = 0;
    virtual INode* GetAlias() const = 0;
    virtual INode* GetCastAlias() const = 0;
    virtual gcstring GetDocuURL() const = 0;
    virtual bool IsDeprecated() const = 0;
    virtual EInterfaceType GetPrincipalInterfaceType() const = 0;
    // True for the nodes that can be reached from the category "Root".
    virtual bool IsFeature() const = 0;
};

} // namespace GenApi_3_2
