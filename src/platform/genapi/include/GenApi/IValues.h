// The typed interfaces of a node's value. `Verify` asks for access mode and range to be checked first,
// `IgnoreCache` for the device to be asked. All of them throw GenericException on failure.
#pragma once

#include "GenApi/INode.h"

namespace GenApi_3_2 {

class IFloat;
class IEnumeration;

class IInteger : virtual public IValue {
public:
    virtual void SetValue(std::int64_t Value, bool Verify = true) = 0;
    virtual IInteger& operator=(std::int64_t Value) = 0;
    virtual std::int64_t GetValue(bool Verify = false, bool IgnoreCache = false) = 0;
    virtual std::int64_t operator()() = 0;
    virtual std::int64_t operator*() = 0;
    virtual std::int64_t GetMin() = 0;
    virtual std::int64_t GetMax() = 0;
    virtual EIncMode GetIncMode() = 0;
    virtual std::int64_t GetInc() = 0;
    virtual const int64_autovector_t GetListOfValidValues(bool bounded = true) = 0;
    virtual ERepresentation GetRepresentation() = 0;
    virtual gcstring GetUnit() = 0;
    virtual IFloat* GetFloatAlias() = 0;
    virtual void ImposeMin(std::int64_t Value) = 0;
    virtual void ImposeMax(std::int64_t Value) = 0;
};

class IFloat : virtual public IValue {
public:
    virtual void SetValue(double Value, bool Verify = true) = 0;
    virtual IFloat& operator=(double Value) = 0;
    virtual double GetValue(bool Verify = false, bool IgnoreCache = false) = 0;
    virtual double operator()() = 0;
    virtual double operator*() = 0;
    virtual double GetMin() = 0;
    virtual double GetMax() = 0;
    virtual bool HasInc() = 0;
    virtual EIncMode GetIncMode() = 0;
    virtual double GetInc() = 0;
    virtual const double_autovector_t GetListOfValidValues(bool bounded = true) = 0;
    virtual ERepresentation GetRepresentation() = 0;
    virtual gcstring GetUnit() const = 0;
    virtual EDisplayNotation GetDisplayNotation() const = 0;
    virtual std::int64_t GetDisplayPrecision() const = 0;
    virtual IInteger* GetIntAlias() = 0;
    virtual IEnumeration* GetEnumAlias() = 0;
    virtual void ImposeMin(double Value) = 0;
    virtual void ImposeMax(double Value) = 0;
};

class IBoolean : virtual public IValue {
public:
    virtual void SetValue(bool Value, bool Verify = true) = 0;
    virtual IBoolean& operator=(bool Value) = 0;
    virtual bool GetValue(bool Verify = false, bool IgnoreCache = false) const = 0;
    virtual bool operator()() const = 0;
};

class ICommand : virtual public IValue {
public:
    virtual void Execute(bool Verify = true) = 0;
    virtual void operator()() = 0;
    virtual bool IsDone(bool Verify = true) = 0;
};

class IString : virtual public IValue {
public:
    virtual void SetValue(const gcstring& Value, bool Verify = true) = 0;
    virtual IString& operator=(const gcstring& Value) = 0;
    virtual gcstring GetValue(bool Verify = false, bool IgnoreCache = false) = 0;
    virtual gcstring operator()() = 0;
    virtual gcstring operator*() = 0;
    virtual std::int64_t GetMaxLength() = 0;
};

class IEnumEntry : virtual public IValue {
public:
    virtual std::int64_t GetValue() = 0;
    virtual gcstring GetSymbolic() const = 0;
    virtual double GetNumericValue() = 0;
    virtual bool IsSelfClearing() = 0;
};

class IEnumeration : virtual public IValue {
public:
    // The names of the implemented entries.
    virtual void GetSymbolics(StringList_t& Symbolics) = 0;
    // The entries' nodes in the order of the description.
    virtual void GetEntries(NodeList_t& Entries) = 0;
    virtual IEnumeration& operator=(const gcstring& ValueStr) = 0;
    virtual void SetIntValue(std::int64_t Value, bool Verify = true) = 0;
    virtual gcstring operator*() = 0;
    virtual std::int64_t GetIntValue(bool Verify = false, bool IgnoreCache = false) = 0;
    virtual IEnumEntry* GetEntryByName(const gcstring& Symbolic) = 0;
    virtual IEnumEntry* GetEntry(std::int64_t IntValue) = 0;
    virtual IEnumEntry* GetCurrentEntry(bool Verify = false, bool IgnoreCache = false) = 0;
};

class IRegister : virtual public IValue {
public:
    virtual void Set(const std::uint8_t* pBuffer, std::int64_t Length, bool Verify = true) = 0;
    virtual void Get(std::uint8_t* pBuffer, std::int64_t Length, bool Verify = false,
                     bool IgnoreCache = false) = 0;
    // Bytes.
    virtual std::int64_t GetLength() = 0;
    virtual std::int64_t GetAddress() = 0;
};

class ICategory : virtual public IValue {
public:
    virtual void GetFeatures(FeatureList_t& Features) const = 0;
};

class ISelector : virtual public IBase {
public:
    virtual bool IsSelector() const = 0;
    virtual void GetSelectedFeatures(FeatureList_t& Features) const = 0;
    virtual void GetSelectingFeatures(FeatureList_t& Features) const = 0;
};

} // namespace GenApi_3_2
