// An owning, copy-on-write set of T (a platform reference type).
#pragma once

#include <Groundwork/SysWrappers/CoreFoundation/SysCFObject.h>

#include <CoreFoundation/CFSet.h>

namespace Gx {

template <class T>
class CFSet : public CFMutableObject<CFSetRef, CFMutableSetRef> {
    using Base = CFMutableObject<CFSetRef, CFMutableSetRef>;

public:
    CFSet() = default;
    CFSet(CFSetRef inRef, bool inRetain) : Base(inRef, inRetain) {}
    CFSet(CFMutableSetRef inRef, bool inRetain) { AttachMutableRef(inRef, inRetain); }
    // A new, empty, private mutable set.
    explicit CFSet(CFIndex inCapacity, const CFSetCallBacks* inCallBacks = &kCFTypeSetCallBacks,
                   CFAllocatorRef inAllocator = kCFAllocatorDefault)
    {
        AttachMutableRef(CFUtils::CheckCreated(CFSetCreateMutable(inAllocator, inCapacity, inCallBacks),
                                               "CFSetCreateMutable failed"),
                         false);
    }
    // An immutable set of the given values; the first change copies it.
    CFSet(const T* inValues, CFIndex inCount, const CFSetCallBacks* inCallBacks = &kCFTypeSetCallBacks,
          CFAllocatorRef inAllocator = kCFAllocatorDefault)
        : Base(CFUtils::CheckCreated(CFSetCreate(inAllocator, AsValues(inValues), inCount, inCallBacks),
                                     "CFSetCreate failed"),
               false)
    {
    }
    CFSet(const CFSet&) = default;
    CFSet& operator=(const CFSet&) = default;
    ~CFSet() override = default;

    CFIndex GetCount() const { return CFSetGetCount(UseRef()); }
    bool IsEmpty() const { return GetCount() == 0; }
    CFIndex GetCountOfValue(T inValue) const { return CFSetGetCountOfValue(UseRef(), inValue); }
    // Membership by the set's own equality callback, not by identity.
    bool ContainsValue(T inValue) const { return CFSetContainsValue(UseRef(), inValue); }
    // The member equal to inValue, or NULL.
    T GetValue(T inValue) const { return static_cast<T>(CFSetGetValue(UseRef(), inValue)); }
    T operator[](T inValue) const { return GetValue(inValue); }
    bool GetValueIfPresent(T inCandidate, T& outValue) const
    {
        const void* value = nullptr;
        bool present = CFSetGetValueIfPresent(UseRef(), inCandidate, &value);
        if (present)
            outValue = static_cast<T>(value);
        return present;
    }
    // outValues needs room for GetCount() values.
    void GetValues(T* outValues) const { CFSetGetValues(UseRef(), AsValues(outValues)); }
    void ApplyFunction(CFSetApplierFunction inFunction, void* inContext) const
    {
        CFSetApplyFunction(UseRef(), inFunction, inContext);
    }

    void AddValue(T inValue) { CFSetAddValue(UseMutableRef(), inValue); }
    void SetValue(T inValue) { CFSetSetValue(UseMutableRef(), inValue); }
    void ReplaceValue(T inValue) { CFSetReplaceValue(UseMutableRef(), inValue); }
    void RemoveValue(T inValue) { CFSetRemoveValue(UseMutableRef(), inValue); }
    void RemoveAllValues() { CFSetRemoveAllValues(UseMutableRef()); }

private:
    CFMutableSetRef MutableCopy(CFSetRef inRef) const override
    {
        return CFUtils::CheckCreated(CFSetCreateMutableCopy(CFGetAllocator(inRef), 0, inRef),
                                     "CFSetCreateMutableCopy failed");
    }

    // The platform's value arrays are untyped; T is always a pointer type.
    static const void** AsValues(const T* inValues) { return reinterpret_cast<const void**>(const_cast<T*>(inValues)); }
};

}  // namespace Gx
