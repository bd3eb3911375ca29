// The type-checking wrappers of the product code. A CFUtils::CFObject adopts the reference it
// is given; the typed wrappers then check the object's type and quietly drop (release) an
// object of the wrong type, leaving themselves empty, rather than throwing.
#pragma once

#include <Groundwork/SysWrappers/CoreFoundation/RefCountReference.h>

#include <CoreFoundation/CFBase.h>

namespace CFUtils {

template <class T>
class CFObject : public RefCountUtils::Reference<T> {
    using Base = RefCountUtils::Reference<T>;

public:
    explicit CFObject(T inRef = nullptr) : Base(inRef) {}
    CFObject(const CFObject&) = default;
    CFObject& operator=(const CFObject&) = default;
    CFObject& operator=(T inRef)
    {
        Base::operator=(inRef);
        return *this;
    }

    void* AsDataRef() { return const_cast<void*>(static_cast<const void*>(this->_reference)); }
    const void* AsDataRef() const { return this->_reference; }
    CFTypeRef AsTypeRef() const { return this->_reference; }

    // Checks inRef, or the held reference when inRef is NULL. An object of another type
    // makes the wrapper release what it holds and become empty; nothing is thrown.
    bool ValidateCFType(CFTypeID inTypeID, T inRef)
    {
        T object = inRef != nullptr ? inRef : this->_reference;
        if (object == nullptr || CFGetTypeID(object) == inTypeID)
            return true;
        this->Release();
        this->_reference = nullptr;
        return false;
    }
};

// The common shape of the concrete wrappers: adopt, then validate against TypeID().
// A generic pointer is accepted too, so that an object of unknown type can be offered.
// Adopting is explicit everywhere, so that a bare reference never changes owner unseen.
template <class T, CFTypeID (*TypeID)()>
class TypedObject : public CFObject<T> {
public:
    explicit TypedObject(T inRef = nullptr) : CFObject<T>(inRef) { this->ValidateCFType(TypeID(), nullptr); }
    explicit TypedObject(CFTypeRef inRef) : TypedObject(FromGeneric(inRef)) {}
    TypedObject(const TypedObject&) = default;
    TypedObject& operator=(const TypedObject&) = default;

    TypedObject& operator=(const T& inRef)
    {
        CFObject<T>::operator=(inRef);
        this->ValidateCFType(TypeID(), nullptr);
        return *this;
    }
    TypedObject& operator=(CFTypeRef inRef) { return *this = FromGeneric(inRef); }

private:
    // Some reference types (the graphics ones) point at non-const objects.
    static T FromGeneric(CFTypeRef inRef) { return static_cast<T>(const_cast<void*>(inRef)); }
};

}  // namespace CFUtils
