// Owning wrappers of platform objects. CFObject holds one retain on an immutable reference;
// CFMutableObject adds copy-on-write access to the mutable variant of the same object.
#pragma once

#include <Groundwork/SysWrappers/CoreFoundation/SysCFUtils.h>

#include <CoreFoundation/CFBase.h>

namespace Gx {

// T is an immutable reference type such as CFStringRef. A non-null reference is always
// owned: exactly one retain, given back by the destructor.
template <class T>
class CFObject {
public:
    CFObject& operator=(const CFObject& inOther)
    {
        AssignObject(inOther);
        return *this;
    }

    // The reference, or RuntimeError 'cfnr' when there is none; every query goes through it.
    T UseRef() const
    {
        if (mCFRef == nullptr)
            CFUtils::ThrowNilReference();
        return mCFRef;
    }
    T GetRefValue() const { return mCFRef; }
    // Unchecked like GetRefValue, so that an empty wrapper can stand for an optional NULL.
    operator T() const { return mCFRef; }

    bool IsValid() const { return mCFRef != nullptr; }
    bool HasSameRef(T inRef) const { return mCFRef == inRef; }

    CFTypeID GetTypeID() const { return CFGetTypeID(UseRef()); }
    CFStringRef CopyTypeIDDescription() const { return CFCopyTypeIDDescription(GetTypeID()); }
    CFAllocatorRef GetAllocator() const { return CFGetAllocator(UseRef()); }
    CFStringRef CopyDescription() const { return CFCopyDescription(UseRef()); }
    CFHashCode GetHashCode() const { return CFHash(UseRef()); }
    CFIndex GetRetainCount() const { return CFGetRetainCount(UseRef()); }
    // NULL equals nothing, not even an empty wrapper (which throws first).
    bool IsEqualTo(T inRef) const
    {
        T held = UseRef();
        return inRef != nullptr && CFEqual(held, inRef);
    }

    // Replaces the reference, retaining the new one when inRetain is set. Attaching the
    // reference already held changes nothing at all: the one retain held is kept, and a
    // caller who meant to hand over a retain keeps it.
    void AttachRef(T inRef, bool inRetain)
    {
        if (inRef == mCFRef)
            return;
        Release();
        mCFRef = inRef;
        if (inRetain)
            Retain();
    }
    // Hands the retain to the caller and leaves the wrapper empty.
    T DetachRef()
    {
        T ref = mCFRef;
        mCFRef = nullptr;
        return ref;
    }
    void FreeRef()
    {
        Release();
        mCFRef = nullptr;
    }

protected:
    CFObject() = default;
    CFObject(T inRef, bool inRetain) : mCFRef(inRef)
    {
        if (inRetain)
            Retain();
    }
    CFObject(const CFObject& inOther) { AttachRef(inOther.mCFRef, true); }
    virtual ~CFObject() { Release(); }

    void AssignObject(const CFObject& inOther) { AttachRef(inOther.mCFRef, true); }

private:
    void Retain()
    {
        if (mCFRef != nullptr)
            CFRetain(mCFRef);
    }
    void Release()
    {
        if (mCFRef != nullptr)
            CFRelease(mCFRef);
    }

    T mCFRef = nullptr;
};

// M is the mutable variant of T. Modifications go through UseMutableRef, which first makes a
// private mutable copy unless this wrapper created or adopted the object as mutable and is
// its only holder. An object received as immutable, or shared, is never changed in place.
template <class T, class M>
class CFMutableObject : public CFObject<T> {
public:
    CFMutableObject& operator=(const CFMutableObject& inOther)
    {
        AssignObject(inOther);
        return *this;
    }

    M UseMutableRef()
    {
        MakeMutable();
        return const_cast<M>(this->UseRef());
    }
    // Explicit, so that reading through an implicit conversion to T never copies.
    explicit operator M() { return UseMutableRef(); }

    // An attached reference counts as immutable; attaching the one already held keeps the
    // wrapper as it was.
    void AttachRef(T inRef, bool inRetain)
    {
        if (this->HasSameRef(inRef))
            return;
        CFObject<T>::AttachRef(inRef, inRetain);
        mIsMutable = false;
    }

    // Adopting keeps the caller's object as this wrapper's private mutable one. Retaining
    // would share an object someone else may still change, so a copy is taken instead.
    void AttachMutableRef(M inRef, bool inRetain)
    {
        if (!inRetain || inRef == nullptr) {
            CFObject<T>::AttachRef(inRef, false);
            mIsMutable = inRef != nullptr;
            return;
        }
        M copy = MutableCopy(inRef);
        CFObject<T>::AttachRef(copy, false);
        mIsMutable = copy != nullptr;
    }

    // Hands the caller a mutable object it alone owns: made private first, so that a shared
    // or immutable object is never given out as mutable.
    M DetachMutableRef()
    {
        MakeMutable();
        mIsMutable = false;
        return const_cast<M>(this->DetachRef());
    }

protected:
    CFMutableObject() = default;
    CFMutableObject(T inRef, bool inRetain) : CFObject<T>(inRef, inRetain) {}
    CFMutableObject(const CFMutableObject& inOther) : CFObject<T>(inOther), mIsMutable(inOther.mIsMutable) {}
    ~CFMutableObject() override = default;

    void AssignObject(const CFMutableObject& inOther)
    {
        CFObject<T>::AssignObject(inOther);
        mIsMutable = inOther.mIsMutable;
    }

private:
    // A new mutable copy of inRef that the caller owns; throws 'cfcr' when none can be made.
    virtual M MutableCopy(T inRef) const = 0;

    // The retain count is the platform's own, so any other holder (another wrapper, a
    // collection containing the object) forces the copy.
    void MakeMutable()
    {
        T ref = this->GetRefValue();
        if (ref == nullptr || (mIsMutable && CFGetRetainCount(ref) < 2))
            return;
        AttachMutableRef(MutableCopy(ref), false);
    }

    bool mIsMutable = false;
};

}  // namespace Gx
