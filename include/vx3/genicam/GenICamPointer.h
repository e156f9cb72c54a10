// A checked pointer to a node's typed interface.
#pragma once

namespace VX3::GenICam {

// Null when `base` is null or not a T; operator-> on null throws the text "NULL pointer dereferenced".
template <typename T, typename Base>
class GenICamPointer {
public:
    explicit GenICamPointer(Base* base) : pointer_(dynamic_cast<T*>(base)) {}

    explicit operator bool() const { return pointer_ != nullptr; }
    T* operator->() const {
        if (pointer_ == nullptr)
            throw "NULL pointer dereferenced";
        return pointer_;
    }
    T* Get() const { return pointer_; }

private:
    T* pointer_;
};

} // namespace VX3::GenICam
