// An owning handle of one platform object, for the product code's lighter wrapper family.
// Copies share the object (one retain each); assigning a bare reference hands its retain over.
#pragma once

#include <CoreFoundation/CFBase.h>

namespace CFUtils {
template <class T>
class CFObject;
}

namespace RefCountUtils {

template <class T>
class Reference {
public:
    Reference() = default;
    Reference(const Reference& inOther) : _reference(inOther._reference) { Retain(); }
    virtual ~Reference() { Release(); }

    Reference& operator=(const Reference& inOther)
    {
        if (inOther._reference != nullptr)
            CFRetain(inOther._reference);  // before releasing, in case both hold one object
        Release();
        _reference = inOther._reference;
        return *this;
    }
    // Adopts inRef: the caller's retain becomes this handle's.
    Reference& operator=(T inRef)
    {
        Release();
        _reference = inRef;
        return *this;
    }

    T& AsRef() { return _reference; }
    const T& AsRef() const { return _reference; }
    T* AsPtr() { return &_reference; }
    const T* AsPtr() const { return &_reference; }
    const T& AsConstRef() const { return _reference; }
    const T* AsConstPtr() const { return &_reference; }

    operator T&() { return _reference; }
    operator const T&() const { return _reference; }
    operator T*() { return &_reference; }
    operator const T*() const { return &_reference; }

    bool operator==(T inRef) const { return _reference == inRef; }
    bool operator!=(T inRef) const { return _reference != inRef; }

protected:
    void Retain()
    {
        if (_reference != nullptr)
            CFRetain(_reference);
    }
    void Release()
    {
        if (_reference != nullptr)
            CFRelease(_reference);
    }

    T _reference = nullptr;

private:
    // Adopting a bare reference is left to the type-checking wrappers.
    friend class CFUtils::CFObject<T>;
    explicit Reference(T inRef) : _reference(inRef) {}
};

}  // namespace RefCountUtils
