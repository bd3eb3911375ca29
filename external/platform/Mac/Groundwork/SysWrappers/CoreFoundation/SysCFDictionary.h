// An owning, copy-on-write dictionary from K to V (platform reference or pointer types).
#pragma once

#include <Groundwork/SysWrappers/CoreFoundation/SysCFObject.h>

#include <CoreFoundation/CFDictionary.h>

namespace Gx {

template <class K, class V>
class CFDictionary : public CFMutableObject<CFDictionaryRef, CFMutableDictionaryRef> {
    using Base = CFMutableObject<CFDictionaryRef, CFMutableDictionaryRef>;

public:
    CFDictionary() = default;
    // A new, empty, private mutable dictionary.
    explicit CFDictionary(CFIndex inCapacity,
                          const CFDictionaryKeyCallBacks* inKeyCallBacks = &kCFTypeDictionaryKeyCallBacks,
                          const CFDictionaryValueCallBacks* inValueCallBacks = &kCFTypeDictionaryValueCallBacks,
                          CFAllocatorRef inAllocator = kCFAllocatorDefault)
    {
        AttachMutableRef(
            CFUtils::CheckCreated(CFDictionaryCreateMutable(inAllocator, inCapacity, inKeyCallBacks, inValueCallBacks),
                                  "CFDictionaryCreateMutable failed"),
            false);
    }
    // An immutable dictionary of the given pairs; the first change copies it.
    CFDictionary(const K* inKeys, const V* inValues, CFIndex inCount,
                 const CFDictionaryKeyCallBacks* inKeyCallBacks = &kCFTypeDictionaryKeyCallBacks,
                 const CFDictionaryValueCallBacks* inValueCallBacks = &kCFTypeDictionaryValueCallBacks,
                 CFAllocatorRef inAllocator = kCFAllocatorDefault)
        : Base(CFUtils::CheckCreated(CFDictionaryCreate(inAllocator, AsPointers(inKeys), AsPointers(inValues), inCount,
                                                        inKeyCallBacks, inValueCallBacks),
                                     "CFDictionaryCreate failed"),
               false)
    {
    }
    CFDictionary(CFDictionaryRef inRef, bool inRetain) : Base(inRef, inRetain) {}
    CFDictionary(CFMutableDictionaryRef inRef, bool inRetain) { AttachMutableRef(inRef, inRetain); }
    CFDictionary(const CFDictionary&) = default;
    CFDictionary& operator=(const CFDictionary&) = default;
    ~CFDictionary() override = default;

    CFIndex GetCount() const { return CFDictionaryGetCount(UseRef()); }
    bool IsEmpty() const { return GetCount() == 0; }
    CFIndex GetCountOfKey(K inKey) const { return CFDictionaryGetCountOfKey(UseRef(), inKey); }
    bool ContainsKey(K inKey) const { return CFDictionaryContainsKey(UseRef(), inKey); }
    CFIndex GetCountOfValue(V inValue) const { return CFDictionaryGetCountOfValue(UseRef(), inValue); }
    bool ContainsValue(V inValue) const { return CFDictionaryContainsValue(UseRef(), inValue); }

    // NULL when the key is absent.
    V GetValue(K inKey) const { return static_cast<V>(CFDictionaryGetValue(UseRef(), inKey)); }
    V operator[](K inKey) const { return GetValue(inKey); }
    bool GetValueIfPresent(K inKey, V* outValue) const
    {
        const void* value = nullptr;
        bool present = CFDictionaryGetValueIfPresent(UseRef(), inKey, &value);
        if (present && outValue != nullptr)
            *outValue = static_cast<V>(value);
        return present;
    }
    // Either buffer may be NULL; each other needs room for GetCount() entries.
    void GetKeysAndValues(K* outKeys, V* outValues) const
    {
        CFDictionaryGetKeysAndValues(UseRef(), AsPointers(outKeys), AsPointers(outValues));
    }
    void ApplyFunction(CFDictionaryApplierFunction inFunction, void* inContext) const
    {
        CFDictionaryApplyFunction(UseRef(), inFunction, inContext);
    }

    void AddValue(K inKey, V inValue) { CFDictionaryAddValue(UseMutableRef(), inKey, inValue); }
    void SetValue(K inKey, V inValue) { CFDictionarySetValue(UseMutableRef(), inKey, inValue); }
    void ReplaceValue(K inKey, V inValue) { CFDictionaryReplaceValue(UseMutableRef(), inKey, inValue); }
    void RemoveValue(K inKey) { CFDictionaryRemoveValue(UseMutableRef(), inKey); }
    void RemoveAllValues() { CFDictionaryRemoveAllValues(UseMutableRef()); }

private:
    CFMutableDictionaryRef MutableCopy(CFDictionaryRef inRef) const override
    {
        return CFUtils::CheckCreated(CFDictionaryCreateMutableCopy(CFGetAllocator(inRef), 0, inRef),
                                     "CFDictionaryCreateMutableCopy failed");
    }

    // The platform's key and value arrays are untyped; K and V are always pointer types.
    template <class P>
    static const void** AsPointers(const P* inPointers)
    {
        return reinterpret_cast<const void**>(const_cast<P*>(inPointers));
    }
};

}  // namespace Gx
