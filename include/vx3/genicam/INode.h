// A node of a camera's description, and the typed interfaces its wrappers offer.
//
// Operations may raise GenApi's exceptions (derived from std::exception) on range, access or transport
// errors; name-based access through IConfigurer turns them into status codes. One node map's operations are
// serialised by the map's own recursive lock. Node pointers belong to the node map.
#pragma once

#include "vx3/core/Export.h"
#include "vx3/genicam/Types.h"
#include "vx3/genicam/Variant.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace VX3::GenICam {

class VX3_API IBase {
public:
    virtual EAccessMode GetAccessMode() const = 0;
    virtual ~IBase() = default;
};

class VX3_API INode : public virtual IBase {
public:
    virtual std::string GetName() const = 0;
    virtual ENameSpace GetNameSpace() const = 0;
    virtual EVisibility GetVisibility() const = 0;
    virtual void InvalidateNode() = 0;
    virtual bool IsCachable() const = 0;
    virtual bool IsAccessModeCacheable() const = 0;
    virtual ECachingMode GetCachingMode() const = 0;
    // Milliseconds; -1 when the node is not polled.
    virtual std::int64_t GetPollingTime() const = 0;
    virtual std::string GetToolTip() const = 0;
    virtual std::string GetDescription() const = 0;
    virtual std::string GetDisplayName() const = 0;
    virtual std::string GetDeviceName() const = 0;
    virtual std::vector<INode*> GetChildren(ELinkType type) const = 0;
    virtual std::vector<INode*> GetParents() const = 0;
    virtual std::string GetEventID() const = 0;
    virtual bool IsStreamable() const = 0;
    virtual bool GetProperty(const std::string& name, std::string& value, std::string& attribute) const = 0;
    virtual std::string GetRepresentation(const std::string& unused) const = 0;
    virtual std::vector<std::string> GetPropertyNames() const = 0;
    virtual EInterfaceType GetPrincipalInterfaceType() const = 0;
    virtual bool IsFeature() const = 0;
    // One user callback a node, called inside the map's lock when the node changes; the last one wins.
    virtual long RegisterCallback(std::function<void(INode*)> callback) = 0;
    virtual bool DeregisterCallback(long& handle) = 0;
};

class VX3_API IValue : public virtual IBase {
public:
    virtual INode* GetNode() = 0;
    virtual std::string ToString(bool verify, bool ignoreCache) = 0;
    virtual void FromString(const std::string& text, bool verify) = 0;
    virtual bool IsValueCacheValid() const = 0;
    virtual std::shared_ptr<IVariant> GetVariant() = 0;
};

class VX3_API IInteger : public virtual IValue {
public:
    // Clamped to the range and snapped down onto the increment grid that starts at the minimum.
    virtual void SetValue(long value, bool verify) = 0;
    virtual IInteger& operator=(long value) = 0;
    virtual long GetValue(bool verify, bool ignoreCache) = 0;
    virtual long operator*() = 0;
    virtual long GetMin() = 0;
    virtual long GetMax() = 0;
    virtual EIncMode GetIncMode() = 0;
    virtual long GetInc() = 0;
    virtual ERepresentation GetRepresentation() = 0;
    virtual std::string GetUnit() = 0;
    virtual void ImposeMin(long value) = 0;
    virtual void ImposeMax(long value) = 0;
};

class VX3_API IFloat : public virtual IValue {
public:
    // Clamped to the range.
    virtual void SetValue(double value, bool verify) = 0;
    virtual IFloat& operator=(double value) = 0;
    virtual double GetValue(bool verify, bool ignoreCache) = 0;
    virtual double operator*() = 0;
    virtual double GetMin() = 0;
    virtual double GetMax() = 0;
    virtual bool HasInc() = 0;
    virtual EIncMode GetIncMode() = 0;
    virtual double GetInc() = 0;
    virtual ERepresentation GetRepresentation() = 0;
    virtual std::string GetUnit() const = 0;
    virtual EDisplayNotation GetDisplayNotation() const = 0;
    virtual std::int64_t GetDisplayPrecision() const = 0;
    virtual void ImposeMin(double value) = 0;
    virtual void ImposeMax(double value) = 0;
};

class VX3_API IBoolean : public virtual IValue {
public:
    virtual void SetValue(bool value, bool verify) = 0;
    IBoolean& operator=(bool value) {
        SetValue(value, true);
        return *this;
    }
    virtual bool GetValue(bool verify, bool ignoreCache) const = 0;
    bool operator()() const { return GetValue(false, false); }
};

class VX3_API IString : public virtual IValue {
public:
    virtual void SetValue(const std::string& value, bool verify) = 0;
    virtual IString& operator=(const std::string& value) = 0;
    virtual std::string GetValue(bool verify, bool ignoreCache) = 0;
    virtual std::string operator*() = 0;
    virtual std::int64_t GetMaxLength() = 0;
};

class VX3_API ICommand : public virtual IValue {
public:
    virtual void Execute(bool verify) = 0;
    virtual bool IsDone(bool verify) = 0;
};

class VX3_API IEnumEntry : public virtual IValue {
public:
    virtual long GetValue() = 0;
    virtual std::string GetSymbolic() const = 0;
    virtual double GetNumericValue() = 0;
    virtual bool IsSelfClearing() = 0;
};

class VX3_API IEnumeration : public virtual IValue {
public:
    virtual std::vector<std::string> GetSymbolics() = 0;
    virtual std::vector<IEnumEntry*> GetEntries() = 0;
    // Writes the entry of that symbolic name.
    virtual IEnumeration& operator=(const std::string& symbolic) = 0;
    virtual void SetIntValue(long value, bool verify) = 0;
    virtual std::string operator*() = 0;
    virtual long GetIntValue(bool verify, bool ignoreCache) = 0;
    // By node name ("EnumEntry_<enumeration>_<entry>"), not by symbolic name.
    virtual IEnumEntry* GetEntryByName(const std::string& name) = 0;
    virtual IEnumEntry* GetEntry(long value) = 0;
    virtual IEnumEntry* GetCurrentEntry(bool verify, bool ignoreCache) = 0;
};

class VX3_API IRegister : public virtual IValue {
public:
    virtual void Set(const unsigned char* data, long length, bool verify) = 0;
    virtual void Get(unsigned char* data, long length, bool verify, bool ignoreCache) = 0;
    virtual long GetLength() = 0;
    virtual long GetAddress() = 0;
};

class VX3_API ICategory : public virtual IValue {
public:
    virtual std::vector<IValue*> GetFeatures() const = 0;
};

} // namespace VX3::GenICam
