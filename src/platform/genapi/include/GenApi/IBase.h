// Roots of the interface tree: what every node and every value can tell.
#pragma once

#include "GenApi/Types.h"

namespace GenApi_3_2 {

class IBase {
public:
    virtual ~IBase() = default;
    virtual EAccessMode GetAccessMode() const = 0;
};

class IValue : virtual public IBase {
public:
    virtual INode* GetNode() = 0;
    virtual gcstring ToString(bool Verify = false, bool IgnoreCache = false) = 0;
    virtual void FromString(const gcstring& ValueStr, bool Verify = true) = 0;
    virtual bool IsValueCacheValid() const = 0;
};

// Implemented by objects that their holder must give back by a call.
class IDestroy {
public:
    virtual void Destroy() = 0;

protected:
    virtual ~IDestroy() = default;
};

template <class T>
inline bool IsReadable(const T* object) {
    return object && IsReadable(object->GetAccessMode());
}
template <class T>
inline bool IsWritable(const T* object) {
    return object && IsWritable(object->GetAccessMode());
}
template <class T>
inline bool IsAvailable(const T* object) {
    return object && IsAvailable(object->GetAccessMode());
}
template <class T>
inline bool IsImplemented(const T* object) {
    return object && IsImplemented(object->GetAccessMode());
}

} // namespace GenApi_3_2
